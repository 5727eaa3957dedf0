// The figures a plot draws against limits: which of them (the one asked for, then every
// other one the limits set), each edge's value and each limit in the plot's unit, and an
// axis that holds both.
#pragma once

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "station/EdgeReport.h"
#include "station/Limits.h"
#include "station/PlotAxes.h"

namespace talonvireo {
namespace station {

enum class PlotFigure { kQuarterNyquist, kHalfNyquist, kCustom, kMtf50 };

struct FigureAxis {
    PlotFigure figure = PlotFigure::kQuarterNyquist;
    // MTF50 in line pairs per mm (a pixel pitch given) rather than cycles per pixel.
    double pitchUm = std::numeric_limits<double>::quiet_NaN();
    int heightPx = 0;  // the picture's height, for limits in LW/PH

    bool lpPerMm() const { return figure == PlotFigure::kMtf50 && std::isfinite(pitchUm); }
    // "SFR at Nyquist/4", "MTF50 (lp/mm, pixel pitch 1.12 um)", ...
    std::string title() const;
    // The row's figure in the axis unit; NaN where it was not measured.
    double valueOf(const EdgeRow& row) const;
    // The strictest minimum `limits` set on the figure, in the axis unit; MTF50 limits in
    // other units are converted (LW/PH only with the picture's height).
    std::optional<double> minimumOf(const FigureLimits& limits) const;
    // Whether any zone, orientation or slot of `limits` sets the figure (in any unit).
    bool limitedBy(const Limits& limits) const;
    // From 0 to a round top at or above `highest` (SFR at least 1, MTF50 at least 0.1 cycles
    // per pixel), with its tick and label format.
    AxisRange range(double highest) const;
};

// `primary` first, then each other figure that `limits` set and the report carries (the
// custom SFR with a custom frequency, MTF50 when measured), in the order N/4, N/2, custom,
// MTF50.
std::vector<FigureAxis> plottedFigures(PlotFigure primary, const Limits* limits, double pitchUm,
                                       int heightPx, bool hasCustom, bool hasMtf50);

}  // namespace station
}  // namespace talonvireo
