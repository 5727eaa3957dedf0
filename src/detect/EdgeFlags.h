// Angle, length and the flags of one refined side.
#pragma once

#include <opencv2/core.hpp>

#include "detect/EdgeGeometry.h"

namespace talonvireo {
namespace detect {

// The library measures regions of at least 40 px a side; a shorter edge cannot hold one.
constexpr double kMinEdgeLength = 40.0;
// Near 0 or 90 degrees the phases of the edge across the pixel rows repeat too slowly to
// supersample it; near 45 degrees they fall on few distinct values.
constexpr double kAxisToleranceDeg = 1.0;

// Orientation of the line through a and b, in [0, 180) degrees from the x axis.
double lineAngleDeg(cv::Point2d a, cv::Point2d b);

// Within kAxisToleranceDeg of a multiple of 45 degrees.
bool isNearAxis(double angleDeg);

// The side from a to b: its midpoint, angle, length and flags; polarity and cut as given.
EdgeGeometry describeEdge(cv::Point2d from, cv::Point2d to, int polarity, bool cut);

}  // namespace detect
}  // namespace talonvireo
