#include "sfr/EdgeLineRefinement.h"

#include <cmath>

#include "sfr/SampleBins.h"

namespace talonvireo {
namespace sfr {

ProfilePoint profileAt(const LocalLinearProfile& profile, double d) {
    ProfilePoint p;
    const int n = profile.size();
    if (n == 0) {
        return p;
    }
    const double u = d / profile.step - profile.first;
    if (!(u > 0.0)) {
        p.level = profile.level.front();
        return p;
    }
    if (!(u < n - 1)) {
        p.level = profile.level.back();
        return p;
    }
    const int k = static_cast<int>(u);
    const double t = u - k;
    const double h = profile.step;
    const double y0 = profile.level[k], y1 = profile.level[k + 1];
    const double m0 = profile.slope[k] * h, m1 = profile.slope[k + 1] * h;
    const double t2 = t * t, t3 = t2 * t;
    p.level = (2 * t3 - 3 * t2 + 1) * y0 + (t3 - 2 * t2 + t) * m0 + (-2 * t3 + 3 * t2) * y1 +
              (t3 - t2) * m1;
    p.slope = ((6 * t2 - 6 * t) * y0 + (3 * t2 - 4 * t + 1) * m0 + (-6 * t2 + 6 * t) * y1 +
               (3 * t2 - 2 * t) * m1) /
              h;
    return p;
}

EdgeFrame refineEdgeLine(const EdgeSamples& samples, const std::vector<double>& rowWeight,
                         const EdgeFrame& frame, const LocalLinearProfile& profile, double range) {
    const double scale = frame.scale();
    const double b = frame.line.intercept;
    const double m = frame.line.slope;
    const double c2 = 1.0 / (1.0 + m * m);
    // Normal equations in (intercept, slope); rows are centred on the middle row for balance.
    const double yMid = 0.5 * (samples.y(0) + samples.y(samples.rows() - 1));
    double a00 = 0.0, a01 = 0.0, a11 = 0.0, r0 = 0.0, r1 = 0.0;
    for (int i = 0; i < samples.rows(); ++i) {
        const double q = rowWeight[static_cast<size_t>(i)];
        const double y = samples.y(i);
        const float* level = samples.values.ptr<float>(i);
        const ColumnSpan span = columnsWithin(samples, frame, i, range);
        for (int j = span.first; j < span.last; ++j) {
            const double d = (samples.x(j) - b - m * y) * scale;
            const ProfilePoint p = profileAt(profile, d);
            const double residual = level[j] - p.level;
            // Derivatives of d with respect to the intercept at the middle row and the slope.
            const double j0 = p.slope * -scale;
            const double j1 = p.slope * (-(y - yMid) * scale - d * m * c2);
            a00 += q * j0 * j0;
            a01 += q * j0 * j1;
            a11 += q * j1 * j1;
            r0 += q * j0 * residual;
            r1 += q * j1 * residual;
        }
    }
    const double det = a00 * a11 - a01 * a01;
    if (!(det > 0.0) || !(a00 > 0.0)) {
        return frame;
    }
    const double stepIntercept = (a11 * r0 - a01 * r1) / det;  // at the mean row
    const double stepSlope = (a00 * r1 - a01 * r0) / det;
    if (!std::isfinite(stepIntercept) || !std::isfinite(stepSlope)) {
        return frame;
    }
    EdgeFrame out = frame;
    out.line.slope = m + stepSlope;
    // The line through (b + m yMid + stepIntercept, yMid) with the new slope.
    out.line.intercept = b + m * yMid + stepIntercept - out.line.slope * yMid;
    return out;
}

}  // namespace sfr
}  // namespace talonvireo
