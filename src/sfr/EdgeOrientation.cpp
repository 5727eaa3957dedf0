#include "sfr/EdgeOrientation.h"

#include <cmath>
#include <stdexcept>

#include "sfr/SfrConstants.h"

namespace talonvireo {
namespace sfr {

namespace {
double stripMean(const cv::Mat& strip) {
    return cv::sum(strip)[0] / static_cast<double>(strip.total());
}
}  // namespace

bool turnEdgeUpright(cv::Mat& working) {
    const int strip = kOrientationStrip;
    if (working.rows < strip || working.cols < strip) {
        throw std::invalid_argument("region too small to orient");
    }
    const double rowDiff =
        std::fabs(stripMean(working.rowRange(0, strip)) -
                  stripMean(working.rowRange(working.rows - strip, working.rows)));
    const double colDiff =
        std::fabs(stripMean(working.colRange(0, strip)) -
                  stripMean(working.colRange(working.cols - strip, working.cols)));
    if (rowDiff > colDiff) {
        cv::Mat turned;
        cv::transpose(working, turned);
        cv::flip(turned, working, 0);
        return true;
    }
    return false;
}

}  // namespace sfr
}  // namespace talonvireo
