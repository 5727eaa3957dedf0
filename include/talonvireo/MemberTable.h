// The whole-frame members as data: one row per member naming its sample depth, road to grey,
// chart (locate pair and working scale), record and region rule, and each chart's design
// (where every record slot's edge sits on the chart). The members, the command line and the
// Python module all read these rows.
#pragma once

#include "talonvireo/Export.h"
#include "talonvireo/MemberEdgeLocate.h"
#include "talonvireo/RawFrameToGrey.h"

namespace talonvireo {

/// The record a member fills.
enum class MemberRecord {
    kSFRResult = 0,       ///< 68 entries: two layouts of 34
    kSFRResult_HLX5 = 1,  ///< 52 entries: two layouts of 26
};

/// The side of the square region a member cuts round each edge centre.
enum class RegionRule {
    kRoiSize = 0,            ///< every region param.roiSize
    kFixedSecondLayout = 1,  ///< the second layout's regions 90, whatever roiSize says
    kForced90 = 2,           ///< every region 90; the member writes 90 into param.roiSize
};

/// One whole-frame member.
struct MemberInfo {
    /// The name the tools use: the function's name, with "/CHART" where it is overloaded
    /// ("talonvireoSFR/K74T16BX").
    const char* name;
    const char* function;   ///< the exported function ("talonvireoSFR")
    const char* chartName;  ///< the chart it expects ("K74T16BX")
    MemberChart chart;      ///< the chart and the working scale it is searched at
    int bits;               ///< significant bits of the words it unpacks: 10, 14 or 16
    GreyRoad road;          ///< how the mosaic becomes grey
    MemberRecord record;
    RegionRule regionRule;
    int slots;    ///< record entries: 68 or 52
    bool eightK;  ///< made for 7680 x 4320 frames
    /// Side of the region cut round record slot `slot` for a caller's roiSize.
    int regionSide(int slot, int roiSize) const {
        if (regionRule == RegionRule::kForced90 ||
            (regionRule == RegionRule::kFixedSecondLayout && slot >= slots / 2)) {
            return 90;
        }
        return roiSize;
    }
};

/// The thirteen members, in the order the public header declares them.
struct MemberTable {
    const MemberInfo* rows;
    int count;
};
TALONVIREO_API MemberTable memberTable();

/// The row of the member called `name` (MemberInfo::name); nullptr for an unknown or null name.
TALONVIREO_API const MemberInfo* findMember(const char* name);

/// Writes the design place of every record slot's edge centre of `chart` (chart pixels: the
/// chart as a 4000 x 3000 frame sees it square-on, unscaled) for a search of radius
/// `markSearchSize`: an edge found where the search ring crosses it moves along the edge with
/// the radius; one found between two corners does not. Returns the slot count (68 or 52), or
/// -1 writing nothing for a null buffer, a capacity below the count or an unknown chart.
/// Never throws.
TALONVIREO_API int chartDesign(MemberChart chart, double markSearchSize, EdgeCentre* nominal,
                               int capacity);

}  // namespace talonvireo
