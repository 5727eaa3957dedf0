// The chart-to-frame model: a homography, then radial distortion about the frame centre.
#include "talonvireo/ChartRegistration.h"

#include <algorithm>
#include <cmath>

namespace talonvireo {

ChartRegistration undistortedRegistration(int width, int height) {
    ChartRegistration r;
    r.centreX = 0.5 * (width - 1);
    r.centreY = 0.5 * (height - 1);
    r.normRadius =
        std::max(0.5 * std::hypot(static_cast<double>(width), static_cast<double>(height)), 1.0);
    return r;
}

namespace {

// 1 + k1 rho^2 + k2 rho^4 for rho^2 = q.
double radialGain(const ChartRegistration& r, double q) {
    return 1.0 + q * (r.k1 + r.k2 * q);
}

}  // namespace

ChartPoint chartToFrame(const ChartRegistration& r, ChartPoint p) {
    const double* h = r.homography;
    const double w = h[6] * p.x + h[7] * p.y + h[8];
    const double ux = (h[0] * p.x + h[1] * p.y + h[2]) / w;
    const double uy = (h[3] * p.x + h[4] * p.y + h[5]) / w;
    const double dx = ux - r.centreX, dy = uy - r.centreY;
    const double q = (dx * dx + dy * dy) / (r.normRadius * r.normRadius);
    const double g = radialGain(r, q);
    return {r.centreX + dx * g, r.centreY + dy * g};
}

bool frameToChart(const ChartRegistration& r, ChartPoint p, ChartPoint& chart) {
    // Radius of the distorted point, normalised; solve s (1 + k1 s^2 + k2 s^4) = t for the
    // undistorted radius s by Newton steps from s = t.
    const double dx = p.x - r.centreX, dy = p.y - r.centreY;
    const double t = std::hypot(dx, dy) / r.normRadius;
    double s = t;
    for (int i = 0; i < 30; ++i) {
        const double s2 = s * s;
        const double f = s * (1.0 + s2 * (r.k1 + r.k2 * s2)) - t;
        const double df = 1.0 + s2 * (3.0 * r.k1 + 5.0 * r.k2 * s2);
        if (!(df > 1e-9)) {
            return false;  // the model folds over here
        }
        const double step = f / df;
        s -= step;
        if (std::abs(step) < 1e-14) {
            break;
        }
    }
    const double scale = t > 0.0 ? s / t : 1.0;
    const double ux = r.centreX + dx * scale, uy = r.centreY + dy * scale;
    const double* h = r.homography;
    // Inverse of H by its adjugate.
    const double a = h[4] * h[8] - h[5] * h[7], b = h[2] * h[7] - h[1] * h[8],
                 c = h[1] * h[5] - h[2] * h[4];
    const double d = h[5] * h[6] - h[3] * h[8], e = h[0] * h[8] - h[2] * h[6],
                 f = h[2] * h[3] - h[0] * h[5];
    const double g = h[3] * h[7] - h[4] * h[6], hh = h[1] * h[6] - h[0] * h[7],
                 i = h[0] * h[4] - h[1] * h[3];
    const double det = h[0] * a + h[1] * d + h[2] * g;
    if (!(std::abs(det) > 1e-300)) {
        return false;
    }
    const double w = g * ux + hh * uy + i;
    if (!(std::abs(w) > 1e-300)) {
        return false;
    }
    chart = {(a * ux + b * uy + c) / w, (d * ux + e * uy + f) / w};
    return std::isfinite(chart.x) && std::isfinite(chart.y);
}

}  // namespace talonvireo
