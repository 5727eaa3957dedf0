#include "station/CurvePlot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <opencv2/imgproc.hpp>

#include "station/PlotAxes.h"

namespace talonvireo {
namespace station {

namespace {
constexpr double kMaxFrequency = 0.5;
constexpr double kMaxSfr = 1.2;

PlotAxes axes() {
    return PlotAxes(cv::Size(800, 500), AxisRange{0.0, kMaxFrequency, 0.1, "%.1f"},
                    AxisRange{0.0, kMaxSfr, 0.2, "%.1f"});
}

// A vertical line at f, labelled at height labelAt.
void verticalMark(cv::Mat& img, double f, const char* text, const cv::Scalar& colour,
                  double labelAt) {
    if (!(f > 0.0 && f <= kMaxFrequency)) {
        return;
    }
    cv::line(img, axes().toPixel(f, 0.0), axes().toPixel(f, kMaxSfr), colour, 1, cv::LINE_AA);
    plotLabel(img, text, axes().toPixel(f, labelAt) + cv::Point(4, 14), colour);
}
}  // namespace

cv::Mat plotCurve(const SfrCurve& curve) {
    const cv::Scalar ink(40, 40, 40);
    cv::Mat img = axes().canvas(curve.normalFrequencyAxis ? "cycles per pixel (across the edge)"
                                                          : "cycles per pixel");
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
            cv::line(img, axes().toPixel(ch.frequency[k - 1], a),
                     axes().toPixel(ch.frequency[k], b), colour, 2, cv::LINE_AA);
        }
        char text[48];
        std::snprintf(text, sizeof text, "%s%sMTF50 %.3f",
                      curve.channels.size() == 1 ? "" : ch.name.c_str(),
                      curve.channels.size() == 1 ? "" : " ", ch.mtf50);
        verticalMark(img, ch.mtf50, text, colour, 0.5 + 0.08 * static_cast<double>(c + 1));
        if (ch.mtf50 > 0.0 && ch.mtf50 <= kMaxFrequency) {
            cv::circle(img, axes().toPixel(ch.mtf50, 0.5), 4, colour, cv::FILLED, cv::LINE_AA);
        }
    }
    return img;
}

}  // namespace station
}  // namespace talonvireo
