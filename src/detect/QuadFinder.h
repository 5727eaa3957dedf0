// Every dark-on-light and light-on-dark quadrilateral of a frame, each side located to a
// fraction of a pixel.
//
// The search runs on a reduced copy of the frame: a local mean splits it into a dark and a
// light mask, the outline of each region is fitted with a polygon, and four-sided outlines
// that pass the shape tests become candidates (round marks, strokes, bars and specks do
// not). Each candidate's sides are then refined on the full frame (SideRefinement.h) and its
// corners are the intersections of the refined lines.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "detect/Quad.h"

namespace talonvireo {
namespace detect {

// grey: one channel, CV_8U or CV_16U (throws std::invalid_argument otherwise). Quads whose
// sides are all kMinQuadSide (QuadShape.h) or longer; those the frame border cuts carry
// `cut`. Sorted by the y, then the x, of their centres. Re-entrant: no state outside the call.
std::vector<Quad> findQuads(const cv::Mat& grey);

}  // namespace detect
}  // namespace talonvireo
