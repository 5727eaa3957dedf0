#include "api/EdgeRegionFit.h"

#include <algorithm>
#include <cmath>

namespace talonvireo {
namespace api {

namespace {

constexpr int kMinAcrossHalfWidth = 10;
constexpr int kMaxAcrossHalfWidth = 40;
constexpr int kShrinkStep = 2;

// Whether segment a .. b passes through the box [x0, x1] x [y0, y1] (Liang-Barsky).
bool crossesBox(cv::Point2d a, cv::Point2d b, double x0, double y0, double x1, double y1) {
    double t0 = 0.0, t1 = 1.0;
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double p[4] = {-dx, dx, -dy, dy};
    const double q[4] = {a.x - x0, x1 - a.x, a.y - y0, y1 - a.y};
    for (int i = 0; i < 4; ++i) {
        if (p[i] == 0.0) {
            if (q[i] < 0.0) {
                return false;
            }
            continue;
        }
        const double t = q[i] / p[i];
        if (p[i] < 0.0) {
            t0 = std::max(t0, t);
        } else {
            t1 = std::min(t1, t);
        }
        if (t0 > t1) {
            return false;
        }
    }
    return true;
}

}  // namespace

int acrossHalfWidth(double rise) {
    const double r = std::isfinite(rise) && rise > 0.0 ? rise : 2.0;
    return std::clamp(static_cast<int>(std::ceil(3.0 * r)) + 6, kMinAcrossHalfWidth,
                      kMaxAcrossHalfWidth);
}

RegionFit fitEdgeRegion(const EdgeRegionRequest& request, const std::vector<EdgeSegment>& others,
                        cv::Size frame, cv::Rect& region) {
    const cv::Point2d chord = request.edge.to - request.edge.from;
    const double length = cv::norm(chord);
    if (!(length > 0.0)) {
        return RegionFit::kTooShort;
    }
    const cv::Point2d d = chord / length;
    const bool horizontal = std::abs(d.x) >= std::abs(d.y);
    // Along and across in the axes the edge runs nearer to.
    const double alongUnit = horizontal ? std::abs(d.x) : std::abs(d.y);
    const double slope = horizontal ? d.y / d.x : d.x / d.y;
    const cv::Point2d p = request.centre;
    const double toFrom = (p - request.edge.from).dot(d);
    const double toTo = (request.edge.to - p).dot(d);
    const double halfAcross = acrossHalfWidth(request.rise);
    const double clearance = std::max(1.0, request.rise) + 1.0;
    double halfAlong =
        std::min({static_cast<double>(kMaxRegionHalfLength), std::min(toFrom, toTo) * alongUnit,
                  0.5 * request.straightLength * alongUnit});
    for (; halfAlong >= kMinRegionHalfLength; halfAlong -= kShrinkStep) {
        const double spread = std::abs(slope) * halfAlong + halfAcross;
        const double pa = horizontal ? p.x : p.y, pc = horizontal ? p.y : p.x;
        const double a0 = std::floor(pa - halfAlong), a1 = std::ceil(pa + halfAlong);
        const double c0 = std::floor(pc - spread), c1 = std::ceil(pc + spread);
        const double x0 = horizontal ? a0 : c0, x1 = horizontal ? a1 : c1;
        const double y0 = horizontal ? c0 : a0, y1 = horizontal ? c1 : a1;
        bool clear = true;
        for (const EdgeSegment& s : others) {
            if (crossesBox(s.from, s.to, x0 - clearance, y0 - clearance, x1 + clearance,
                           y1 + clearance)) {
                clear = false;
                break;
            }
        }
        if (!clear) {
            continue;
        }
        const cv::Rect r(static_cast<int>(x0), static_cast<int>(y0), static_cast<int>(x1 - x0) + 1,
                         static_cast<int>(y1 - y0) + 1);
        if (r.x < 0 || r.y < 0 || r.x + r.width > frame.width || r.y + r.height > frame.height) {
            return RegionFit::kOffFrame;
        }
        region = r;
        return RegionFit::kFitted;
    }
    return RegionFit::kTooShort;
}

}  // namespace api
}  // namespace talonvireo
