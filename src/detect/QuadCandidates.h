// Coarse quads: the outlines of one polarity mask's regions that a polygon fit and the shape
// tests accept, with each side's line fitted to the middle of its stretch of outline.
#pragma once

#include <array>
#include <vector>

#include <opencv2/core.hpp>

#include "detect/CoarseImage.h"

namespace talonvireo {
namespace detect {

struct QuadCandidate {
    std::array<cv::Point2d, 4> corners;  // frame pixels, clockwise on screen
    // Side i runs from corners[i] to corners[(i + 1) % 4]; a border side is the frame's
    // own edge, where a quad cut by the border ends.
    std::array<bool, 4> borderSide{};
    int polarity = 0;  // +1 from the dark mask, -1 from the light mask
};

// Outer outlines of the mask's regions (holes are another region's outline). A region cut
// by the frame border is kept when its visible sides are the four sides of a quad, or three
// of them closed by the border (whose line the caller takes from the frame itself: the
// coarse image may leave off the last few columns and rows).
std::vector<QuadCandidate> findQuadCandidates(const cv::Mat& mask, int polarity,
                                              const CoarseImage& coarse);

}  // namespace detect
}  // namespace talonvireo
