// A dark-on-light or light-on-dark quadrilateral found in a frame.
#pragma once

#include <array>

#include <opencv2/core.hpp>

#include "detect/EdgeGeometry.h"

namespace talonvireo {
namespace detect {

struct Quad {
    // Corners clockwise on screen (y down), the first the one nearest the frame's top-left
    // direction (smallest x + y). Each is the intersection of its two refined sides, so a
    // corner of a quad cut by the frame border may lie outside the frame.
    std::array<cv::Point2d, 4> corners;
    // edges[i] runs from corners[i] to corners[(i + 1) % 4].
    std::array<EdgeGeometry, 4> edges;
    int polarity = 0;  // +1 dark quad on a light ground, -1 light quad on a dark ground
    bool cut = false;  // the quad touches the frame border: some side is not wholly inside
};

}  // namespace detect
}  // namespace talonvireo
