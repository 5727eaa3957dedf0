// Whether four corners make a quad worth measuring: the geometric tests that turn away
// clutter which a polygon fit still squeezes into four corners.
#pragma once

#include <array>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace detect {

// Sides shorter than this are text strokes, thin bars or specks, not chart quads.
constexpr double kMinQuadSide = 16.0;
// Longest side over shortest: a bar ten times longer than wide is a line, not a target.
constexpr double kMaxQuadAspect = 10.0;
// Every interior angle within this of 90 degrees: squares, rectangles and the trapezoids
// perspective makes of them, never a sliver or a fold.
constexpr double kMaxCornerSkewDeg = 60.0;

// Corners in order around the quad (either sense), in frame pixels.
bool isPlausibleQuad(const std::array<cv::Point2d, 4>& corners);

// Twice the signed area: positive for corners clockwise on screen (y down).
double signedArea2(const std::array<cv::Point2d, 4>& corners);

}  // namespace detect
}  // namespace talonvireo
