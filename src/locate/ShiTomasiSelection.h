// The corner selection of OpenCV's goodFeaturesToTrack (minimum-eigenvalue measure, no
// mask) on an eigenvalue image the caller already holds, so that the corner search computes
// the measure once instead of twice. Same corners in the same order as
// cv::goodFeaturesToTrack(image, corners, maxCorners, quality, minDistance, noArray(),
// blockSize, false) when `eig` is cv::cornerMinEigenVal(image, blockSize, 3).
#pragma once

#include <vector>

#include <opencv2/core.hpp>

namespace RegularSFR {

// Local maxima (3 x 3) of `eig` (CV_32FC1) above quality times its largest value `maxEig`,
// away from the outermost pixel ring, strongest first (equal values: the later pixel first),
// each kept when no stronger kept corner lies closer than minDistance; at most maxCorners
// when it is > 0.
std::vector<cv::Point2f> selectShiTomasiCorners(const cv::Mat& eig, double maxEig, int maxCorners,
                                                double quality, double minDistance);

}  // namespace RegularSFR
