// Per-row edge positions: centroids of the windowed derivative.
#pragma once

#include <functional>
#include <vector>

#include <opencv2/core.hpp>

#include "sfr/SfrContext.h"

namespace talonvireo {
namespace sfr {

// Row m of the derivative image, `cols` values; valid until the next call. Rows can be made
// on demand, so that the whole derivative image never has to be held.
using DerivativeRow = std::function<const double*(int m)>;

// loc(m) = centroid(deriv row m * Hamming window centred on the row) - 0.5.
std::vector<double> centroidsUnderCentredWindow(int rows, int cols, const DerivativeRow& row);
// The same over a CV_64F, one-channel derivative image.
std::vector<double> centroidsUnderCentredWindow(const cv::Mat& derivative);

// loc(m) = centroid(deriv row m * Hamming window centred at intercept + slope * m) - 0.5:
// the second pass, with the window following a first estimate of the edge.
std::vector<double> centroidsAlongLine(int rows, int cols, const DerivativeRow& row,
                                       const EdgeLine& line);

}  // namespace sfr
}  // namespace talonvireo
