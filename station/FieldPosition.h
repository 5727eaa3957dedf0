// Each edge's place in the field of view (image height, azimuth) and its orientation.
#pragma once

#include <opencv2/core.hpp>

#include "station/EdgeReport.h"

namespace talonvireo {
namespace station {

// Fills every row's field position from its centre on a `width` x `height` frame, and its
// orientation from the gradients of its region in `grey` (the member's grey frame): the
// region's dominant gradient direction against the direction to the frame's centre.
void describeField(FrameReport& report, const cv::Mat& grey);

// The field position of (x, y) on a width x height frame, with the edge normal at
// `normalDeg` (image axes, degrees); orientation "none" within 1 % of the centre.
FieldPosition fieldPosition(double x, double y, int width, int height, double normalDeg);

}  // namespace station
}  // namespace talonvireo
