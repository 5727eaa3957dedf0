// Figures beyond a member's own, read off the very regions the member measured.
#pragma once

#include <opencv2/core.hpp>

#include "station/EdgeReport.h"
#include "station/Members.h"

namespace talonvireo {
namespace station {

// The grey frame `member` measures `raw` (CV_16UC1 words) on: its own road.
cv::Mat memberGrey(const Member& member, const cv::Mat& raw);

// Which figures to add.
struct RegionFigureSet {
    bool mtf50 = false;    // MTF50 by the member's (classic) method
    bool precise = false;  // the precise method's SFR at Nyquist/4, /2, custom, and MTF50
    bool planes = false;   // each raw colour plane under the region (precise)
};

// For every row of `report` (measured by `member` on `raw`): cuts the region the member cut
// from `grey` (memberGrey) and adds the figures asked for; the raw planes are cut from `raw`
// itself. The member's own figures are left as they are.
void addRegionFigures(FrameReport& report, const Member& member, const cv::Mat& raw,
                      const cv::Mat& grey, RegionFigureSet what);

}  // namespace station
}  // namespace talonvireo
