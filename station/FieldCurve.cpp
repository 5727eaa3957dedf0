#include "station/FieldCurve.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "station/PlotAxes.h"
#include "station/PlotColours.h"
#include "station/PlotFigures.h"

namespace talonvireo {
namespace station {

namespace {
constexpr int kBins = 10;  // of 10 % image height each
const cv::Scalar kInk(40, 40, 40);

struct Series {
    const char* name;
    cv::Scalar colour;
    bool square;
};
const Series kSeries[] = {{"tangential", palette::kTangential, false},
                          {"sagittal", palette::kSagittal, true}};

void marker(cv::Mat& img, cv::Point at, const Series& se) {
    if (se.square) {
        cv::rectangle(img, at - cv::Point(4, 4), at + cv::Point(4, 4), se.colour, cv::FILLED);
    } else {
        cv::circle(img, at, 5, se.colour, cv::FILLED, cv::LINE_AA);
    }
}

// A zone's minimum for each orientation, in the axis unit, across its span of height.
struct ZoneStep {
    double from, to;                   // image height, %
    std::optional<double> minimum[2];  // tangential, sagittal
    bool shared() const { return minimum[0] && minimum[1] && *minimum[0] == *minimum[1]; }
};

std::vector<ZoneStep> zoneSteps(const Limits& limits, const FigureAxis& axis) {
    std::vector<ZoneStep> steps;
    double lower = 0.0;
    for (const ZoneLimits& z : limits.zones) {
        if (lower < 100.0) {
            steps.push_back({lower,
                             std::min(z.maxHeight, 100.0),
                             {axis.minimumOf(z.figures.overriddenBy(z.tangential)),
                              axis.minimumOf(z.figures.overriddenBy(z.sagittal))}});
        }
        lower = z.maxHeight;
    }
    return steps;
}

// The slot's own minimum on the figure for the row, if its slot sets one.
std::optional<double> slotMinimum(const Limits& limits, const FigureAxis& axis,
                                  const EdgeRow& row) {
    std::optional<double> out;
    for (const SlotLimits& slot : limits.slots) {
        if (slot.index == row.index) {
            if (const std::optional<double> m = axis.minimumOf(slot.figures)) {
                out = m;
            }
        }
    }
    return out;
}

// Whether the row fails on this panel's figure: a flagged or unmeasured edge fails on every
// figure, a --min-sfr limit is on Nyquist/4.
bool failsOn(const FrameReport& report, const EdgeRow& row, const FigureAxis& axis) {
    if (!report.hasLimit || report.passes(row)) {
        return false;
    }
    if (report.limitsPath.empty()) {
        return axis.figure == PlotFigure::kQuarterNyquist;
    }
    const std::string& f = row.failedFigure;
    switch (axis.figure) {
        case PlotFigure::kQuarterNyquist:
            return f.empty() || f == "sfr_quarter_nyquist";
        case PlotFigure::kHalfNyquist:
            return f.empty() || f == "sfr_half_nyquist";
        case PlotFigure::kCustom:
            return f.empty() || f == "sfr_custom";
        case PlotFigure::kMtf50:
            return f.empty() || f.rfind("mtf50", 0) == 0;
    }
    return false;
}

void drawZones(cv::Mat& img, const PlotAxes& axes, const Limits& limits, const FigureAxis& axis) {
    const double top = axes.y().to;
    const std::vector<ZoneStep> steps = zoneSteps(limits, axis);
    const double last = limits.zones.back().maxHeight;
    if (last < 100.0) {
        // Beyond every zone: shaded, graded by slot limits only.
        const cv::Rect unzoned(axes.toPixel(last, top), axes.toPixel(100.0, 0.0));
        cv::Mat shade = img(unzoned);
        shade.convertTo(shade, -1, 0.88);
        plotLabel(img, "unzoned", axes.toPixel((last + 100.0) / 2, top) + cv::Point(-30, -4), kInk);
    }
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const ZoneStep& s = steps[i];
        const std::string& name = limits.zones[i].name;
        plotLabel(img, name,
                  axes.toPixel((s.from + s.to) / 2, top) +
                      cv::Point(-4 * static_cast<int>(name.size()), -4),
                  kInk);
        if (s.to < 100.0) {
            dashedLine(img, axes.toPixel(s.to, 0.0), axes.toPixel(s.to, top), kInk, 10.0, 0.6);
        }
    }
    // The minimums as steps: each zone's level across it, joined at the boundaries.
    const auto clampY = [top](double v) { return std::min(v, top); };
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const ZoneStep& s = steps[i];
        for (int o = 0; o < 2; ++o) {
            if (!s.minimum[o] || (o == 1 && s.shared())) {
                continue;
            }
            const cv::Point a = axes.toPixel(s.from, clampY(*s.minimum[o]));
            const cv::Point b = axes.toPixel(s.to, clampY(*s.minimum[o]));
            if (s.shared()) {
                cv::line(img, a, b, kInk, 2);
            } else {
                dashedLine(img, a, b, kSeries[o].colour, 10.0, 0.6);
            }
            if (i + 1 < steps.size() && steps[i + 1].minimum[o]) {
                const cv::Point c = axes.toPixel(s.to, clampY(*steps[i + 1].minimum[o]));
                if (s.shared() && steps[i + 1].shared()) {
                    cv::line(img, b, c, kInk, 2);
                } else {
                    dashedLine(img, b, c, s.shared() ? kInk : kSeries[o].colour, 10.0, 0.6);
                }
            }
        }
    }
}

cv::Mat drawPanel(const FrameReport& report, const FigureAxis& axis, const Limits* limits,
                  bool first) {
    double hi = 0.0;
    for (const EdgeRow& row : report.rows) {
        const double v = axis.valueOf(row);
        if (std::isfinite(v)) {
            hi = std::max(hi, v);
        }
        if (limits != nullptr) {
            if (const std::optional<double> m = slotMinimum(*limits, axis, row)) {
                hi = std::max(hi, *m);
            }
        }
    }
    if (limits != nullptr) {
        for (const ZoneStep& s : zoneSteps(*limits, axis)) {
            for (const std::optional<double>& m : s.minimum) {
                hi = std::max(hi, m.value_or(0.0));
            }
        }
    }
    const AxisRange yRange = axis.range(hi);
    const double top = yRange.to;
    const PlotAxes axes(cv::Size(1000, 560), AxisRange{0.0, 100.0, 10.0, "%.0f"}, yRange, 70, 20,
                        40, 50);
    cv::Mat img = axes.canvas("image height, % of the half-diagonal");
    std::string title = axis.title() + " against image height";
    if (first) {
        title += "   " + report.input + "   " + report.member;
    }
    if (limits != nullptr) {
        // The file's name: its folder would push the title off the picture.
        title += "   limits " + std::filesystem::path(limits->path).filename().string();
        drawZones(img, axes, *limits, axis);
    }
    plotLabel(img, title, {10, 18}, kInk);
    for (int s = 0; s < 2; ++s) {
        const Series& se = kSeries[s];
        std::vector<double> sum(kBins, 0.0), count(kBins, 0.0);
        for (const EdgeRow& row : report.rows) {
            const double v = axis.valueOf(row);
            if (row.field.orientation != se.name || !std::isfinite(v)) {
                continue;
            }
            const double h = std::clamp(row.field.heightPercent, 0.0, 100.0);
            const cv::Point at = axes.toPixel(h, std::min(v, top));
            marker(img, at, se);
            if (failsOn(report, row, axis)) {
                cv::circle(img, at, 9, kInk, 2, cv::LINE_AA);
            }
            if (limits != nullptr) {
                if (const std::optional<double> m = slotMinimum(*limits, axis, row)) {
                    const cv::Point bar = axes.toPixel(h, std::min(*m, top));
                    cv::line(img, bar - cv::Point(9, 0), bar + cv::Point(9, 0), kInk, 3);
                }
            }
            const int bin = std::min(kBins - 1, static_cast<int>(h / (100.0 / kBins)));
            sum[bin] += v;
            count[bin] += 1.0;
        }
        cv::Point previous(-1, -1);
        for (int b = 0; b < kBins; ++b) {
            if (count[b] == 0.0) {
                continue;
            }
            const cv::Point at =
                axes.toPixel((b + 0.5) * 100.0 / kBins, std::min(sum[b] / count[b], top));
            if (previous.x >= 0) {
                cv::line(img, previous, at, se.colour, 2, cv::LINE_AA);
            }
            previous = at;
        }
        // Legend, top right.
        const cv::Point key(760, 60 + 22 * s);
        marker(img, key, se);
        plotLabel(img, se.name, key + cv::Point(12, 5), kInk);
    }
    plotLabel(img, "lines: mean per 10 % of height", cv::Point(752, 60 + 22 * 2 + 5), kInk);
    // The rest of the legend names only what the panel shows.
    int y = 60 + 22 * 3;
    if (limits != nullptr) {
        const std::vector<ZoneStep> steps = zoneSteps(*limits, axis);
        if (std::any_of(steps.begin(), steps.end(), [](const ZoneStep& s) { return s.shared(); })) {
            cv::line(img, {750, y}, {770, y}, kInk, 2);
            plotLabel(img, "zone minimum", {778, y + 5}, kInk);
            y += 20;
        }
        if (std::any_of(steps.begin(), steps.end(), [](const ZoneStep& s) {
                return (s.minimum[0] || s.minimum[1]) && !s.shared();
            })) {
            dashedLine(img, {750, y}, {770, y}, kSeries[0].colour, 10.0, 0.6);
            plotLabel(img, "per orientation", {778, y + 5}, kInk);
            y += 20;
        }
        if (std::any_of(limits->slots.begin(), limits->slots.end(), [&axis](const SlotLimits& s) {
                return axis.minimumOf(s.figures).has_value();
            })) {
            cv::line(img, {751, y}, {769, y}, kInk, 3);
            plotLabel(img, "a slot's own minimum", {778, y + 5}, kInk);
            y += 20;
        }
    }
    if (report.hasLimit) {
        const cv::Point ring(760, y + 6);
        cv::circle(img, ring, 9, kInk, 2, cv::LINE_AA);
        plotLabel(img, "fails here, or flagged", ring + cv::Point(18, 5), kInk);
    }
    return img;
}
}  // namespace

cv::Mat plotFieldCurve(const FrameReport& report, bool mtf50, const Limits* limits) {
    const PlotFigure primary =
        mtf50 && report.hasMtf50 ? PlotFigure::kMtf50 : PlotFigure::kQuarterNyquist;
    const std::vector<FigureAxis> figures = plottedFigures(
        primary, limits, report.pixelPitchUm, report.height, report.hasCustom(), report.hasMtf50);
    std::vector<cv::Mat> panels;
    for (std::size_t i = 0; i < figures.size(); ++i) {
        panels.push_back(drawPanel(report, figures[i], limits, i == 0));
    }
    cv::Mat out;
    cv::vconcat(panels, out);
    return out;
}

}  // namespace station
}  // namespace talonvireo
