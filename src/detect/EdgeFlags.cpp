#include "detect/EdgeFlags.h"

#include <cmath>

namespace talonvireo {
namespace detect {

double lineAngleDeg(cv::Point2d a, cv::Point2d b) {
    double deg = std::atan2(b.y - a.y, b.x - a.x) * 180.0 / CV_PI;
    deg = std::fmod(deg, 180.0);
    if (deg < 0.0) {
        deg += 180.0;
    }
    return deg >= 180.0 ? 0.0 : deg;
}

bool isNearAxis(double angleDeg) {
    const double r = std::fmod(std::abs(angleDeg), 45.0);
    return r < kAxisToleranceDeg || 45.0 - r < kAxisToleranceDeg;
}

EdgeGeometry describeEdge(cv::Point2d from, cv::Point2d to, int polarity, bool cut) {
    EdgeGeometry e;
    e.from = from;
    e.to = to;
    e.midpoint = 0.5 * (from + to);
    e.angleDeg = lineAngleDeg(from, to);
    e.length = cv::norm(to - from);
    e.polarity = polarity;
    e.cut = cut;
    e.tooShort = e.length < kMinEdgeLength;
    e.nearAxis = isNearAxis(e.angleDeg);
    return e;
}

}  // namespace detect
}  // namespace talonvireo
