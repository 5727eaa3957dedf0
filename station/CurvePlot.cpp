#include "station/CurvePlot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "station/ChannelColour.h"
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

// A vertical line at f, labelled at the top.
void verticalMark(cv::Mat& img, double f, const char* text, const cv::Scalar& colour) {
    if (!(f > 0.0 && f <= kMaxFrequency)) {
        return;
    }
    cv::line(img, axes().toPixel(f, 0.0), axes().toPixel(f, kMaxSfr), colour, 1, cv::LINE_AA);
    if (text != nullptr) {
        plotLabel(img, text, axes().toPixel(f, kMaxSfr) + cv::Point(4, 14), colour);
    }
}

// Planes of one edge often coincide: each curve is drawn thinner than the one before, so every
// colour still shows along the edges of a shared line.
int curveThickness(int index, int count) {
    return 2 + 3 * (count - 1 - index) / 2;
}

// Width of a label in plotLabel's font.
int labelWidth(const std::string& text) {
    int baseline = 0;
    return cv::getTextSize(text, cv::FONT_HERSHEY_SIMPLEX, 0.45, 1, &baseline).width;
}

// Top right, where every curve has long fallen: each channel's ink, its name and its MTF50.
// The figures sit here rather than beside their marks, where they would cross the curves.
void legend(cv::Mat& img, const SfrCurve& curve) {
    constexpr int kRow = 20;
    constexpr int kSwatch = 30;
    const int count = static_cast<int>(curve.channels.size());
    std::vector<std::string> figures;
    int nameWidth = 0;
    int figureWidth = 0;
    for (const SfrChannelCurve& ch : curve.channels) {
        char text[32] = "MTF50 -";
        if (std::isfinite(ch.mtf50)) {
            std::snprintf(text, sizeof text, "MTF50 %.3f", ch.mtf50);
        }
        figures.push_back(text);
        nameWidth = std::max(nameWidth, labelWidth(ch.name));
        figureWidth = std::max(figureWidth, labelWidth(text));
    }
    const cv::Size size(10 + kSwatch + 10 + nameWidth + 10 + figureWidth + 10, 10 + kRow * count);
    const cv::Point corner(img.cols - 30 - size.width, 30);
    cv::rectangle(img, cv::Rect(corner, size), cv::Scalar(255, 255, 255), cv::FILLED);
    cv::rectangle(img, cv::Rect(corner, size), cv::Scalar(190, 190, 190), 1);
    const cv::Scalar ink(40, 40, 40);
    for (int c = 0; c < count; ++c) {
        const SfrChannelCurve& ch = curve.channels[c];
        const cv::Point row = corner + cv::Point(10, 15 + kRow * c);
        cv::line(img, row, row + cv::Point(kSwatch, 0), channelColour(ch.name),
                 curveThickness(c, count));
        plotLabel(img, ch.name, row + cv::Point(kSwatch + 10, 5), ink);
        plotLabel(img, figures[c], row + cv::Point(kSwatch + 10 + nameWidth + 10, 5), ink);
    }
}
}  // namespace

cv::Mat plotCurve(const SfrCurve& curve) {
    cv::Mat img = axes().canvas(curve.normalFrequencyAxis ? "cycles per pixel (across the edge)"
                                                          : "cycles per pixel");
    // Grey marks: no channel's colour stands for a reference.
    verticalMark(img, 0.125, "N/4", cv::Scalar(130, 130, 130));
    verticalMark(img, 0.25, "N/2", cv::Scalar(130, 130, 130));

    const int count = static_cast<int>(curve.channels.size());
    for (int c = 0; c < count; ++c) {
        const SfrChannelCurve& ch = curve.channels[c];
        const cv::Scalar colour = channelColour(ch.name);
        const int thickness = curveThickness(c, count);
        for (std::size_t k = 1; k < ch.frequency.size() && ch.frequency[k] <= kMaxFrequency; ++k) {
            const double a = std::min(std::max(ch.sfr[k - 1], 0.0), kMaxSfr);
            const double b = std::min(std::max(ch.sfr[k], 0.0), kMaxSfr);
            cv::line(img, axes().toPixel(ch.frequency[k - 1], a),
                     axes().toPixel(ch.frequency[k], b), colour, thickness, cv::LINE_AA);
        }
    }
    // MTF50 over every curve: a thin line and a dot where the curve crosses 0.5.
    for (const SfrChannelCurve& ch : curve.channels) {
        const cv::Scalar colour = channelColour(ch.name);
        verticalMark(img, ch.mtf50, nullptr, colour);
        if (ch.mtf50 > 0.0 && ch.mtf50 <= kMaxFrequency) {
            cv::circle(img, axes().toPixel(ch.mtf50, 0.5), 4, colour, cv::FILLED, cv::LINE_AA);
        }
    }
    legend(img, curve);
    return img;
}

}  // namespace station
}  // namespace talonvireo
