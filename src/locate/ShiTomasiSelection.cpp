#include "locate/ShiTomasiSelection.h"

#include <algorithm>

#include <opencv2/imgproc.hpp>

namespace RegularSFR {

std::vector<cv::Point2f> selectShiTomasiCorners(const cv::Mat& eig, int maxCorners, double quality,
                                                double minDistance) {
    std::vector<cv::Point2f> corners;
    if (eig.empty()) {
        return corners;
    }
    double maxVal = 0.0;
    cv::minMaxLoc(eig, nullptr, &maxVal);
    cv::Mat strong, dilated;
    cv::threshold(eig, strong, maxVal * quality, 0.0, cv::THRESH_TOZERO);
    cv::dilate(strong, dilated, cv::Mat());

    // Candidates: non-zero local maxima, the outermost pixel ring excluded.
    struct Peak {
        float value;
        int x;
        int y;
    };
    std::vector<Peak> peaks;
    if (strong.rows > 2 && strong.cols > 2) {
        const cv::Rect inner(1, 1, strong.cols - 2, strong.rows - 2);
        const cv::Mat isPeak = (strong(inner) == dilated(inner)) & (strong(inner) != 0.0f);
        std::vector<cv::Point> at;
        cv::findNonZero(isPeak, at);
        peaks.reserve(at.size());
        for (const cv::Point& p : at) {
            peaks.push_back({strong.at<float>(p.y + 1, p.x + 1), p.x + 1, p.y + 1});
        }
    }
    // Strongest first; equal strengths with the later pixel (in raster order) first.
    std::sort(peaks.begin(), peaks.end(), [](const Peak& a, const Peak& b) {
        if (a.value != b.value) {
            return a.value > b.value;
        }
        return a.y != b.y ? a.y > b.y : a.x > b.x;
    });

    const double minDist2 = minDistance * minDistance;
    for (const Peak& peak : peaks) {
        const int x = peak.x;
        const int y = peak.y;
        bool good = true;
        if (minDistance >= 1.0) {
            for (const cv::Point2f& kept : corners) {
                const float dx = static_cast<float>(x) - kept.x;
                const float dy = static_cast<float>(y) - kept.y;
                if (dx * dx + dy * dy < minDist2) {
                    good = false;
                    break;
                }
            }
        }
        if (good) {
            corners.emplace_back(static_cast<float>(x), static_cast<float>(y));
            if (maxCorners > 0 && static_cast<int>(corners.size()) == maxCorners) {
                break;
            }
        }
    }
    return corners;
}

}  // namespace RegularSFR
