// Chart point to image point through a 3 x 3 homography (CV_64F, row-major), in double
// precision with a float result, as every step of the locator maps points.
#pragma once

#include <opencv2/core.hpp>

namespace RegularSFR {

inline cv::Point2f projectChartPoint(const cv::Mat& h, double cx, double cy) {
    const double* m = h.ptr<double>();
    const double w = m[6] * cx + m[7] * cy + m[8];
    return {static_cast<float>((m[0] * cx + m[1] * cy + m[2]) / w),
            static_cast<float>((m[3] * cx + m[4] * cy + m[5]) / w)};
}

inline bool isHomography(const cv::Mat& h) {
    return h.rows == 3 && h.cols == 3 && h.type() == CV_64FC1 && h.isContinuous();
}

}  // namespace RegularSFR
