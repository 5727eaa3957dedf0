// SFR against image height, tangential and sagittal edges apart: how the lens falls off
// towards the corners, whether it is astigmatic, and where it meets its limits.
#pragma once

#include <opencv2/core.hpp>

#include "station/EdgeReport.h"
#include "station/Limits.h"

namespace talonvireo {
namespace station {

// An 8-bit BGR plot 1000 x 560 per figure: every edge's SFR at Nyquist/4 (MTF50 when the
// report has it and `mtf50`; in lp/mm with a pixel pitch) against its image height,
// tangential and sagittal in two colour-blind-safe colours and marker shapes, each with its
// mean per 10 % of height joined by a line. With `limits`, every other figure they set gets
// a panel of its own below, and each panel shows each zone's max_height as a vertical
// boundary (beyond the last zone shaded: unzoned), each zone's minimum as a step line (solid
// where both orientations share it, dashed in their colours where they differ), each slot's
// own minimum as a bar at its edge, and rings the edges that fail on the panel's figure.
cv::Mat plotFieldCurve(const FrameReport& report, bool mtf50, const Limits* limits = nullptr);

}  // namespace station
}  // namespace talonvireo
