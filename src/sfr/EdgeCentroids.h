// Per-row edge positions: centroids of the windowed derivative.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "sfr/SfrContext.h"

namespace talonvireo {
namespace sfr {

// loc(m) = centroid(deriv row m * Hamming window centred on the row) - 0.5.
// `derivative` is CV_64F, one channel, continuous rows.
std::vector<double> centroidsUnderCentredWindow(const cv::Mat& derivative);

// loc(m) = centroid(deriv row m * Hamming window centred at intercept + slope * m) - 0.5:
// the second pass, with the window following a first estimate of the edge.
std::vector<double> centroidsAlongLine(const cv::Mat& derivative, const EdgeLine& line);

}  // namespace sfr
}  // namespace talonvireo
