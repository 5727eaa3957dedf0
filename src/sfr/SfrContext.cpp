#include "sfr/SfrContext.h"

#include <stdexcept>

namespace talonvireo {
namespace sfr {

SfrContext makeSfrContext(const cv::Mat& region) {
    SfrContext ctx;
    switch (region.depth()) {
        case CV_8U:
        case CV_8S:
            ctx.sixteenBit = 0;
            break;
        case CV_16U:
        case CV_16S:
            ctx.sixteenBit = 1;
            break;
        default:
            throw std::invalid_argument("region samples deeper than 16 bits");
    }
    // The result record has three slots per figure.
    if (region.channels() > 3) {
        throw std::invalid_argument("region has more than three channels");
    }
    region.copyTo(ctx.region);
    return ctx;
}

}  // namespace sfr
}  // namespace talonvireo
