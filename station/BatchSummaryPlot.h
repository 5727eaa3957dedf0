// A batch at a glance: the spread of each figure in each field zone across every frame,
// tangential and sagittal apart, against the zone's limits.
#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "station/BatchTally.h"
#include "station/EdgeReport.h"
#include "station/Limits.h"

namespace talonvireo {
namespace station {

// Zones come from the limits (their names and heights, and "unzoned" for edges beyond the
// last) or, without limits, bands of 20 % image height. Each zone shows a box per
// orientation (quartiles, median, 5th to 95th percentile whiskers, the count below); each
// zone's max_height is a vertical boundary and its minimums (per orientation) a dashed step
// line. A panel of 1000 x 600 pixels for SFR at Nyquist/4, and one more below it for each
// other figure the limits set (MTF50 in lp/mm when the reports have a pixel pitch). The
// header names the member, the frames and the yield.
cv::Mat plotBatchSummary(const std::vector<FrameReport>& reports, const Limits* limits,
                         const std::string& member, const BatchTally& tally);

}  // namespace station
}  // namespace talonvireo
