// One straight side of a found quadrilateral, at sub-pixel precision, in frame pixels
// (integer coordinates are pixel centres).
#pragma once

#include <opencv2/core.hpp>

namespace talonvireo {
namespace detect {

struct EdgeGeometry {
    // Ends of the side, in the quad's clockwise order (on screen, y down). For a side that
    // leaves the frame these are the ends of the part inside it.
    cv::Point2d from;
    cv::Point2d to;
    cv::Point2d midpoint;  // the fitted curve's point halfway along the side
    // Distance of the midpoint from the chord from .. to, px, positive out of the quad; and
    // the curve's bend: a stretch of half-length u strays curvature u^2 px from its chord
    // (1/px). 0 for a straight side.
    double bow = 0.0;
    double curvature = 0.0;
    double rise = 0.0;      // median 10-90 % rise across the side, px
    double angleDeg = 0.0;  // orientation of the line from the x axis, 0 <= angle < 180
    double length = 0.0;    // |to - from|
    // +1: dark to light when crossing the side along its outward normal (a dark quad on a
    // light ground); -1 the other way.
    int polarity = 0;
    bool cut = false;  // the side is not wholly inside the frame
    // The side is the frame border itself: the quad runs out of the frame there.
    bool frameBorder = false;
    bool tooShort = false;  // shorter than kMinEdgeLength (EdgeFlags.h)
    bool nearAxis = false;  // within kAxisToleranceDeg of 0, 45 or 90 degrees
};

}  // namespace detect
}  // namespace talonvireo
