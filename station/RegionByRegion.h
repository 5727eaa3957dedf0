// A frame its member failed on, measured region by region: the member's own locate stage
// (locateMemberEdges) finds the edges, and each region the member would cut is measured on its
// own through the region API, so one edge off the frame or one refused region no longer hides
// the other edges' figures. The result is a diagnosis, never the member's verdict.
#pragma once

#include <opencv2/core.hpp>

#include "station/EdgeReport.h"
#include "station/Failure.h"
#include "station/Members.h"

namespace talonvireo {
namespace station {

// Causes of a member failure that a region-by-region measurement can explain: chart not
// located, region out of bounds, SFR calculation failed, and a member's status -1.
bool explainsMemberFailure(Cause cause);

// Every record slot of `member` in `grey` (memberGrey of the frame) with `param`: its centre,
// the side of the member's region, and either that region's figures (exactly those the member
// would report for it) or what stopped it (EdgeRow::state). Rows are in slot order; figures of
// unmeasured rows are NaN. Throws Failure when the locate stage itself fails.
FrameReport measureRegionByRegion(const Member& member, const cv::Mat& grey, const SFRParam& param);

}  // namespace station
}  // namespace talonvireo
