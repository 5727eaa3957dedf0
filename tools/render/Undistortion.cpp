#include "render/Undistortion.h"

#include <algorithm>
#include <cmath>

namespace talonvireo {
namespace render {

namespace {

// s (1 + k1 s^2 + k2 s^4) and its derivative 1 + 3 k1 s^2 + 5 k2 s^4.
double distortedRadius(const ChartRegistration& r, double s) {
    const double q = s * s;
    return s * (1.0 + q * (r.k1 + r.k2 * q));
}
double radialSlope(const ChartRegistration& r, double s) {
    const double q = s * s;
    return 1.0 + q * (3.0 * r.k1 + 5.0 * r.k2 * q);
}

}  // namespace

bool undistort(const ChartRegistration& r, double px, double py, UndistortedPoint& out) {
    if (r.k1 == 0.0 && r.k2 == 0.0) {
        out = {px, py, 1.0, 0.0, 1.0};
        return true;
    }
    const double dx = px - r.centreX, dy = py - r.centreY;
    const double r0 = r.normRadius;
    const double t = std::sqrt(dx * dx + dy * dy) / r0;
    // Newton on the radius from the first-order guess; a few steps reach rounding.
    const double t2 = t * t;
    const double firstGain = 1.0 + t2 * (r.k1 + r.k2 * t2);
    double s = firstGain > 0.5 ? t / firstGain : t;
    for (int i = 0; i < 60; ++i) {
        const double slope = radialSlope(r, s);
        if (!(slope > 1e-9)) {
            return false;
        }
        const double step = (distortedRadius(r, s) - t) / slope;
        s -= step;
        if (std::abs(step) <= 1e-15 * (1.0 + s)) {
            break;
        }
    }
    const double q = s * s;
    const double g = 1.0 + q * (r.k1 + r.k2 * q);
    const double slope = radialSlope(r, s);
    if (!(g > 0.0) || !(slope > 0.0)) {
        return false;
    }
    const double scale = t > 0.0 ? s / t : 1.0 / g;
    const double vx = dx * scale, vy = dy * scale;
    // dp/du = g I + beta v v^T with beta = 2 g'(q) / r0^2, and g + beta |v|^2 = slope, so
    // du/dp = (I - beta v v^T / slope) / g.
    const double beta = 2.0 * (r.k1 + 2.0 * r.k2 * q) / (r0 * r0);
    const double k = beta / slope;
    out.x = r.centreX + vx;
    out.y = r.centreY + vy;
    out.dxx = (1.0 - k * vx * vx) / g;
    out.dxy = -k * vx * vy / g;
    out.dyy = (1.0 - k * vy * vy) / g;
    return true;
}

ChartPoint chartToUndistorted(const ChartRegistration& r, ChartPoint p, double& w) {
    const double* h = r.homography;
    w = h[6] * p.x + h[7] * p.y + h[8];
    return {(h[0] * p.x + h[1] * p.y + h[2]) / w, (h[3] * p.x + h[4] * p.y + h[5]) / w};
}

DistortionBounds distortionBounds(const ChartRegistration& r, int width, int height) {
    DistortionBounds bounds;
    if (r.k1 == 0.0 && r.k2 == 0.0) {
        return bounds;
    }
    // The farthest frame point from the distortion's centre, with a little room for the
    // reach of a blur past the border.
    double tMax = 0.0;
    for (const double x : {-0.5, width - 0.5}) {
        for (const double y : {-0.5, height - 0.5}) {
            tMax = std::max(tMax, std::hypot(x - r.centreX, y - r.centreY));
        }
    }
    tMax = 1.02 * tMax / r.normRadius;
    // Walk the undistorted radius out until its image passes tMax; the slope must stay
    // positive on the way.
    constexpr double kStep = 1e-3;
    constexpr double kFarthest = 20.0;
    for (double s = 0.0;; s += kStep) {
        const double slope = radialSlope(r, s);
        const double q = s * s;
        const double g = 1.0 + q * (r.k1 + r.k2 * q);
        if (!(slope > 0.0) || !(g > 0.0) || s > kFarthest) {
            bounds.oneToOne = false;
            return bounds;
        }
        // Derivatives of the two scales of the map over u, over the smaller scale squared.
        const double change = std::abs(s * (6.0 * r.k1 + 20.0 * r.k2 * q)) +
                              std::abs(s * (2.0 * r.k1 + 4.0 * r.k2 * q));
        const double least = std::min(slope, g);
        bounds.bend = std::max(bounds.bend, change / (r.normRadius * least * least));
        if (distortedRadius(r, s) >= tMax) {
            return bounds;
        }
    }
}

}  // namespace render
}  // namespace talonvireo
