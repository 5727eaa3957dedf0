// Each edge's place in the field of view (image height, azimuth) and its orientation.
#pragma once

#include "station/EdgeReport.h"

namespace talonvireo {
namespace station {

// Fills every row's field position from its centre on the report's frame, and its
// orientation from the edge's normal (as the member's pass fitted it) against the direction
// to the frame's centre; an edge not located gets no place, one not measured no orientation.
void describeField(FrameReport& report);

// The field position of (x, y) on a width x height frame, with the edge normal at
// `normalDeg` (image axes, degrees); orientation "none" within 1 % of the centre.
FieldPosition fieldPosition(double x, double y, int width, int height, double normalDeg);

}  // namespace station
}  // namespace talonvireo
