// Projection of a region onto the edge normal: the 4x oversampled edge-spread function.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace sfr {

// round(-rows * slope * 4), rounding halves away from zero; `rows` is the row count after
// the phase-cycle crop.
long long projectionOffset(int rows, double slope);

// Bins every pixel of the upright working image (CV_64F) by its distance from the edge
// normal's origin, x cos(theta) - m sin(theta), in quarter pixels; fills empty bins from their
// neighbours and returns the mean of each of the 4 * cols bins used as the ESF (0 where a
// bin stays empty).
std::vector<double> oversampledEdgeProfile(const cv::Mat& working, double slope);

}  // namespace sfr
}  // namespace talonvireo
