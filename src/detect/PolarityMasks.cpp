#include "detect/PolarityMasks.h"

#include <algorithm>

#include <opencv2/imgproc.hpp>

namespace talonvireo {
namespace detect {

namespace {
constexpr float kRelativeBand = 0.08f;
constexpr float kNoiseBand = 3.0f;
// A sixth of the shorter side: wider than any quad a chart packs several of across the frame.
constexpr int kWindowDivisor = 6;
constexpr int kMinWindow = 15;
}  // namespace

PolarityMasks splitByLocalMean(const cv::Mat& values, double noiseSigma) {
    CV_Assert(values.type() == CV_32F);
    // The mean is smooth on the scale of the window, so it is taken on a copy reduced by
    // about a sixteenth of the window and brought back by bilinear interpolation.
    const int shrink = std::max(1, std::min(values.cols, values.rows) / kWindowDivisor / 16);
    cv::Mat small = values;
    if (shrink > 1) {
        // Whole blocks: OpenCV averages them in one quick pass.
        const cv::Size size(values.cols / shrink, values.rows / shrink);
        cv::resize(values(cv::Rect(0, 0, size.width * shrink, size.height * shrink)), small, size,
                   0.0, 0.0, cv::INTER_AREA);
    }
    const int window = std::max(kMinWindow, std::min(small.cols, small.rows) / kWindowDivisor) | 1;
    cv::Mat mean;
    cv::blur(small, mean, cv::Size(window, window), cv::Point(-1, -1), cv::BORDER_REFLECT);
    if (shrink > 1) {
        cv::resize(mean, mean, values.size(), 0.0, 0.0, cv::INTER_LINEAR);
    }
    PolarityMasks masks{cv::Mat(values.size(), CV_8U), cv::Mat(values.size(), CV_8U)};
    const float noiseBand = kNoiseBand * static_cast<float>(noiseSigma);
#pragma omp parallel for schedule(static)
    for (int r = 0; r < values.rows; ++r) {
        const float* v = values.ptr<float>(r);
        const float* m = mean.ptr<float>(r);
        unsigned char* dark = masks.dark.ptr<unsigned char>(r);
        unsigned char* light = masks.light.ptr<unsigned char>(r);
        for (int c = 0; c < values.cols; ++c) {
            const float band = std::max(kRelativeBand * m[c], noiseBand);
            dark[c] = v[c] < m[c] - band ? 255 : 0;
            light[c] = v[c] > m[c] + band ? 255 : 0;
        }
    }
    return masks;
}

}  // namespace detect
}  // namespace talonvireo
