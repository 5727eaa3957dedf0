// Figures beyond a member's own, read off the very regions the member measured.
#pragma once

#include <opencv2/core.hpp>

#include "EdgeReport.h"
#include "Members.h"

namespace talonvireo {
namespace cli {

// For every row of `report` (measured by `member` on `raw`, CV_16UC1 words): cuts the region
// the member cut from the grey frame of the member's own road and adds MTF50 by the classic
// method and the precise method's SFR at Nyquist/4, Nyquist/2 (and the custom frequency) and
// MTF50; with `planes`, also measures the raw mosaic under the same region per colour plane.
// The member's own figures are left as they are.
void addRegionFigures(FrameReport& report, const Member& member, const cv::Mat& raw, bool planes);

}  // namespace cli
}  // namespace talonvireo
