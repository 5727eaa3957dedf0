#include "detect/FrameClip.h"

#include <algorithm>

namespace talonvireo {
namespace detect {

bool clipToFrame(cv::Point2d& a, cv::Point2d& b, cv::Size frame) {
    // Parametric clipping against the four half-planes of the frame rectangle.
    const cv::Point2d d = b - a;
    const double lo[2] = {-0.5, -0.5};
    const double hi[2] = {frame.width - 0.5, frame.height - 0.5};
    const double start[2] = {a.x, a.y};
    const double delta[2] = {d.x, d.y};
    double t0 = 0.0, t1 = 1.0;
    for (int axis = 0; axis < 2; ++axis) {
        if (delta[axis] == 0.0) {
            if (start[axis] < lo[axis] || start[axis] > hi[axis]) {
                return false;
            }
            continue;
        }
        double ta = (lo[axis] - start[axis]) / delta[axis];
        double tb = (hi[axis] - start[axis]) / delta[axis];
        if (ta > tb) {
            std::swap(ta, tb);
        }
        t0 = std::max(t0, ta);
        t1 = std::min(t1, tb);
    }
    if (t0 >= t1) {
        return false;
    }
    const cv::Point2d from = a + t0 * d, to = a + t1 * d;
    a = from;
    b = to;
    return true;
}

}  // namespace detect
}  // namespace talonvireo
