#include "station/EdgeColumns.h"

#include <cmath>

#include "station/PixelPitch.h"

namespace talonvireo {
namespace station {

namespace {
using T = ColumnType;

Cell real(double v) {
    return std::isfinite(v) ? Cell(v) : Cell();
}
bool located(const EdgeRow& row) {
    return row.state != EdgeState::kNotLocated;
}

using P = Presence;

Cell chartReal(const EdgeRow& row, double EdgeRow::ChartEdge::*field) {
    return row.chart ? real((*row.chart).*field) : Cell();
}
Cell chartText(const EdgeRow& row, std::string EdgeRow::ChartEdge::*field) {
    return row.chart ? Cell((*row.chart).*field) : Cell();
}

template <int Plane>
Cell planeQuarter(const FrameReport&, const EdgeRow& row) {
    return Plane < static_cast<int>(row.planes.size()) ? real(row.planes[Plane].sfrQuarterNyquist)
                                                       : Cell();
}
template <int Plane>
Cell planeHalf(const FrameReport&, const EdgeRow& row) {
    return Plane < static_cast<int>(row.planes.size()) ? real(row.planes[Plane].sfrHalfNyquist)
                                                       : Cell();
}
template <int Plane>
Cell planeMtf50(const FrameReport&, const EdgeRow& row) {
    return Plane < static_cast<int>(row.planes.size()) ? real(row.planes[Plane].mtf50) : Cell();
}

const std::vector<EdgeColumn> kColumns = {
    {"edge", T::Integer, "",
     "record slot of the edge: the first layout's, then the second's (charts: the "
     "description's slot, or a running index over the found sides)",
     P::Always, [](const FrameReport&, const EdgeRow& r) -> Cell { return (long long)r.index; }},
    {"state", T::Text, "",
     "measured, not located, off the frame, or refused by the SFR (with the reason); charts "
     "also: not found, cut by the frame, too short, near an axis",
     P::Always, [](const FrameReport&, const EdgeRow& r) -> Cell { return r.stateText(); }},
    {"x", T::Integer, "px",
     "edge centre, column, as the member's record holds it (charts: to the nearest pixel)",
     P::Always,
     [](const FrameReport&, const EdgeRow& r) -> Cell {
         return located(r) ? Cell((long long)r.measured.x) : Cell();
     }},
    {"y", T::Integer, "px", "edge centre, row", P::Always,
     [](const FrameReport&, const EdgeRow& r) -> Cell {
         return located(r) ? Cell((long long)r.measured.y) : Cell();
     }},
    {"side", T::Integer, "px",
     "side of the square region cut round the centre (charts: the longer side of its region)",
     P::Always, [](const FrameReport&, const EdgeRow& r) -> Cell { return (long long)r.side; }},
    {"name", T::Text, "", "charts: the description's name of the slot, or Q<quad>.<side>", P::Chart,
     [](const FrameReport&, const EdgeRow& r) -> Cell {
         return chartText(r, &EdgeRow::ChartEdge::name);
     }},
    {"centre_x", T::Real, "px",
     "charts: the region's centre, column (the edge's midpoint; with a description the slot's "
     "point on it)",
     P::Chart,
     [](const FrameReport&, const EdgeRow& r) { return chartReal(r, &EdgeRow::ChartEdge::x); }},
    {"centre_y", T::Real, "px", "charts: the region's centre, row", P::Chart,
     [](const FrameReport&, const EdgeRow& r) { return chartReal(r, &EdgeRow::ChartEdge::y); }},
    {"angle_deg", T::Real, "deg", "charts: the edge's direction from the x axis, 0 to 180",
     P::Chart,
     [](const FrameReport&, const EdgeRow& r) {
         return chartReal(r, &EdgeRow::ChartEdge::angleDeg);
     }},
    {"length_px", T::Real, "px", "charts: the found edge's length", P::Chart,
     [](const FrameReport&, const EdgeRow& r) {
         return chartReal(r, &EdgeRow::ChartEdge::lengthPx);
     }},
    {"bow_px", T::Real, "px",
     "charts: how far lens distortion bows the edge from straight, at its middle", P::Chart,
     [](const FrameReport&, const EdgeRow& r) { return chartReal(r, &EdgeRow::ChartEdge::bowPx); }},
    {"region_width", T::Integer, "px", "charts: width of the region fitted to the edge", P::Chart,
     [](const FrameReport&, const EdgeRow& r) -> Cell {
         return r.chart && r.chart->region.width > 0 ? Cell((long long)r.chart->region.width)
                                                     : Cell();
     }},
    {"region_height", T::Integer, "px", "charts: height of the region fitted to the edge", P::Chart,
     [](const FrameReport&, const EdgeRow& r) -> Cell {
         return r.chart && r.chart->region.height > 0 ? Cell((long long)r.chart->region.height)
                                                      : Cell();
     }},
    {"sfr_quarter_nyquist", T::Real, "", "SFR at Nyquist/4 (0.125 cycles per pixel)", P::Always,
     [](const FrameReport&, const EdgeRow& r) { return real(r.measured.sfrQuarterNyquist); }},
    {"sfr_half_nyquist", T::Real, "", "SFR at Nyquist/2 (0.25 cycles per pixel)", P::Always,
     [](const FrameReport&, const EdgeRow& r) { return real(r.measured.sfrHalfNyquist); }},
    {"sfr_custom", T::Real, "", "SFR at Nyquist/freq_divisor", P::Custom,
     [](const FrameReport&, const EdgeRow& r) { return real(r.measured.sfrCustom); }},
    {"mtf50", T::Real, "cycles/px", "frequency where the member's curve falls to 0.5", P::Always,
     [](const FrameReport&, const EdgeRow& r) { return real(r.mtf50); }},
    {"mtf50_lp_per_mm", T::Real, "lp/mm", "mtf50 in line pairs per millimetre on the sensor",
     P::Pitch,
     [](const FrameReport& f, const EdgeRow& r) {
         return real(linePairsPerMm(r.mtf50, f.pixelPitchUm));
     }},
    {"mtf50_lw_per_ph", T::Real, "LW/PH", "mtf50 in line widths per picture height", P::Pitch,
     [](const FrameReport& f, const EdgeRow& r) {
         return real(lineWidthsPerHeight(r.mtf50, f.height));
     }},
    {"edge_angle_deg", T::Real, "deg", "the edge's slant from the nearer pixel axis", P::Always,
     [](const FrameReport&, const EdgeRow& r) { return real(r.edgeAngle); }},
    {"contrast", T::Real, "ratio", "light side over dark side, grey levels clear of the edge",
     P::Always, [](const FrameReport&, const EdgeRow& r) { return real(r.contrast); }},
    {"snr", T::Real, "ratio", "(light - dark) over the sides' noise", P::Always,
     [](const FrameReport&, const EdgeRow& r) { return real(r.snr); }},
    {"clipped_share", T::Real, "fraction",
     "share of the raw samples in the edge's transition zone at or above the white level",
     P::Always, [](const FrameReport&, const EdgeRow& r) { return real(r.clippedShare); }},
    {"design_distance_px", T::Real, "px", "distance of the centre from the fitted chart design",
     P::Always, [](const FrameReport&, const EdgeRow& r) { return real(r.designDistance); }},
    {"flags", T::Text, "",
     "why the edge cannot be trusted (clipped; off the design; SFR above 1; low contrast; "
     "noisy), empty when none",
     P::Always, [](const FrameReport&, const EdgeRow& r) -> Cell { return joinWarnings(r.flags); }},
    {"precise_sfr_quarter_nyquist", T::Real, "", "precise method: SFR at Nyquist/4 across the edge",
     P::Precise,
     [](const FrameReport&, const EdgeRow& r) { return real(r.precise.sfrQuarterNyquist); }},
    {"precise_sfr_half_nyquist", T::Real, "", "precise method: SFR at Nyquist/2", P::Precise,
     [](const FrameReport&, const EdgeRow& r) { return real(r.precise.sfrHalfNyquist); }},
    {"precise_sfr_custom", T::Real, "", "precise method: SFR at the custom frequency",
     P::PreciseCustom,
     [](const FrameReport&, const EdgeRow& r) { return real(r.precise.sfrCustom); }},
    {"precise_mtf50", T::Real, "cycles/px", "precise method: MTF50 across the edge", P::Precise,
     [](const FrameReport&, const EdgeRow& r) { return real(r.precise.mtf50); }},
    {"precise_mtf50_lp_per_mm", T::Real, "lp/mm", "precise_mtf50 in line pairs per millimetre",
     P::PrecisePitch,
     [](const FrameReport& f, const EdgeRow& r) {
         return real(linePairsPerMm(r.precise.mtf50, f.pixelPitchUm));
     }},
    {"raw_R_sfr_quarter_nyquist", T::Real, "", "R plane of the mosaic: SFR at Nyquist/4", P::Planes,
     planeQuarter<0>},
    {"raw_R_sfr_half_nyquist", T::Real, "", "R plane: SFR at Nyquist/2", P::Planes, planeHalf<0>},
    {"raw_R_mtf50", T::Real, "cycles/px", "R plane: MTF50", P::Planes, planeMtf50<0>},
    {"raw_Gr_sfr_quarter_nyquist", T::Real, "", "Gr plane: SFR at Nyquist/4", P::Planes,
     planeQuarter<1>},
    {"raw_Gr_sfr_half_nyquist", T::Real, "", "Gr plane: SFR at Nyquist/2", P::Planes, planeHalf<1>},
    {"raw_Gr_mtf50", T::Real, "cycles/px", "Gr plane: MTF50", P::Planes, planeMtf50<1>},
    {"raw_Gb_sfr_quarter_nyquist", T::Real, "", "Gb plane: SFR at Nyquist/4", P::Planes,
     planeQuarter<2>},
    {"raw_Gb_sfr_half_nyquist", T::Real, "", "Gb plane: SFR at Nyquist/2", P::Planes, planeHalf<2>},
    {"raw_Gb_mtf50", T::Real, "cycles/px", "Gb plane: MTF50", P::Planes, planeMtf50<2>},
    {"raw_B_sfr_quarter_nyquist", T::Real, "", "B plane: SFR at Nyquist/4", P::Planes,
     planeQuarter<3>},
    {"raw_B_sfr_half_nyquist", T::Real, "", "B plane: SFR at Nyquist/2", P::Planes, planeHalf<3>},
    {"raw_B_mtf50", T::Real, "cycles/px", "B plane: MTF50", P::Planes, planeMtf50<3>},
    {"true_sfr_quarter_nyquist", T::Real, "", "rendered frames: the true SFR at Nyquist/4",
     P::Truth,
     [](const FrameReport&, const EdgeRow& r) {
         return r.hasTruth ? real(r.truth.sfrQuarter) : Cell();
     }},
    {"true_sfr_half_nyquist", T::Real, "", "rendered frames: the true SFR at Nyquist/2", P::Truth,
     [](const FrameReport&, const EdgeRow& r) {
         return r.hasTruth ? real(r.truth.sfrHalf) : Cell();
     }},
    {"true_x", T::Real, "px", "rendered frames: the true edge centre, column", P::Truth,
     [](const FrameReport&, const EdgeRow& r) {
         return r.hasTruth ? real(r.truth.centre.x) : Cell();
     }},
    {"true_y", T::Real, "px", "rendered frames: the true edge centre, row", P::Truth,
     [](const FrameReport&, const EdgeRow& r) {
         return r.hasTruth ? real(r.truth.centre.y) : Cell();
     }},
    {"height_percent", T::Real, "%", "image height of the centre, % of the half-diagonal",
     P::Always, [](const FrameReport&, const EdgeRow& r) { return real(r.field.heightPercent); }},
    {"azimuth_deg", T::Real, "deg",
     "direction of the centre from the frame centre, from +x "
     "counter-clockwise",
     P::Always, [](const FrameReport&, const EdgeRow& r) { return real(r.field.azimuthDeg); }},
    {"orientation", T::Text, "", "tangential, sagittal, or none near the centre", P::Always,
     [](const FrameReport&, const EdgeRow& r) -> Cell { return r.field.orientation; }},
    {"zone", T::Text, "", "the limits zone the edge falls in", P::Limits,
     [](const FrameReport&, const EdgeRow& r) -> Cell { return r.zone; }},
    {"failed_limit", T::Text, "", "the limit, state or flag that failed the edge; empty on a pass",
     P::Limits, [](const FrameReport&, const EdgeRow& r) -> Cell { return r.failedLimit; }},
    {"pass", T::Boolean, "", "graded: measured, unflagged and within every limit", P::Graded,
     [](const FrameReport& f, const EdgeRow& r) -> Cell { return f.passes(r); }},
};
}  // namespace

const std::vector<EdgeColumn>& edgeColumns() {
    return kColumns;
}

std::vector<const EdgeColumn*> columnsOf(const FrameReport& report) {
    std::vector<const EdgeColumn*> out;
    for (const EdgeColumn& c : kColumns) {
        if (c.present(report)) {
            out.push_back(&c);
        }
    }
    return out;
}

const char* presenceName(Presence presence) {
    switch (presence) {
        case P::Always:
            return "always";
        case P::Custom:
            return "custom";
        case P::Pitch:
            return "pitch";
        case P::Precise:
            return "precise";
        case P::PreciseCustom:
            return "precise+custom";
        case P::PrecisePitch:
            return "precise+pitch";
        case P::Planes:
            return "planes";
        case P::Truth:
            return "truth";
        case P::Limits:
            return "limits";
        case P::Graded:
            return "graded";
        case P::Chart:
            return "chart";
    }
    return "always";
}

bool carries(const FrameReport& r, Presence presence) {
    switch (presence) {
        case P::Always:
            return true;
        case P::Custom:
            return r.hasCustom();
        case P::Pitch:
            return r.hasPitch();
        case P::Precise:
            return r.hasPrecise;
        case P::PreciseCustom:
            return r.hasPrecise && r.hasCustom();
        case P::PrecisePitch:
            return r.hasPrecise && r.hasPitch();
        case P::Planes:
            return r.hasPlanes;
        case P::Truth:
            return r.hasTruth();
        case P::Limits:
            return !r.limitsPath.empty();
        case P::Graded:
            return r.hasLimit;
        case P::Chart:
            return r.isChart();
    }
    return true;
}

const char* typeName(ColumnType type) {
    static const char* const kNames[] = {"integer", "real", "text", "boolean"};
    return kNames[static_cast<int>(type)];
}

const char* sqlType(ColumnType type) {
    switch (type) {
        case ColumnType::Real:
            return "REAL";
        case ColumnType::Text:
            return "TEXT";
        case ColumnType::Integer:
        case ColumnType::Boolean:
            break;
    }
    return "INTEGER";
}

std::string columnsMarkdown() {
    std::string md = "| column | type | unit | when | meaning |\n|---|---|---|---|---|\n";
    for (const EdgeColumn& c : kColumns) {
        md += std::string("| `") + c.name + "` | " + typeName(c.type) + " | " + c.unit + " | " +
              presenceName(c.presence) + " | " + c.description + " |\n";
    }
    return md;
}

std::string joinWarnings(const std::vector<std::string>& warnings) {
    std::string out;
    for (const std::string& w : warnings) {
        out += (out.empty() ? "" : "; ") + w;
    }
    return out;
}

}  // namespace station
}  // namespace talonvireo
