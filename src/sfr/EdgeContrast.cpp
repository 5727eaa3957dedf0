#include "sfr/EdgeContrast.h"

#include <cmath>
#include <stdexcept>

#include "sfr/SfrConstants.h"

namespace talonvireo {
namespace sfr {

EdgeStrips edgeStrips(const cv::Mat& working) {
    const int strip = kContrastStrip;
    if (working.cols < strip) {
        throw std::invalid_argument("region too narrow for the contrast test");
    }
    EdgeStrips s;
    s.left = cv::sum(working.colRange(0, strip))[0];
    s.right = cv::sum(working.colRange(working.cols - strip, working.cols))[0];
    return s;
}

DerivativeKernels kernelsFor(const EdgeStrips& strips) {
    const double sign = strips.right > strips.left ? 1.0 : -1.0;
    DerivativeKernels k;
    k.twoTap[0] = -0.5 * sign;
    k.twoTap[1] = 0.5 * sign;
    k.threeTap[0] = -0.5 * sign;
    k.threeTap[1] = 0.0;
    k.threeTap[2] = 0.5 * sign;
    return k;
}

bool hasEnoughContrast(const EdgeStrips& strips) {
    // Written as "not below" so that an all-black region (0 / 0) goes on to the slope checks.
    return !(std::fabs((strips.left - strips.right) / (strips.left + strips.right)) < kMinContrast);
}

}  // namespace sfr
}  // namespace talonvireo
