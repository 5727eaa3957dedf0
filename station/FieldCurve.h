// SFR against image height, tangential and sagittal edges apart: how the lens falls off
// towards the corners, and whether it is astigmatic.
#pragma once

#include <opencv2/core.hpp>

#include "station/EdgeReport.h"

namespace talonvireo {
namespace station {

// An 8-bit BGR plot 1000 x 560: every edge's SFR at Nyquist/4 (MTF50 when the report has it
// and `mtf50`) against its image height, tangential and sagittal in two colour-blind-safe
// colours and marker shapes, each with its mean per 10 % of height joined by a line.
cv::Mat plotFieldCurve(const FrameReport& report, bool mtf50);

}  // namespace station
}  // namespace talonvireo
