#include "station/BatchSummaryPlot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>

#include <opencv2/imgproc.hpp>

#include "station/PlotAxes.h"

namespace talonvireo {
namespace station {

namespace {
struct Band {
    std::string name;
    double maxHeight;
    std::optional<double> tangentialLimit;
    std::optional<double> sagittalLimit;
};

std::vector<Band> bandsOf(const Limits* limits) {
    std::vector<Band> bands;
    if (limits != nullptr) {
        for (const ZoneLimits& z : limits->zones) {
            bands.push_back({z.name, z.maxHeight,
                             z.figures.overriddenBy(z.tangential).sfrQuarterNyquist,
                             z.figures.overriddenBy(z.sagittal).sfrQuarterNyquist});
        }
        bands.back().maxHeight = 1e9;  // the last zone takes everything beyond
        return bands;
    }
    for (int h = 20; h <= 100; h += 20) {
        const std::string from = std::to_string(h - 20);
        bands.push_back({from + "-" + std::to_string(h) + " %", h == 100 ? 1e9 : h, {}, {}});
    }
    return bands;
}

double percentile(const std::vector<double>& sorted, double p) {
    const double at = p * static_cast<double>(sorted.size() - 1);
    const std::size_t lo = static_cast<std::size_t>(std::floor(at));
    const std::size_t hi = std::min(sorted.size() - 1, lo + 1);
    return sorted[lo] + (at - static_cast<double>(lo)) * (sorted[hi] - sorted[lo]);
}

void dashedLine(cv::Mat& img, cv::Point a, cv::Point b, const cv::Scalar& colour) {
    for (int x = a.x; x < b.x; x += 8) {
        cv::line(img, {x, a.y}, {std::min(x + 4, b.x), b.y}, colour, 2);
    }
}
// A zone's minimum across one box, drawn over it.
void drawLimit(cv::Mat& img, const PlotAxes& axes, double centre, int half,
               const std::optional<double>& limit) {
    if (limit) {
        const cv::Point at = axes.toPixel(centre, std::clamp(*limit, 0.0, 1.0));
        dashedLine(img, at - cv::Point(half + 6, 0), at + cv::Point(half + 6, 0),
                   cv::Scalar(0, 0, 0));
    }
}
}  // namespace

cv::Mat plotBatchSummary(const std::vector<FrameReport>& reports, const Limits* limits,
                         const std::string& member, const BatchTally& tally) {
    const std::vector<Band> bands = bandsOf(limits);
    const int n = static_cast<int>(bands.size());
    const PlotAxes axes(cv::Size(1000, 600), AxisRange{0.0, static_cast<double>(n), 1.0, ""},
                        AxisRange{0.0, 1.0, 0.1, "%.1f"}, 70, 20, 70, 70);
    cv::Mat img = axes.canvas("");
    const cv::Scalar ink(40, 40, 40);
    char header[256];
    std::snprintf(header, sizeof header,
                  "SFR at Nyquist/4 by field zone   %s   %d frames measured of %d, yield %.1f %%",
                  member.c_str(), tally.measured, tally.counted(), tally.yieldPercent());
    plotLabel(img, header, {10, 22}, ink);
    plotLabel(img, limits != nullptr ? "limits " + limits->path : "zones: image height bands",
              {10, 44}, ink);
    // Okabe-Ito blue and vermilion: apart for every colour vision.
    const cv::Scalar colours[2] = {cv::Scalar(178, 114, 0), cv::Scalar(0, 94, 213)};
    const char* names[2] = {"tangential", "sagittal"};
    for (int b = 0; b < n; ++b) {
        const double lower = b == 0 ? -1.0 : bands[b - 1].maxHeight;
        for (int s = 0; s < 2; ++s) {
            std::vector<double> values;
            for (const FrameReport& r : reports) {
                for (const EdgeRow& row : r.rows) {
                    const double h = row.field.heightPercent;
                    const double v = row.measured.sfrQuarterNyquist;
                    if (row.field.orientation == names[s] && h > lower && h <= bands[b].maxHeight &&
                        std::isfinite(v)) {
                        values.push_back(std::clamp(v, 0.0, 1.0));
                    }
                }
            }
            const double centre = b + 0.3 + 0.4 * s;
            const int half = std::max(6, static_cast<int>(600 / n * 0.12));
            const cv::Point foot = axes.toPixel(centre, 0.0);
            const std::string count = "n=" + std::to_string(values.size());
            plotLabel(img, count, foot + cv::Point(-14, 18), ink);
            if (values.empty()) {
                drawLimit(img, axes, centre, half,
                          s == 0 ? bands[b].tangentialLimit : bands[b].sagittalLimit);
                continue;
            }
            std::sort(values.begin(), values.end());
            const int x = foot.x;
            const int p05 = axes.toPixel(centre, percentile(values, 0.05)).y;
            const int p25 = axes.toPixel(centre, percentile(values, 0.25)).y;
            const int p50 = axes.toPixel(centre, percentile(values, 0.50)).y;
            const int p75 = axes.toPixel(centre, percentile(values, 0.75)).y;
            const int p95 = axes.toPixel(centre, percentile(values, 0.95)).y;
            cv::line(img, {x, p05}, {x, p25}, colours[s], 2);
            cv::line(img, {x, p75}, {x, p95}, colours[s], 2);
            cv::line(img, {x - half / 2, p05}, {x + half / 2, p05}, colours[s], 2);
            cv::line(img, {x - half / 2, p95}, {x + half / 2, p95}, colours[s], 2);
            cv::rectangle(img, {x - half, p75}, {x + half, p25},
                          colours[s] * 0.35 + cv::Scalar::all(165), cv::FILLED);
            cv::rectangle(img, {x - half, p75}, {x + half, p25}, colours[s], 2);
            cv::line(img, {x - half, p50}, {x + half, p50}, ink, 3);
            // The extremes beyond the whiskers, as dots.
            for (const double v : {values.front(), values.back()}) {
                cv::circle(img, axes.toPixel(centre, v), 3, colours[s], cv::FILLED, cv::LINE_AA);
            }
            drawLimit(img, axes, centre, half,
                      s == 0 ? bands[b].tangentialLimit : bands[b].sagittalLimit);
        }
        const cv::Point label = axes.toPixel(b + 0.5, 0.0) + cv::Point(-40, 42);
        plotLabel(img, bands[b].name, label, ink);
    }
    // Legend, right of the header.
    for (int s = 0; s < 2; ++s) {
        const cv::Point key(820, 16 + 20 * s);
        cv::rectangle(img, key - cv::Point(6, 6), key + cv::Point(6, 6), colours[s], cv::FILLED);
        plotLabel(img, names[s], key + cv::Point(12, 5), ink);
    }
    if (limits != nullptr) {
        dashedLine(img, {700, 56}, {730, 56}, cv::Scalar(0, 0, 0));
        plotLabel(img, "limit", {738, 61}, ink);
    }
    plotLabel(img, "box: quartiles and median; whiskers: 5-95 %; dots: extremes", {10, 592}, ink);
    return img;
}

}  // namespace station
}  // namespace talonvireo
