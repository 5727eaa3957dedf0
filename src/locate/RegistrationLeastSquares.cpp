#include "locate/RegistrationLeastSquares.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace talonvireo {
namespace locate {

namespace {

constexpr int kTerms = 10;  // h0 .. h7 (h8 = 1), k1, k2
using Params = cv::Vec<double, kTerms>;
using Normal = cv::Matx<double, kTerms, kTerms>;

// The pairs in normalised units: chart points about their centroid over their rms spread,
// frame points about the distortion centre over r0, so that every term is of order one.
struct Normalised {
    std::vector<cv::Point2d> chart;
    std::vector<cv::Point2d> frame;
};

// Sum of squared residuals at p; infinite when a point falls at or behind the horizon.
double cost(const Normalised& n, const Params& p) {
    double sum = 0.0;
    for (std::size_t i = 0; i < n.chart.size(); ++i) {
        const double x = n.chart[i].x, y = n.chart[i].y;
        const double w = p[6] * x + p[7] * y + 1.0;
        if (!(w > 1e-9)) {
            return std::numeric_limits<double>::infinity();
        }
        const double ux = (p[0] * x + p[1] * y + p[2]) / w;
        const double uy = (p[3] * x + p[4] * y + p[5]) / w;
        const double q = ux * ux + uy * uy;
        const double g = 1.0 + q * (p[8] + p[9] * q);
        const double rx = ux * g - n.frame[i].x, ry = uy * g - n.frame[i].y;
        sum += rx * rx + ry * ry;
    }
    return std::isfinite(sum) ? sum : std::numeric_limits<double>::infinity();
}

// J^T J and J^T r at p.
void normalEquations(const Normalised& n, const Params& p, Normal& jtj, Params& jtr) {
    jtj = Normal::zeros();
    jtr = Params::all(0.0);
    for (std::size_t i = 0; i < n.chart.size(); ++i) {
        const double x = n.chart[i].x, y = n.chart[i].y;
        const double w = p[6] * x + p[7] * y + 1.0;
        const double ux = (p[0] * x + p[1] * y + p[2]) / w;
        const double uy = (p[3] * x + p[4] * y + p[5]) / w;
        const double q = ux * ux + uy * uy;
        const double g = 1.0 + q * (p[8] + p[9] * q);
        const double gq = p[8] + 2.0 * p[9] * q;  // dg / dq
        // d(f) / d(u), f = u g(|u|^2).
        const double fxx = g + 2.0 * ux * ux * gq, fxy = 2.0 * ux * uy * gq;
        const double fyy = g + 2.0 * uy * uy * gq;
        // d(u) / d(h): ux depends on h0..h2 and h6, h7; uy on h3..h5 and h6, h7.
        const double a = x / w, b = y / w, c = 1.0 / w;
        double jx[kTerms] = {fxx * a, fxx * b, fxx * c, fxy * a, fxy * b,
                             fxy * c, 0,       0,       ux * q,  ux * q * q};
        double jy[kTerms] = {fxy * a, fxy * b, fxy * c, fyy * a, fyy * b,
                             fyy * c, 0,       0,       uy * q,  uy * q * q};
        const double dux6 = -ux * a, dux7 = -ux * b, duy6 = -uy * a, duy7 = -uy * b;
        jx[6] = fxx * dux6 + fxy * duy6;
        jx[7] = fxx * dux7 + fxy * duy7;
        jy[6] = fxy * dux6 + fyy * duy6;
        jy[7] = fxy * dux7 + fyy * duy7;
        const double rx = ux * g - n.frame[i].x, ry = uy * g - n.frame[i].y;
        for (int r = 0; r < kTerms; ++r) {
            jtr[r] += jx[r] * rx + jy[r] * ry;
            for (int k = r; k < kTerms; ++k) {
                jtj(r, k) += jx[r] * jx[k] + jy[r] * jy[k];
            }
        }
    }
    for (int r = 0; r < kTerms; ++r) {
        for (int k = 0; k < r; ++k) {
            jtj(r, k) = jtj(k, r);
        }
    }
}

}  // namespace

double refineRegistration(const std::vector<PointPair>& pairs, ModelTerms terms, int iterations,
                          ChartRegistration& model) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    if (pairs.size() < 4 || !(model.normRadius > 0.0)) {
        return nan;
    }
    double mx = 0.0, my = 0.0;
    for (const PointPair& pair : pairs) {
        mx += pair.chart.x;
        my += pair.chart.y;
    }
    mx /= static_cast<double>(pairs.size());
    my /= static_cast<double>(pairs.size());
    double spread = 0.0;
    for (const PointPair& pair : pairs) {
        spread +=
            (pair.chart.x - mx) * (pair.chart.x - mx) + (pair.chart.y - my) * (pair.chart.y - my);
    }
    spread = std::sqrt(spread / static_cast<double>(pairs.size()));
    if (!(spread > 0.0)) {
        return nan;
    }
    const double r0 = model.normRadius, cx = model.centreX, cy = model.centreY;
    Normalised n;
    n.chart.reserve(pairs.size());
    n.frame.reserve(pairs.size());
    for (const PointPair& pair : pairs) {
        n.chart.emplace_back((pair.chart.x - mx) / spread, (pair.chart.y - my) / spread);
        n.frame.emplace_back((pair.frame.x - cx) / r0, (pair.frame.y - cy) / r0);
    }
    const cv::Matx33d chartNorm(1 / spread, 0, -mx / spread, 0, 1 / spread, -my / spread, 0, 0, 1);
    const cv::Matx33d chartDenorm(spread, 0, mx, 0, spread, my, 0, 0, 1);
    const cv::Matx33d frameNorm(1 / r0, 0, -cx / r0, 0, 1 / r0, -cy / r0, 0, 0, 1);
    const cv::Matx33d frameDenorm(r0, 0, cx, 0, r0, cy, 0, 0, 1);
    cv::Matx33d hn = frameNorm * cv::Matx33d(model.homography) * chartDenorm;
    if (!(std::abs(hn(2, 2)) > 1e-12)) {
        return nan;
    }
    hn *= 1.0 / hn(2, 2);
    Params p(hn(0, 0), hn(0, 1), hn(0, 2), hn(1, 0), hn(1, 1), hn(1, 2), hn(2, 0), hn(2, 1),
             model.k1, model.k2);
    bool active[kTerms];
    std::fill(active, active + 6, true);  // the affine part always moves
    active[6] = active[7] = terms.perspective;
    active[8] = terms.k1;
    active[9] = terms.k2;
    double c = cost(n, p);
    if (!std::isfinite(c)) {
        return nan;
    }
    double lambda = 1e-4;
    for (int it = 0; it < iterations; ++it) {
        Normal jtj;
        Params jtr;
        normalEquations(n, p, jtj, jtr);
        for (int r = 0; r < kTerms; ++r) {
            if (!active[r]) {
                for (int k = 0; k < kTerms; ++k) {
                    jtj(r, k) = jtj(k, r) = 0.0;
                }
                jtj(r, r) = 1.0;
                jtr[r] = 0.0;
            }
        }
        bool improved = false;
        double before = c;
        for (int attempt = 0; attempt < 8 && !improved; ++attempt) {
            Normal a = jtj;
            for (int r = 0; r < kTerms; ++r) {
                a(r, r) += lambda * (jtj(r, r) > 0.0 ? jtj(r, r) : 1.0);
            }
            Params step;
            if (!cv::solve(a, -jtr, step, cv::DECOMP_CHOLESKY)) {
                lambda *= 10.0;
                continue;
            }
            const Params trial = p + step;
            const double t = cost(n, trial);
            if (t <= c) {
                p = trial;
                c = t;
                lambda = std::max(lambda * 0.1, 1e-12);
                improved = true;
            } else {
                lambda *= 10.0;
            }
        }
        if (!improved || before - c <= 1e-14 * before) {
            break;
        }
    }
    const cv::Matx33d fitted(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], 1.0);
    cv::Matx33d h = frameDenorm * fitted * chartNorm;
    const double scale = std::abs(h(2, 2)) > 1e-12 ? h(2, 2) : cv::norm(h);
    for (int i = 0; i < 9; ++i) {
        model.homography[i] = h.val[i] / scale;
    }
    model.k1 = p[8];
    model.k2 = p[9];
    return std::sqrt(c / static_cast<double>(pairs.size())) * r0;
}

}  // namespace locate
}  // namespace talonvireo
