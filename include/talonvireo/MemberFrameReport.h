// Everything one pass of a whole-frame member learns about a frame, slot by slot: what became
// of every edge (measured, not located, off the frame, refused), its centre, the member's three
// figures, and from the same pass the edge's MTF50 and angle, its contrast, noise and clipping,
// and its distance from the chart design. Optionally the precise method's figures of the same
// grey region and of each raw colour plane under it.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "talonvireo/Export.h"
#include "talonvireo/MeasurementRecords.h"
#include "talonvireo/MemberTable.h"

namespace talonvireo {

/// What became of a record slot's edge.
enum class SlotState {
    kMeasured = 0,    ///< its region was cut and measured
    kNotLocated = 1,  ///< the locator found no centre for it (or its whole layout)
    kOffFrame = 2,    ///< its region leaves the frame
    kRefused = 3,     ///< the SFR refused its region (SlotReport::sfrStatus says why)
};

/// Figures of one curve read off a region: the SFR at Nyquist/4, Nyquist/2 and the custom
/// frequency, and MTF50 (cycles per pixel). NaN where a figure does not exist; all NaN with
/// a non-zero status when the region was refused.
struct CurveFigures {
    std::string channel;  ///< "grey", or the raw plane: "R", "Gr", "Gb", "B"
    int status = 0;       ///< measureSfrCurve's status
    double sfrQuarterNyquist = std::numeric_limits<double>::quiet_NaN();
    double sfrHalfNyquist = std::numeric_limits<double>::quiet_NaN();
    double sfrCustom = std::numeric_limits<double>::quiet_NaN();
    double mtf50 = std::numeric_limits<double>::quiet_NaN();
};

/// One record slot.
struct SlotReport {
    static constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    SlotState state = SlotState::kNotLocated;
    /// TalonCalSFR's status for a refused region (-1 .. -4); 0 otherwise.
    int sfrStatus = 0;
    /// The located centre as the locator gives it (NaN when not located) and as the record
    /// holds it (truncated toward zero; 0, 0 when not located).
    EdgeCentre centre{std::numeric_limits<float>::quiet_NaN(),
                      std::numeric_limits<float>::quiet_NaN()};
    int x = 0;
    int y = 0;
    int side = 0;  ///< side of the square region cut round (x, y)
    /// The member's figures: on a frame the member measures, bit for bit its record entry's.
    /// NaN where the region was not measured.
    float sfrQuarterNyquist = std::numeric_limits<float>::quiet_NaN();
    float sfrHalfNyquist = std::numeric_limits<float>::quiet_NaN();
    float sfrCustom = std::numeric_limits<float>::quiet_NaN();
    /// The classic curve's MTF50 (cycles per pixel, the classic axis) and the edge angle
    /// (degrees from the region's columns or rows), from the pass that gave the figures.
    double mtf50 = kNaN;
    double edgeAngle = kNaN;
    /// Direction of the edge's normal in frame axes (degrees, -90 .. 90, x right, y down),
    /// from the fitted edge line.
    double normalDeg = kNaN;
    /// Mean grey level (0 .. 255) of the dark and the light side clear of the transition,
    /// and their light/dark ratio.
    double darkLevel = kNaN;
    double lightLevel = kNaN;
    double contrast = kNaN;
    /// (light - dark) / the plateaus' noise (grey levels, quantisation included).
    double snr = kNaN;
    /// Share (0 .. 1) of the raw samples in the edge's transition zone at or above the
    /// white level; the zone's sample count.
    double clippedShare = kNaN;
    long transitionSamples = 0;
    /// Distance (px) of the centre from the chart design fitted to the frame's centres.
    double designDistance = kNaN;
    /// The precise method on the grey region, and on each raw plane (R, Gr, Gb, B), when
    /// asked for (MemberFrameOptions).
    CurveFigures precise;
    std::vector<CurveFigures> planes;
};

/// What to add to a report beyond the member's pass.
struct MemberFrameOptions {
    bool precise = false;    ///< the precise method on every measured grey region
    bool rawPlanes = false;  ///< the precise method on each raw colour plane of every region
    /// Raw samples at or above this level count as clipped; 0: the member's full scale
    /// (2^bits - 1). A DNG's WhiteLevel belongs here.
    int whiteLevel = 0;
};

/// One frame through one member.
struct MemberFrameReport {
    /// What the member itself returns for this frame and parameters: 0 (its record would be
    /// written), -1, -2 or -3, as documented with the members.
    int memberStatus = -1;
    int width = 0;
    int height = 0;
    int roiSize = 0;     ///< the region size used (90 for the members that force it)
    int whiteLevel = 0;  ///< the level clipping was counted at
    /// Both layouts' locate statuses (0 located; the second is searched even when the first
    /// fails, unlike the member).
    int layoutStatus[2] = {-1, -1};
    /// The chart design fitted to the located centres (similarity; a centre far off the
    /// first fit is left out of the second): root-mean-square and largest residual, px,
    /// over every located centre; scale and rotation. NaN with fewer than two centres.
    double fitResidual = std::numeric_limits<double>::quiet_NaN();
    double fitMaxResidual = std::numeric_limits<double>::quiet_NaN();
    double fitScale = std::numeric_limits<double>::quiet_NaN();
    double fitRotationDeg = std::numeric_limits<double>::quiet_NaN();
    /// The most located centres that one shift of the chart design puts within 8 px of where
    /// they were found. A chart in view but off its place (its search misled into taking
    /// some edges from the wrong squares) still has a group of edges that agree on its true
    /// shift; another chart's edges agree only by chance.
    int designConsensus = 0;
    /// Clipped share over every measured slot's transition zone together.
    double clippedShare = std::numeric_limits<double>::quiet_NaN();
    std::vector<SlotReport> slots;
};

/// Runs `member`'s pipeline once on `raw` (width x height words): the grey reduction once,
/// both layouts' search once, every region cut and measured once, and fills `report`. The
/// member's own status and figures are reproduced exactly (memberStatus and the slots'
/// figures), but nothing stops at the first failure: every slot that can be measured is.
///
/// Returns 0 with `report` filled (also when the chart was not found: memberStatus tells),
/// or -1 leaving `report` untouched for a null frame, a size of 0 or less or over 2^31 - 1
/// pixels, parameters the member refuses (its markSearchSize and roiSize rules), an unknown
/// member row or an internal failure. Never throws; never writes `param`.
TALONVIREO_API int measureMemberFrame(const MemberInfo& member, const std::uint16_t* raw, int width,
                                      int height, const SFRParam& param,
                                      const MemberFrameOptions& options, MemberFrameReport& report);

}  // namespace talonvireo
