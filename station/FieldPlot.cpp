#include "station/FieldPlot.h"
#include "station/PlotColours.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include <opencv2/imgproc.hpp>

namespace talonvireo {
namespace station {

namespace {
constexpr int kWidth = 1000;
constexpr int kHeader = 56;
constexpr int kBanner = 34;  // above the header, for a partial report
constexpr int kLegend = 64;
constexpr int kMarker = 9;
constexpr double kFaint = 0.35;  // share of the frame left in the background
const cv::Scalar kInk(30, 30, 30);

// Viridis at t in [0, 1], as BGR.
cv::Scalar viridis(double t) {
    cv::Mat one(1, 1, CV_8UC1, cv::Scalar(std::clamp(t, 0.0, 1.0) * 255.0));
    cv::Mat colour;
    cv::applyColorMap(one, colour, cv::COLORMAP_VIRIDIS);
    const cv::Vec3b c = colour.at<cv::Vec3b>(0, 0);
    return {static_cast<double>(c[0]), static_cast<double>(c[1]), static_cast<double>(c[2])};
}

void text(cv::Mat& img, const std::string& s, cv::Point at, double scale = 0.5,
          const cv::Scalar& colour = kInk, int weight = 1) {
    cv::putText(img, s, at, cv::FONT_HERSHEY_SIMPLEX, scale, colour, weight, cv::LINE_AA);
}

// The scale at which `s` fits the picture's width from x 10, at most `scale`: a long path
// shrinks rather than runs off the edge.
double fitting(const std::string& s, double scale, int weight) {
    int baseline = 0;
    const int width = cv::getTextSize(s, cv::FONT_HERSHEY_SIMPLEX, scale, weight, &baseline).width;
    return width > kWidth - 20 ? scale * (kWidth - 20.0) / width : scale;
}

// A partial report's figures are not the member's verdict: a vermilion strip across the top
// says so before anything else is read, with the member's failure, shrunk to fit the width.
void partialBanner(cv::Mat& canvas, const FrameReport& report) {
    cv::rectangle(canvas, cv::Rect(0, 0, kWidth, kBanner), palette::kVermilion, cv::FILLED);
    const std::string line = "PARTIAL: " + report.memberFailure;
    const double scale = fitting(line, 0.6, 2);
    text(canvas, line, {10, kBanner / 2 + 7}, scale, cv::Scalar(255, 255, 255),
         scale >= 0.45 ? 2 : 1);
}

// A failing edge: ringed black and crossed white.
void markFailing(cv::Mat& canvas, cv::Point at) {
    cv::circle(canvas, at, kMarker + 3, cv::Scalar(0, 0, 0), 3, cv::LINE_AA);
    const int d = kMarker - 3;
    for (const cv::Point& dir : {cv::Point(d, d), cv::Point(d, -d)}) {
        cv::line(canvas, at - dir, at + dir, cv::Scalar(255, 255, 255), 2, cv::LINE_AA);
    }
}

// The scale's ends: the figures' range, widened to at least 0.1 and rounded to 0.05.
std::pair<double, double> scaleRange(const FrameReport& report) {
    double lo = 1e9, hi = -1e9;
    for (const EdgeRow& row : report.rows) {
        const double v = row.measured.sfrQuarterNyquist;
        if (std::isfinite(v) && row.state == EdgeState::kMeasured) {
            lo = std::min(lo, v);
            hi = std::max(hi, v);
        }
    }
    if (lo > hi) {
        return {0.0, 1.0};
    }
    lo = std::floor(lo / 0.05) * 0.05;
    hi = std::max(std::ceil(hi / 0.05) * 0.05, lo + 0.1);
    return {lo, hi};
}
}  // namespace

cv::Mat plotField(const cv::Mat& grey, const FrameReport& report) {
    const double scale = static_cast<double>(kWidth) / std::max(grey.cols, 1);
    const int frameHeight = std::max(1, static_cast<int>(std::lround(grey.rows * scale)));
    const int banner = report.partial() ? kBanner : 0;
    const int header = banner + kHeader;
    cv::Mat canvas(header + frameHeight + kLegend, kWidth, CV_8UC3, cv::Scalar(255, 255, 255));
    if (report.partial()) {
        partialBanner(canvas, report);
    }

    cv::Mat small, faint, colour;
    cv::resize(grey, small, cv::Size(kWidth, frameHeight), 0, 0, cv::INTER_AREA);
    small.convertTo(faint, CV_8U, kFaint, 255.0 * (1.0 - kFaint));
    cv::cvtColor(faint, colour, cv::COLOR_GRAY2BGR);
    colour.copyTo(canvas(cv::Rect(0, header, kWidth, frameHeight)));

    // Header: what was measured and how it went.
    char line[256];
    std::snprintf(line, sizeof line, "%s   %s   %d x %d",
                  report.input.empty() ? "(rendered frame)" : report.input.c_str(),
                  report.member.c_str(), report.width, report.height);
    text(canvas, line, {10, banner + 22}, fitting(line, 0.5, 1));
    const int failures = report.failures();
    const int edges = static_cast<int>(report.rows.size());
    if (report.hasLimit) {
        std::snprintf(line, sizeof line, "limits %s   yield %d of %d edges pass: frame %s",
                      report.limitsPath.empty() ? "--min-sfr" : report.limitsPath.c_str(),
                      edges - failures, edges, failures == 0 ? "PASSES" : "FAILS");
    } else {
        std::snprintf(line, sizeof line, "%d edges, no limits", edges);
    }
    if (report.partial()) {
        // The yield of edges measured region by region is not the frame's.
        std::snprintf(line + std::strlen(line), sizeof line - std::strlen(line),
                      "   (not the member's verdict)");
    }
    text(canvas, line, {10, banner + 44}, fitting(line, 0.5, 1));

    // Markers: colour by SFR at Nyquist/4; a failing edge is ringed black and crossed.
    const auto [lo, hi] = scaleRange(report);
    for (const EdgeRow& row : report.rows) {
        if (row.state == EdgeState::kNotLocated) {
            continue;  // it has no place on the frame
        }
        const cv::Point at(static_cast<int>(std::lround(row.measured.x * scale)),
                           header + static_cast<int>(std::lround(row.measured.y * scale)));
        // An edge not measured has no figure to colour it by, whatever its record holds.
        const double v = row.measured.sfrQuarterNyquist;
        const cv::Scalar fill = std::isfinite(v) && row.state == EdgeState::kMeasured
                                    ? viridis((v - lo) / (hi - lo))
                                    : cv::Scalar(200, 200, 200);
        cv::circle(canvas, at, kMarker, fill, cv::FILLED, cv::LINE_AA);
        if (report.hasLimit && !report.passes(row)) {
            markFailing(canvas, at);
        } else {
            cv::circle(canvas, at, kMarker, kInk, 1, cv::LINE_AA);
        }
    }

    // Legend: the colour bar with its ends and middle, and what the marks mean.
    const int top = header + frameHeight + 14, left = 180, width = 400, height = 14;
    for (int x = 0; x < width; ++x) {
        cv::line(canvas, {left + x, top}, {left + x, top + height}, viridis(x / (width - 1.0)));
    }
    cv::rectangle(canvas, cv::Rect(left, top, width, height), kInk, 1);
    text(canvas, "SFR at Nyquist/4", {10, top + 12});
    for (int k = 0; k <= 2; ++k) {
        std::snprintf(line, sizeof line, "%.2f", lo + (hi - lo) * k / 2.0);
        text(canvas, line, {left + k * width / 2 - 14, top + height + 18}, 0.45);
    }
    if (report.hasLimit) {
        const cv::Point key(left + width + 60, top + 7);
        cv::circle(canvas, key, kMarker, viridis(0.5), cv::FILLED, cv::LINE_AA);
        markFailing(canvas, key);
        text(canvas, "fails its limit", key + cv::Point(20, 5));
    }
    return canvas;
}

}  // namespace station
}  // namespace talonvireo
