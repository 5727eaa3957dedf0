#include "station/PlotFigures.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "station/PixelPitch.h"

namespace talonvireo {
namespace station {

namespace {
bool sets(const FigureLimits& f, PlotFigure figure) {
    switch (figure) {
        case PlotFigure::kQuarterNyquist:
            return f.sfrQuarterNyquist.has_value();
        case PlotFigure::kHalfNyquist:
            return f.sfrHalfNyquist.has_value();
        case PlotFigure::kCustom:
            return f.sfrCustom.has_value();
        case PlotFigure::kMtf50:
            return f.mtf50 || f.mtf50LpPerMm || f.mtf50LwPerPh;
    }
    return false;
}
}  // namespace

std::string FigureAxis::title() const {
    switch (figure) {
        case PlotFigure::kQuarterNyquist:
            return "SFR at Nyquist/4";
        case PlotFigure::kHalfNyquist:
            return "SFR at Nyquist/2";
        case PlotFigure::kCustom:
            return "SFR at the custom frequency";
        case PlotFigure::kMtf50:
            break;
    }
    if (!lpPerMm()) {
        return "MTF50 (cycles per pixel)";
    }
    char text[64];
    std::snprintf(text, sizeof text, "MTF50 (lp/mm, pixel pitch %.3g um)", pitchUm);
    return text;
}

double FigureAxis::valueOf(const EdgeRow& row) const {
    if (row.state != EdgeState::kMeasured) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    switch (figure) {
        case PlotFigure::kQuarterNyquist:
            return row.measured.sfrQuarterNyquist;
        case PlotFigure::kHalfNyquist:
            return row.measured.sfrHalfNyquist;
        case PlotFigure::kCustom:
            return row.measured.sfrCustom;
        case PlotFigure::kMtf50:
            break;
    }
    return lpPerMm() ? linePairsPerMm(row.mtf50, pitchUm) : row.mtf50;
}

std::optional<double> FigureAxis::minimumOf(const FigureLimits& f) const {
    switch (figure) {
        case PlotFigure::kQuarterNyquist:
            return f.sfrQuarterNyquist;
        case PlotFigure::kHalfNyquist:
            return f.sfrHalfNyquist;
        case PlotFigure::kCustom:
            return f.sfrCustom;
        case PlotFigure::kMtf50:
            break;
    }
    // Every MTF50 minimum in cycles per pixel first; an edge must meet them all.
    std::optional<double> cycles = f.mtf50;
    const auto stricter = [&cycles](double v) { cycles = cycles ? std::max(*cycles, v) : v; };
    if (f.mtf50LpPerMm && std::isfinite(pitchUm)) {
        stricter(*f.mtf50LpPerMm * pitchUm / 1000.0);
    }
    if (f.mtf50LwPerPh && heightPx > 0) {
        stricter(*f.mtf50LwPerPh / (2.0 * heightPx));
    }
    if (cycles && lpPerMm()) {
        return linePairsPerMm(*cycles, pitchUm);
    }
    return cycles;
}

bool FigureAxis::limitedBy(const Limits& limits) const {
    for (const ZoneLimits& z : limits.zones) {
        if (sets(z.figures, figure) || sets(z.tangential, figure) || sets(z.sagittal, figure)) {
            return true;
        }
    }
    for (const SlotLimits& s : limits.slots) {
        if (sets(s.figures, figure)) {
            return true;
        }
    }
    return false;
}

AxisRange FigureAxis::range(double highest) const {
    if (figure != PlotFigure::kMtf50) {
        return {0.0, std::max(1.0, std::ceil(highest / 0.2 - 1e-9) * 0.2), 0.2, "%.1f"};
    }
    if (!lpPerMm()) {
        return {0.0, std::max(0.1, std::ceil(highest / 0.05 - 1e-9) * 0.05), 0.05, "%.2f"};
    }
    const double floorTop = linePairsPerMm(0.1, pitchUm);
    const double top = std::max(highest, floorTop);
    const double tick = roundStep(top, 5);
    return {0.0, std::ceil(top / tick - 1e-9) * tick, tick, "%.0f"};
}

std::vector<FigureAxis> plottedFigures(PlotFigure primary, const Limits* limits, double pitchUm,
                                       int heightPx, bool hasCustom, bool hasMtf50) {
    std::vector<FigureAxis> out;
    out.push_back({primary, pitchUm, heightPx});
    if (limits == nullptr) {
        return out;
    }
    for (const PlotFigure f : {PlotFigure::kQuarterNyquist, PlotFigure::kHalfNyquist,
                               PlotFigure::kCustom, PlotFigure::kMtf50}) {
        const FigureAxis axis{f, pitchUm, heightPx};
        const bool carried =
            (f != PlotFigure::kCustom || hasCustom) && (f != PlotFigure::kMtf50 || hasMtf50);
        if (f != primary && carried && axis.limitedBy(*limits)) {
            out.push_back(axis);
        }
    }
    return out;
}

}  // namespace station
}  // namespace talonvireo
