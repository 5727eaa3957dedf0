// A chart as data: its quadrilaterals and lone edges in chart units, the record slot of every
// measured edge and where on that edge its region sits, optional registration marks and field
// zones. Chart description files (TOML) read into this record; the built-in charts ship as
// such files.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "talonvireo/Export.h"

namespace talonvireo {

/// A point on the chart, in the description's units (x right, y down as the frame sees the
/// chart square-on).
struct ChartPoint {
    double x = 0.0;
    double y = 0.0;
};

/// One quadrilateral: dark on a light ground (polarity +1) or light on a dark ground (-1).
/// Corners run clockwise as the frame sees the chart (y down); side i runs from corners[i] to
/// corners[(i + 1) % 4], so the quadrilateral lies to the right of each side's direction.
struct ChartShape {
    std::array<ChartPoint, 4> corners{};
    int polarity = 1;
};

/// A lone straight edge, the border of an area larger than the frame shows whole: dark to the
/// right of from -> to (polarity +1) or light there (-1).
struct ChartEdge {
    ChartPoint from;
    ChartPoint to;
    int polarity = 1;
};

/// A round registration mark: a dark (polarity +1) or light (-1) disc.
struct ChartMark {
    ChartPoint centre;
    double diameter = 0.0;
    int polarity = 1;
};

/// One measured edge and the record slot it fills.
struct ChartSlot {
    std::string name;  ///< shown in tables and plots ("E07"); unique
    int slot = 0;      ///< record slot, 0-based; unique
    /// The edge: side `side` (0 .. 3) of shape `shape`, or lone edge `edge` (shape -1).
    int shape = -1;
    int side = 0;
    int edge = -1;
    /// Where the region's centre sits on the edge: 0 at its first corner (or `from`), 1 at
    /// its last, 0.5 its midpoint.
    double along = 0.5;
    /// Side of the square region cut round that point, frame pixels; 0 fits the region to the
    /// edge (along its straight-enough length, across as wide as its blur needs).
    int regionSize = 0;
    std::string zone;  ///< optional; else the zone whose field range holds the edge
};

/// A field zone: edges whose region centre lies between fromField and toField (0 at the frame
/// centre, 1 at its corners) belong to it unless their slot names a zone.
struct ChartZone {
    std::string name;
    double fromField = 0.0;
    double toField = 1.0;
};

struct ChartDescription {
    std::string name;
    std::string units = "px";  ///< informational: "px" (chart pixels), "mm", ...
    std::vector<ChartShape> shapes;
    std::vector<ChartEdge> edges;
    std::vector<ChartMark> marks;
    /// Empty: every side of every shape, then every lone edge, is measured, numbered in that
    /// order.
    std::vector<ChartSlot> slots;
    std::vector<ChartZone> zones;
};

/// Whether `chart` can be measured as it stands: at least one shape or lone edge; every shape
/// a convex quadrilateral of nonzero area with its corners clockwise (y down); lone edges of
/// nonzero length; polarities +1 or -1; marks of positive diameter; coordinates finite; every
/// slot naming an existing side (0 .. 3) of a shape or an existing lone edge, `along` 0 .. 1,
/// regionSize 0 or 16 .. 2000, a defined zone if any, its slot number (0 or more) and name
/// unique; zones named, unique, 0 <= fromField <= toField <= 1. False, with `problem` saying
/// which item is wrong and why ("slot 'E07' (slot 3): side 4 of shape 2 does not exist: sides
/// are 0 .. 3"), otherwise true with `problem` emptied. Description files are held to the same
/// rules as they are read; this is for descriptions a program builds itself.
TALONVIREO_API bool checkChartDescription(const ChartDescription& chart, std::string& problem);

}  // namespace talonvireo
