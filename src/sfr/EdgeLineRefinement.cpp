#include "sfr/EdgeLineRefinement.h"

#include <algorithm>
#include <cmath>
#include <vector>

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

namespace {
// One row's samples, ready to add: each one's five weighted products.
struct RowProducts {
    std::vector<double> a00, a01, a11, r0, r1;
};

// What the Gauss-Newton step needs of one row, `size` samples from column `first` on. As
// profileAt (which `profile` must have two points or more for), but with both ends of the
// profile picked rather than branched to, so that the samples run several at once; each
// sample's figures are those profileAt and the plain loop give.
struct RowSetting {
    double q, y, yMid, b, m, scale, c2;
};
void rowProducts(const EdgeSamples& samples, const LocalLinearProfile& profile, const RowSetting& r,
                 const float* level, int first, int size, double* __restrict a00,
                 double* __restrict a01, double* __restrict a11, double* __restrict r0,
                 double* __restrict r1) {
    const double* __restrict pl = profile.level.data();
    const double* __restrict ps = profile.slope.data();
    const int n = profile.size();
    const double h = profile.step;
    const double front = profile.level.front(), back = profile.level.back();
    const double x0 = samples.x0;
    const double pitch = samples.pitch;
    const double q = r.q;
    for (int s = 0; s < size; ++s) {
        const int j = first + s;
        const double d = (x0 + pitch * static_cast<double>(j) - r.b - r.m * r.y) * r.scale;
        const double u = d / profile.step - profile.first;
        const bool above = u > 0.0;
        const bool below = u < n - 1;
        const bool inside = above & below;
        // Held to the profile (a NaN to its start) only so that every sample may read it;
        // within, the truncation is profileAt's.
        const int k = static_cast<int>(std::min(std::max(0.0, u), n - 1.5));
        const double t = u - k;
        const double y0 = pl[k], y1 = pl[k + 1];
        const double m0 = ps[k] * h, m1 = ps[k + 1] * h;
        const double t2 = t * t, t3 = t2 * t;
        const double within = (2 * t3 - 3 * t2 + 1) * y0 + (t3 - 2 * t2 + t) * m0 +
                              (-2 * t3 + 3 * t2) * y1 + (t3 - t2) * m1;
        const double withinSlope = ((6 * t2 - 6 * t) * y0 + (3 * t2 - 4 * t + 1) * m0 +
                                    (-6 * t2 + 6 * t) * y1 + (3 * t2 - 2 * t) * m1) /
                                   h;
        const double pLevel = above ? (below ? within : back) : front;
        const double pSlope = inside ? withinSlope : 0.0;
        const double residual = level[j] - pLevel;
        // Derivatives of d with respect to the intercept at the middle row and the slope.
        const double j0 = pSlope * -r.scale;
        const double j1 = pSlope * (-(r.y - r.yMid) * r.scale - d * r.m * r.c2);
        a00[s] = q * j0 * j0;
        a01[s] = q * j0 * j1;
        a11[s] = q * j1 * j1;
        r0[s] = q * j0 * residual;
        r1[s] = q * j1 * residual;
    }
}
}  // namespace

EdgeFrame refineEdgeLine(const EdgeSamples& samples, const std::vector<double>& rowWeight,
                         const EdgeFrame& frame, const LocalLinearProfile& profile, double range) {
    const double scale = frame.scale();
    const double b = frame.line.intercept;
    const double m = frame.line.slope;
    const double c2 = 1.0 / (1.0 + m * m);
    // Normal equations in (intercept, slope); rows are centred on the middle row for balance.
    const double yMid = 0.5 * (samples.y(0) + samples.y(samples.rows() - 1));
    double a00 = 0.0, a01 = 0.0, a11 = 0.0, r0 = 0.0, r1 = 0.0;
    RowProducts row;
    if (profile.size() >= 2) {
        for (auto* v : {&row.a00, &row.a01, &row.a11, &row.r0, &row.r1}) {
            v->resize(static_cast<size_t>(samples.cols()));
        }
    }
    for (int i = 0; i < samples.rows(); ++i) {
        const double q = rowWeight[static_cast<size_t>(i)];
        const double y = samples.y(i);
        const float* level = samples.values.ptr<float>(i);
        const ColumnSpan span = columnsWithin((samples.x(0) - b - m * y) * scale,
                                              samples.pitch * scale, samples.cols(), range);
        if (profile.size() >= 2) {
            const int size = span.last - span.first;
            rowProducts(samples, profile, RowSetting{q, y, yMid, b, m, scale, c2}, level,
                        span.first, size, row.a00.data(), row.a01.data(), row.a11.data(),
                        row.r0.data(), row.r1.data());
            for (int s = 0; s < size; ++s) {
                a00 += row.a00[s];
                a01 += row.a01[s];
                a11 += row.a11[s];
                r0 += row.r0[s];
                r1 += row.r1[s];
            }
            continue;
        }
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
