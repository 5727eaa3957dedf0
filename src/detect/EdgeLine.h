// An infinite straight line through a point along a unit direction.
#pragma once

#include <cmath>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace detect {

struct EdgeLine {
    cv::Point2d point;
    cv::Point2d direction;  // unit

    // Signed distance of p from the line, positive to the left of the direction on screen
    // (toward (dir.y, -dir.x)).
    double offset(cv::Point2d p) const {
        const cv::Point2d d = p - point;
        return d.x * direction.y - d.y * direction.x;
    }
};

inline EdgeLine lineThrough(cv::Point2d a, cv::Point2d b) {
    const cv::Point2d d = b - a;
    const double n = std::hypot(d.x, d.y);
    return {a, n > 0.0 ? d / n : cv::Point2d(1.0, 0.0)};
}

// Intersection of two lines; false when they are parallel within a sine of 1e-6.
inline bool intersect(const EdgeLine& a, const EdgeLine& b, cv::Point2d& at) {
    const double cross = a.direction.x * b.direction.y - a.direction.y * b.direction.x;
    if (std::abs(cross) < 1e-6) {
        return false;
    }
    const cv::Point2d d = b.point - a.point;
    const double t = (d.x * b.direction.y - d.y * b.direction.x) / cross;
    at = a.point + t * a.direction;
    return true;
}

}  // namespace detect
}  // namespace talonvireo
