#include "detect/CoarseImage.h"

#include <algorithm>
#include <stdexcept>

#include <opencv2/imgproc.hpp>

namespace talonvireo {
namespace detect {

CoarseImage reduceFrame(const cv::Mat& grey) {
    if (grey.empty() || grey.channels() != 1 || (grey.depth() != CV_8U && grey.depth() != CV_16U)) {
        throw std::invalid_argument("findQuads takes a non-empty 8- or 16-bit grey frame");
    }
    CoarseImage coarse;
    const int longest = std::max(grey.cols, grey.rows);
    while (longest > 2000 * coarse.factor && coarse.factor < 8) {
        coarse.factor *= 2;
    }
    cv::Mat reduced = grey;
    if (coarse.factor > 1) {
        const int w = grey.cols / coarse.factor, h = grey.rows / coarse.factor;
        // Whole blocks only, so that the coarse grid keeps its exact relation to the frame.
        cv::resize(grey(cv::Rect(0, 0, w * coarse.factor, h * coarse.factor)), reduced,
                   cv::Size(w, h), 0.0, 0.0, cv::INTER_AREA);
    }
    reduced.convertTo(coarse.values, CV_32F);
    return coarse;
}

}  // namespace detect
}  // namespace talonvireo
