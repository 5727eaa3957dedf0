#include "CurvePlot.h"

#include <cmath>
#include <cstdio>

#include <opencv2/imgproc.hpp>

namespace talonvireo {
namespace cli {

namespace {
constexpr int kWidth = 800;
constexpr int kHeight = 500;
constexpr int kLeft = 60;
constexpr int kRight = 20;
constexpr int kTop = 20;
constexpr int kBottom = 50;
constexpr double kMaxFrequency = 0.5;
constexpr double kMaxSfr = 1.2;

cv::Point toPixel(double f, double sfr) {
    const double x = kLeft + f / kMaxFrequency * (kWidth - kLeft - kRight);
    const double y = kHeight - kBottom - sfr / kMaxSfr * (kHeight - kTop - kBottom);
    return {static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y))};
}

void label(cv::Mat& img, const char* text, cv::Point at, const cv::Scalar& colour) {
    cv::putText(img, text, at, cv::FONT_HERSHEY_SIMPLEX, 0.45, colour, 1, cv::LINE_AA);
}

// A vertical line at f, labelled at height labelAt.
void verticalMark(cv::Mat& img, double f, const char* text, const cv::Scalar& colour,
                  double labelAt) {
    if (!(f > 0.0 && f <= kMaxFrequency)) {
        return;
    }
    cv::line(img, toPixel(f, 0.0), toPixel(f, kMaxSfr), colour, 1, cv::LINE_AA);
    label(img, text, toPixel(f, labelAt) + cv::Point(4, 14), colour);
}
}  // namespace

cv::Mat plotCurve(const SfrCurve& curve) {
    cv::Mat img(kHeight, kWidth, CV_8UC3, cv::Scalar(255, 255, 255));
    const cv::Scalar grid(220, 220, 220), ink(40, 40, 40);
    for (int i = 0; i <= 5; ++i) {
        const double f = i * 0.1;
        cv::line(img, toPixel(f, 0.0), toPixel(f, kMaxSfr), grid);
        char text[16];
        std::snprintf(text, sizeof text, "%.1f", f);
        label(img, text, toPixel(f, 0.0) + cv::Point(-10, 20), ink);
    }
    for (int i = 0; i <= 6; ++i) {
        const double s = i * 0.2;
        cv::line(img, toPixel(0.0, s), toPixel(kMaxFrequency, s), grid);
        char text[16];
        std::snprintf(text, sizeof text, "%.1f", s);
        label(img, text, toPixel(0.0, s) + cv::Point(-40, 5), ink);
    }
    label(img,
          curve.normalFrequencyAxis ? "cycles per pixel (across the edge)" : "cycles per pixel",
          cv::Point(kWidth / 2 - 100, kHeight - 10), ink);
    verticalMark(img, 0.125, "N/4", cv::Scalar(180, 120, 0), kMaxSfr);
    verticalMark(img, 0.25, "N/2", cv::Scalar(180, 120, 0), kMaxSfr);

    // Channels in OpenCV order: blue, green, red; a single channel is drawn in black.
    const cv::Scalar colours[3] = {cv::Scalar(200, 60, 0), cv::Scalar(0, 150, 0),
                                   cv::Scalar(0, 0, 200)};
    for (std::size_t c = 0; c < curve.channels.size(); ++c) {
        const SfrChannelCurve& ch = curve.channels[c];
        const cv::Scalar colour = curve.channels.size() == 1 ? ink : colours[c % 3];
        for (std::size_t k = 1; k < ch.frequency.size() && ch.frequency[k] <= kMaxFrequency; ++k) {
            const double a = std::min(std::max(ch.sfr[k - 1], 0.0), kMaxSfr);
            const double b = std::min(std::max(ch.sfr[k], 0.0), kMaxSfr);
            cv::line(img, toPixel(ch.frequency[k - 1], a), toPixel(ch.frequency[k], b), colour, 2,
                     cv::LINE_AA);
        }
        char text[48];
        std::snprintf(text, sizeof text, "%s%sMTF50 %.3f",
                      curve.channels.size() == 1 ? "" : ch.name.c_str(),
                      curve.channels.size() == 1 ? "" : " ", ch.mtf50);
        verticalMark(img, ch.mtf50, text, colour, 0.5 + 0.08 * static_cast<double>(c + 1));
        if (ch.mtf50 > 0.0 && ch.mtf50 <= kMaxFrequency) {
            cv::circle(img, toPixel(ch.mtf50, 0.5), 4, colour, cv::FILLED, cv::LINE_AA);
        }
    }
    return img;
}

}  // namespace cli
}  // namespace talonvireo
