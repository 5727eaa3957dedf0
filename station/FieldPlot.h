// The field at a glance: every edge of a frame as a marker over a faint copy of the frame,
// coloured by its SFR at Nyquist/4 on a perceptual, colour-blind-safe scale (viridis) with
// a legend; failing edges crossed out; a header with the file, member, limits and yield, under
// a "PARTIAL: <member failure>" banner when the member failed and the edges were measured
// region by region.
#pragma once

#include <opencv2/core.hpp>

#include "station/EdgeReport.h"

namespace talonvireo {
namespace station {

// An 8-bit BGR picture 1000 pixels wide of `report` over `grey` (the frame, 8-bit grey).
cv::Mat plotField(const cv::Mat& grey, const FrameReport& report);

}  // namespace station
}  // namespace talonvireo
