// Every slanted edge of any chart: the dark-on-light and light-on-dark quadrilaterals of a
// frame found by themselves, each side measured on a region fitted to it; or the edges a chart
// description names, found through the description's registration to the frame.
#pragma once

#include <array>
#include <limits>
#include <string>
#include <vector>

#include "talonvireo/ChartDescription.h"
#include "talonvireo/ChartRegistration.h"
#include "talonvireo/Export.h"
#include "talonvireo/MemberFrameReport.h"
#include "talonvireo/RawFrameToGrey.h"
#include "talonvireo/RegionSfr.h"
#include "talonvireo/SfrCurve.h"

namespace talonvireo {

/// One side of a found quadrilateral, in frame pixels (integer coordinates are pixel centres).
struct FoundEdge {
    static constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    int quad = -1;  ///< index into ChartReport::quads
    int side = 0;   ///< 0 .. 3: from corners[side] to corners[(side + 1) % 4]
    /// Ends of the side (of its part inside the frame for a cut side), on the fitted curve.
    ChartPoint from;
    ChartPoint to;
    /// The point of the fitted curve halfway along the side.
    ChartPoint midpoint;
    double angleDeg = kNaN;  ///< of the chord from -> to, 0 <= angle < 180, from the x axis
    double length = kNaN;    ///< of the chord, px
    /// +1 dark to light crossing the side outward (a dark quadrilateral), -1 the other way.
    int polarity = 0;
    /// Signed largest distance of the fitted curve from the chord, px (positive bowed out of
    /// the quadrilateral, as barrel distortion bows a side away from the frame centre... or in;
    /// 0 for a side found straight).
    double bow = 0.0;
    /// Length of the centred part of the side that is straight within 0.1 px, px.
    double straightLength = kNaN;
    /// Median 10-90 % rise across the side, px.
    double rise = kNaN;
    bool cut = false;  ///< the frame border cuts the side
    /// The side is the frame border itself, where the quadrilateral runs out of the frame:
    /// no edge of the chart, never reported as one.
    bool frameBorder = false;
    bool tooShort = false;  ///< shorter than the shortest edge measured (40 px)
    bool nearAxis = false;  ///< within 1 degree of 0, 45 or 90 degrees
};

struct FoundQuad {
    std::array<ChartPoint, 4> corners{};  ///< clockwise on screen, first nearest the top left
    int polarity = 0;
    bool cut = false;
};

/// What became of an edge.
enum class ChartEdgeState {
    kMeasured = 0,
    kNotFound = 1,  ///< a described edge with no found side where the registration puts it
    kCut = 2,       ///< the frame border cuts it: not measured
    kTooShort = 3,  ///< too short for a region: not measured
    kNearAxis = 4,  ///< within 1 degree of 0, 45 or 90 degrees: not measured
    kOffFrame = 5,  ///< its region leaves the frame
    kRefused = 6,   ///< the SFR refused its region (sfrStatus says why)
};

/// "measured", "not found", "cut by the frame", "too short", "near an axis", "off the frame",
/// "refused by the SFR".
TALONVIREO_API const char* chartEdgeStateName(ChartEdgeState state);

/// One measured (or flagged) edge.
struct ChartEdgeReport {
    static constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    /// The description's record slot, else a running index over every found side.
    int edge = 0;
    std::string name;  ///< the slot's name; "Q12.3" (quad 12, side 3) without a description
    std::string zone;  ///< the slot's zone or the description zone holding it; may be empty
    ChartEdgeState state = ChartEdgeState::kNotFound;
    int sfrStatus = 0;  ///< measureSfrCurve's status of a refused region
    bool found = false;
    FoundEdge geometry;  ///< the found side (when found)
    /// The region's centre: the side's midpoint, or with a description the slot's point on the
    /// found side. Frame pixels.
    double x = kNaN;
    double y = kNaN;
    tagEdgeRoi region{0, 0, 0, 0};  ///< the region measured (empty when none was cut)
    /// The method's figures of the grey region (frequencies across the edge).
    CurveFigures figures;
    double edgeAngle = kNaN;           ///< the SFR's fitted angle, degrees from the region's axis
    std::vector<CurveFigures> planes;  ///< R, Gr, Gb, B of a mosaic, when asked for
    /// Mean levels of the sides clear of the edge, in the measured image's units; light over
    /// dark; (light - dark) over the sides' noise.
    double darkLevel = kNaN;
    double lightLevel = kNaN;
    double contrast = kNaN;
    double snr = kNaN;
    /// Share of the transition zone's samples at or above the white level, and their count.
    double clippedShare = kNaN;
    long transitionSamples = 0;
    /// With a description: distance from where the registration puts the slot to the found
    /// side, px.
    double registrationDistance = kNaN;
};

struct ChartMeasureOptions {
    SfrMethod method = SfrMethod::kPrecise;
    /// Mosaics: also the precise method on each raw colour plane of every region.
    bool rawPlanes = false;
    /// Significant bits of 16-bit samples (10 .. 16); 0 reads all 16.
    int bits = 0;
    /// How a Bayer mosaic of phase R G in 16-bit words becomes grey; other mosaics go through
    /// OpenCV's Bayer-to-grey at their own depth.
    GreyRoad road = GreyRoad::kMalvar;
    /// > 0: also the SFR at 0.5 / nyquistDivisor cycles per pixel (CurveFigures::sfrCustom).
    double nyquistDivisor = 0.0;
    /// Samples at or above this level count as clipped; 0: full scale of the bits.
    int whiteLevel = 0;
};

struct ChartReport {
    int width = 0;
    int height = 0;
    std::string chart;  ///< the description's name, or "auto"
    std::vector<FoundQuad> quads;
    /// Every side of every found quad, four per quad in its order (frame-border sides
    /// included, flagged).
    std::vector<FoundEdge> found;
    /// One per description slot in slot order; without a description one per found side
    /// that is an edge of the chart (not the frame border).
    std::vector<ChartEdgeReport> edges;
    ChartRegistration registration;  ///< with a description
    double clippedShare = std::numeric_limits<double>::quiet_NaN();
    int whiteLevel = 0;
};

/// Finds the quadrilaterals of an image and every side's geometry. `image` is `height` rows
/// of `width` pixels in the layout `format` names (PixelFormat: grey, BGR or Bayer, 8 or 16
/// bits); `bits` as ChartMeasureOptions::bits. Returns 0 (also when none is found), -1 for bad
/// input, leaving the outputs untouched. Never throws.
TALONVIREO_API int findChartQuads(const unsigned char* image, int width, int height, int format,
                                  int bits, std::vector<FoundQuad>& quads,
                                  std::vector<FoundEdge>& edges);

/// Finds and measures every edge: with `description` null, every side of every found
/// quadrilateral (flagged sides are reported, not measured); with one, every slot of it.
/// Returns 0 with `report` filled; -1 for bad input or an invalid description (report
/// untouched); -2 when a description could not be registered to the frame (report filled,
/// every slot not found). Never throws.
TALONVIREO_API int measureChart(const unsigned char* image, int width, int height, int format,
                                const ChartDescription* description,
                                const ChartMeasureOptions& options, ChartReport& report);

}  // namespace talonvireo
