#include "locate/ShiTomasiSelection.h"

#include <algorithm>

#include <opencv2/imgproc.hpp>

namespace RegularSFR {

std::vector<cv::Point2f> selectShiTomasiCorners(const cv::Mat& eig, double maxEig, int maxCorners,
                                                double quality, double minDistance) {
    std::vector<cv::Point2f> corners;
    if (eig.empty()) {
        return corners;
    }
    // Below the quality level a value counts as 0 (OpenCV thresholds the float image "to
    // zero" at the level as a float). A candidate is a non-zero value no neighbour of its
    // 3 x 3 block exceeds, which is what comparing with the dilated image finds; scanning
    // the block only round values above the level skips the bulk of the window.
    const float level = static_cast<float>(maxEig * quality);
    const auto kept = [level](float v) { return v > level ? v : 0.0f; };
    struct Peak {
        float value;
        int x;
        int y;
    };
    std::vector<Peak> peaks;
    for (int y = 1; y < eig.rows - 1; ++y) {
        const float* above = eig.ptr<float>(y - 1);
        const float* row = eig.ptr<float>(y);
        const float* below = eig.ptr<float>(y + 1);
        for (int x = 1; x < eig.cols - 1; ++x) {
            const float v = kept(row[x]);
            if (v == 0.0f) {
                continue;
            }
            bool peak = true;
            for (int dx = -1; dx <= 1 && peak; ++dx) {
                peak = kept(above[x + dx]) <= v && kept(below[x + dx]) <= v &&
                       (dx == 0 || kept(row[x + dx]) <= v);
            }
            if (peak) {
                peaks.push_back({v, x, y});
            }
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
