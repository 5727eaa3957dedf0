// How well located edge centres match a chart design: the best similarity transform (shift,
// rotation, uniform scale) from the design's nominal centres onto the located ones, and what
// it leaves unexplained. A frame of another chart, measured by a member whose locators still
// find squares in it, leaves residuals of tens of pixels; the right chart, a few at most.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace station {

struct ChartFit {
    double scale = 1.0;
    double rotationDeg = 0.0;
    cv::Point2d shift;
    double rmsResidual = 0.0;  // pixels, root mean square over the centres
    double maxResidual = 0.0;  // pixels
};

// Least-squares fit of located ≈ s R nominal + t. Both lists have the same length (>= 2).
ChartFit fitChart(const std::vector<cv::Point2d>& nominal, const std::vector<cv::Point2d>& located);

}  // namespace station
}  // namespace talonvireo
