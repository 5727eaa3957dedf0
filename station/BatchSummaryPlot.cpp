#include "station/BatchSummaryPlot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>

#include <opencv2/imgproc.hpp>

#include "station/PlotAxes.h"
#include "station/PlotColours.h"
#include "station/PlotFigures.h"

namespace talonvireo {
namespace station {

namespace {
constexpr double kBeyond = std::numeric_limits<double>::infinity();
const cv::Scalar kInk(40, 40, 40);
const cv::Scalar kColours[2] = {palette::kTangential, palette::kSagittal};
const char* const kOrientations[2] = {"tangential", "sagittal"};

struct Band {
    std::string name;
    double lower;            // an edge above it ...
    double upper;            // ... and at or below it belongs to the band
    const ZoneLimits* zone;  // nullptr: no limits, or unzoned
};

std::vector<Band> bandsOf(const Limits* limits, const std::vector<FrameReport>& reports) {
    std::vector<Band> bands;
    if (limits == nullptr) {
        for (int h = 20; h <= 100; h += 20) {
            bands.push_back({std::to_string(h - 20) + "-" + std::to_string(h) + " %",
                             h == 20 ? -kBeyond : h - 20.0, h == 100 ? kBeyond : h, nullptr});
        }
        return bands;
    }
    double lower = -kBeyond;
    for (const ZoneLimits& z : limits->zones) {
        bands.push_back({z.name, lower, z.maxHeight, &z});
        lower = z.maxHeight;
    }
    // Edges beyond the last zone are graded by no zone: a band of their own, when there are any.
    for (const FrameReport& r : reports) {
        for (const EdgeRow& row : r.rows) {
            if (row.field.heightPercent > lower) {
                bands.push_back({"unzoned", lower, kBeyond, nullptr});
                return bands;
            }
        }
    }
    return bands;
}

double percentile(const std::vector<double>& sorted, double p) {
    const double at = p * static_cast<double>(sorted.size() - 1);
    const std::size_t lo = static_cast<std::size_t>(std::floor(at));
    const std::size_t hi = std::min(sorted.size() - 1, lo + 1);
    return sorted[lo] + (at - static_cast<double>(lo)) * (sorted[hi] - sorted[lo]);
}

// The band's minimum on the figure for an orientation (0 tangential, 1 sagittal).
std::optional<double> minimumOf(const Band& band, const FigureAxis& axis, int orientation) {
    if (band.zone == nullptr) {
        return std::nullopt;
    }
    const ZoneLimits& z = *band.zone;
    return axis.minimumOf(z.figures.overriddenBy(orientation == 0 ? z.tangential : z.sagittal));
}

// The figure's values of one band and orientation over every frame.
std::vector<double> valuesOf(const std::vector<FrameReport>& reports, const FigureAxis& axis,
                             const Band& band, int orientation) {
    std::vector<double> values;
    for (const FrameReport& r : reports) {
        for (const EdgeRow& row : r.rows) {
            const double h = row.field.heightPercent;
            const double v = axis.valueOf(row);
            if (row.field.orientation == kOrientations[orientation] && h > band.lower &&
                h <= band.upper && std::isfinite(v)) {
                values.push_back(v);
            }
        }
    }
    return values;
}

void drawBox(cv::Mat& img, const PlotAxes& axes, double centre, int half,
             std::vector<double> values, const cv::Scalar& colour) {
    const double top = axes.y().to;
    for (double& v : values) {
        v = std::clamp(v, 0.0, top);
    }
    std::sort(values.begin(), values.end());
    const int x = axes.toPixel(centre, 0.0).x;
    const auto y = [&](double p) { return axes.toPixel(centre, percentile(values, p)).y; };
    const int p05 = y(0.05), p25 = y(0.25), p50 = y(0.50), p75 = y(0.75), p95 = y(0.95);
    cv::line(img, {x, p05}, {x, p25}, colour, 2);
    cv::line(img, {x, p75}, {x, p95}, colour, 2);
    cv::line(img, {x - half / 2, p05}, {x + half / 2, p05}, colour, 2);
    cv::line(img, {x - half / 2, p95}, {x + half / 2, p95}, colour, 2);
    cv::rectangle(img, {x - half, p75}, {x + half, p25}, colour * 0.35 + cv::Scalar::all(165),
                  cv::FILLED);
    cv::rectangle(img, {x - half, p75}, {x + half, p25}, colour, 2);
    cv::line(img, {x - half, p50}, {x + half, p50}, kInk, 3);
    // The extremes beyond the whiskers, as dots.
    for (const double v : {values.front(), values.back()}) {
        cv::circle(img, axes.toPixel(centre, v), 3, colour, cv::FILLED, cv::LINE_AA);
    }
}

// Each band's minimums as one step line: the tangential level over the tangential box's half,
// the sagittal one over the other, joined where both sides have one.
void drawSteps(cv::Mat& img, const PlotAxes& axes, const std::vector<Band>& bands,
               const FigureAxis& axis) {
    const double top = axes.y().to;
    std::optional<cv::Point> previous;
    for (std::size_t b = 0; b < bands.size(); ++b) {
        for (int s = 0; s < 2; ++s) {
            const std::optional<double> m = minimumOf(bands[b], axis, s);
            if (!m) {
                previous.reset();
                continue;
            }
            const double level = std::clamp(*m, 0.0, top);
            const cv::Point a = axes.toPixel(static_cast<double>(b) + 0.5 * s, level);
            const cv::Point c = axes.toPixel(static_cast<double>(b) + 0.5 * (s + 1), level);
            if (previous && previous->y != a.y) {
                dashedLine(img, *previous, a, cv::Scalar(0, 0, 0), 8.0, 0.5);
            }
            dashedLine(img, a, c, cv::Scalar(0, 0, 0), 8.0, 0.5);
            previous = c;
        }
    }
}

cv::Mat drawPanel(const std::vector<FrameReport>& reports, const Limits* limits,
                  const std::vector<Band>& bands, const FigureAxis& axis, bool first, bool last,
                  const std::string& member, const BatchTally& tally) {
    const int n = static_cast<int>(bands.size());
    // SFR on its usual 0 .. 1 (a sharpened edge above 1 sits on the top); MTF50 to its data.
    AxisRange yRange{0.0, 1.0, 0.1, "%.1f"};
    if (axis.figure == PlotFigure::kMtf50) {
        double hi = 0.0;
        for (const Band& band : bands) {
            for (int s = 0; s < 2; ++s) {
                for (const double v : valuesOf(reports, axis, band, s)) {
                    hi = std::max(hi, v);
                }
                hi = std::max(hi, minimumOf(band, axis, s).value_or(0.0));
            }
        }
        yRange = axis.range(hi);
    }
    const PlotAxes axes(cv::Size(1000, 600), AxisRange{0.0, static_cast<double>(n), 1.0, ""},
                        yRange, 70, 20, 70, 70);
    cv::Mat img = axes.canvas("");
    char header[256];
    if (first) {
        std::snprintf(header, sizeof header,
                      "%s by field zone   %s   %d frames measured of %d, yield %.1f %%",
                      axis.title().c_str(), member.c_str(), tally.measured, tally.counted(),
                      tally.yieldPercent());
        plotLabel(img, header, {10, 22}, kInk);
        plotLabel(img, limits != nullptr ? "limits " + limits->path : "zones: image height bands",
                  {10, 44}, kInk);
        // Legend, right of the header.
        for (int s = 0; s < 2; ++s) {
            const cv::Point key(820, 16 + 20 * s);
            cv::rectangle(img, key - cv::Point(6, 6), key + cv::Point(6, 6), kColours[s],
                          cv::FILLED);
            plotLabel(img, kOrientations[s], key + cv::Point(12, 5), kInk);
        }
        if (limits != nullptr) {
            dashedLine(img, {700, 56}, {730, 56}, cv::Scalar(0, 0, 0), 8.0, 0.5);
            plotLabel(img, "limit", {738, 61}, kInk);
        }
    } else {
        plotLabel(img, axis.title() + " by field zone", {10, 22}, kInk);
    }
    const int half = std::max(6, static_cast<int>(600 / n * 0.12));
    for (int b = 0; b < n; ++b) {
        for (int s = 0; s < 2; ++s) {
            const std::vector<double> values = valuesOf(reports, axis, bands[b], s);
            const double centre = b + 0.3 + 0.4 * s;
            const cv::Point foot = axes.toPixel(centre, 0.0);
            plotLabel(img, "n=" + std::to_string(values.size()), foot + cv::Point(-14, 18), kInk);
            if (!values.empty()) {
                drawBox(img, axes, centre, half, values, kColours[s]);
            }
        }
        plotLabel(img, bands[b].name, axes.toPixel(b + 0.5, 0.0) + cv::Point(-40, 42), kInk);
    }
    // Each zone's max_height: a boundary between its column and the next, labelled at its top.
    for (int b = 0; b + 1 < n; ++b) {
        const cv::Point foot = axes.toPixel(b + 1.0, 0.0);
        const cv::Point head = axes.toPixel(b + 1.0, yRange.to);
        cv::line(img, foot, head, cv::Scalar(150, 150, 150), 2);
        char height[32];
        std::snprintf(height, sizeof height, "%.4g %%", bands[b].upper);
        plotLabel(img, height, head + cv::Point(6, 16), kInk);
    }
    if (limits != nullptr) {
        drawSteps(img, axes, bands, axis);
        if (std::any_of(limits->slots.begin(), limits->slots.end(), [&axis](const SlotLimits& s) {
                return axis.minimumOf(s.figures).has_value();
            })) {
            // A slot's minimum is one edge's, not a zone's: the field curve draws it.
            plotLabel(img, "and [[slot]] minimums on single edges (not drawn)",
                      {first ? 420 : 300, first ? 44 : 22}, kInk);
        }
    }
    if (last) {
        plotLabel(img, "box: quartiles and median; whiskers: 5-95 %; dots: extremes", {10, 592},
                  kInk);
    }
    return img;
}
}  // namespace

cv::Mat plotBatchSummary(const std::vector<FrameReport>& reports, const Limits* limits,
                         const std::string& member, const BatchTally& tally) {
    // The units come with the reports; frames read back from a record carry none.
    double pitchUm = std::numeric_limits<double>::quiet_NaN();
    int heightPx = 0;
    bool custom = false, mtf50 = false;
    for (const FrameReport& r : reports) {
        if (!std::isfinite(pitchUm) && r.hasPitch()) {
            pitchUm = r.pixelPitchUm;
        }
        heightPx = heightPx > 0 ? heightPx : r.height;
        custom = custom || r.hasCustom();
        mtf50 = mtf50 || r.hasMtf50 ||
                std::any_of(r.rows.begin(), r.rows.end(),
                            [](const EdgeRow& row) { return std::isfinite(row.mtf50); });
    }
    const std::vector<FigureAxis> figures =
        plottedFigures(PlotFigure::kQuarterNyquist, limits, pitchUm, heightPx, custom, mtf50);
    const std::vector<Band> bands = bandsOf(limits, reports);
    std::vector<cv::Mat> panels;
    for (std::size_t i = 0; i < figures.size(); ++i) {
        panels.push_back(drawPanel(reports, limits, bands, figures[i], i == 0,
                                   i + 1 == figures.size(), member, tally));
    }
    cv::Mat out;
    cv::vconcat(panels, out);
    return out;
}

}  // namespace station
}  // namespace talonvireo
