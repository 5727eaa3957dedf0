// A batch at a glance: the spread of SFR at Nyquist/4 in each field zone across every frame,
// tangential and sagittal apart, against the zone's limit.
#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "station/BatchTally.h"
#include "station/EdgeReport.h"
#include "station/Limits.h"

namespace talonvireo {
namespace station {

// Zones come from the limits (their names and heights) or, without limits, bands of 20 %
// image height. Each zone shows a box per orientation (quartiles, median, 5th to 95th
// percentile whiskers, the count below) and the zone's minimum on the figure as a dashed
// line. The header names the member, the frames and the yield. 1000 x 600 pixels.
cv::Mat plotBatchSummary(const std::vector<FrameReport>& reports, const Limits* limits,
                         const std::string& member, const BatchTally& tally);

}  // namespace station
}  // namespace talonvireo
