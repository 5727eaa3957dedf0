// How well located edge centres match a chart design: the best similarity transform (shift,
// rotation, uniform scale) from the design's centres onto the located ones, and what it
// leaves unexplained. A frame of another chart, measured by a member whose locators still
// find squares in it, leaves residuals of tens of pixels; the right chart, a few at most.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace locate {

struct ChartFit {
    double scale = 1.0;
    double rotationDeg = 0.0;
    cv::Point2d shift;
    double rmsResidual = 0.0;       // pixels, root mean square over the centres
    double maxResidual = 0.0;       // pixels
    std::vector<double> residuals;  // pixels, one per centre, in the order given
};

// Least-squares fit of located ≈ s R nominal + t. Both lists have the same length (>= 2);
// throws std::invalid_argument otherwise.
ChartFit fitChart(const std::vector<cv::Point2d>& nominal, const std::vector<cv::Point2d>& located);

// fitChart, then once more without the centres that sit far off the first fit (beyond four
// times the median residual and 4 px): one edge found in the wrong place must not drag the
// design onto itself and hide. Residuals, rms and max are of the second fit over every
// centre.
ChartFit fitChartRobustly(const std::vector<cv::Point2d>& nominal,
                          const std::vector<cv::Point2d>& located);

}  // namespace locate
}  // namespace talonvireo
