#include "render/EdgeSpreadTable.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "render/GaussLegendre.h"
#include "render/Pi.h"

namespace talonvireo {
namespace render {

namespace {
constexpr double kMaxReach = 4096.0;
// Table step: 1/64 px up to a band of 4 cycles per pixel, finer beyond, so that the quintic
// interpolation stays within about 1e-9 of the edge height for the sharpest lenses.
constexpr double kFinestStep = 1.0 / 64.0;
constexpr double kStepBand = 4.0;
// Gauss-Legendre panels: at most half an oscillation at the reach, and at least this many
// panels over the band.
constexpr int kNodes = 10;
constexpr int kMinPanels = 32;
// Table points per parallel chunk: each chunk starts its rotations afresh.
constexpr int kChunk = 256;
// Below this angle the kernels of the integrals use their series.
constexpr double kSeriesAngle = 0.1;
// Box widths below which a box is taken as its second-order expansion.
constexpr double kThinBox = 0.05;

// Quintic Hermite basis on t in [0, 1] for value, derivative x h and second derivative x h^2
// at each end.
double hermite(double t, double h, const double left[3], const double right[3]) {
    const double t2 = t * t, t3 = t2 * t, t4 = t3 * t, t5 = t4 * t;
    const double h0 = 1.0 - 10.0 * t3 + 15.0 * t4 - 6.0 * t5;
    const double h1 = t - 6.0 * t3 + 8.0 * t4 - 3.0 * t5;
    const double h2 = 0.5 * (t2 - 3.0 * t3 + 3.0 * t4 - t5);
    const double h3 = 10.0 * t3 - 15.0 * t4 + 6.0 * t5;
    const double h4 = -4.0 * t3 + 7.0 * t4 - 3.0 * t5;
    const double h5 = 0.5 * (t3 - 2.0 * t4 + t5);
    return left[0] * h0 + h * left[1] * h1 + h * h * left[2] * h2 + right[0] * h3 +
           h * right[1] * h4 + h * h * right[2] * h5;
}
}  // namespace

EdgeSpreadTable::EdgeSpreadTable(const LensBlur& lens, double reach) : lens_(lens), reach_(reach) {
    checkLens(lens_);
    if (!(reach > 0.0) || !(reach <= kMaxReach)) {
        throw std::invalid_argument("edge spread reach must lie in (0, 4096] px");
    }
    step_ = kFinestStep / std::max(1.0, lens_.band() / kStepBand);
    count_ = static_cast<int>(std::ceil(reach_ / step_)) + 2;
    tabulate();
}

void EdgeSpreadTable::tabulate() {
    const double band = lens_.band();
    const double xMax = step_ * (count_ - 1);
    const int panels =
        std::max(kMinPanels, static_cast<int>(std::ceil(band / (0.5 / std::max(xMax, 1.0)))));
    const QuadratureRule rule = gaussLegendre(kNodes);
    std::vector<double> f, w;
    const double width = band / panels;
    for (int p = 0; p < panels; ++p) {
        for (int i = 0; i < kNodes; ++i) {
            const double fi = width * (p + 0.5 + 0.5 * rule.nodes[i]);
            f.push_back(fi);
            w.push_back(0.5 * width * rule.weights[i] * lens_.mtf(fi));
        }
    }
    for (auto& c : column_) {
        c.assign(static_cast<size_t>(count_), 0.0);
    }
    const int chunks = (count_ + kChunk - 1) / kChunk;
#pragma omp parallel for schedule(dynamic)
    for (int chunk = 0; chunk < chunks; ++chunk) {
        const int k0 = chunk * kChunk;
        const int k1 = std::min(count_, k0 + kChunk);
        for (size_t j = 0; j < f.size(); ++j) {
            const double twoPiF = 2.0 * kPi * f[j];
            const double turn = twoPiF * step_;
            const double dc = std::cos(turn), ds = std::sin(turn);
            double c = std::cos(turn * k0), s = std::sin(turn * k0);
            const double m = w[j];
            const double inv2Pi2F2 = 1.0 / (2.0 * kPi * kPi * f[j] * f[j]);
            for (int k = k0; k < k1; ++k) {
                const double x = k * step_;
                const double theta = turn * k;
                double edge, first, second;
                if (theta < kSeriesAngle) {
                    const double t2 = theta * theta;
                    const double sinc = 1.0 - t2 / 6.0 + t2 * t2 / 120.0 - t2 * t2 * t2 / 5040.0;
                    const double oneMinusCos =
                        0.5 - t2 / 24.0 + t2 * t2 / 720.0 - t2 * t2 * t2 / 40320.0;
                    const double minusSin =
                        1.0 / 6.0 - t2 / 120.0 + t2 * t2 / 5040.0 - t2 * t2 * t2 / 362880.0;
                    edge = 2.0 * x * sinc;
                    first = 2.0 * x * x * oneMinusCos;
                    second = 2.0 * x * x * x * minusSin;
                } else {
                    edge = s / (kPi * f[j]);
                    first = (1.0 - c) * inv2Pi2F2;
                    second = (x - s / twoPiF) * inv2Pi2F2;
                }
                const size_t kk = static_cast<size_t>(k);
                column_[kSlope][kk] -= 2.0 * m * twoPiF * s;
                column_[kLine][kk] += 2.0 * m * c;
                column_[kEdge][kk] += m * edge;
                column_[kFirst][kk] += m * first;
                column_[kSecond][kk] += m * second;
                const double nc = c * dc - s * ds;
                s = s * dc + c * ds;
                c = nc;
            }
        }
        for (int k = k0; k < k1; ++k) {
            const double x = k * step_;
            const size_t kk = static_cast<size_t>(k);
            column_[kEdge][kk] += 0.5;
            column_[kFirst][kk] += 0.5 * x;
            column_[kSecond][kk] += 0.25 * x * x;
        }
    }
}

double EdgeSpreadTable::interpolate(int c, double x) const {
    const double u = x / step_;
    if (!(u >= 0.0 && u <= count_ - 1)) {
        throw std::out_of_range("edge spread read beyond its table");
    }
    const int k = std::min(static_cast<int>(u), count_ - 2);
    const size_t a = static_cast<size_t>(k), b = a + 1;
    const double t = u - k;
    if (c == kLine) {
        // Cubic on the value and its slope: the table holds no second derivative of L.
        const double t2 = t * t, t3 = t2 * t;
        return column_[kLine][a] * (2.0 * t3 - 3.0 * t2 + 1.0) +
               step_ * column_[kSlope][a] * (t3 - 2.0 * t2 + t) +
               column_[kLine][b] * (3.0 * t2 - 2.0 * t3) + step_ * column_[kSlope][b] * (t3 - t2);
    }
    const double left[3] = {column_[c][a], column_[c - 1][a], column_[c - 2][a]};
    const double right[3] = {column_[c][b], column_[c - 1][b], column_[c - 2][b]};
    return hermite(t, step_, left, right);
}

double EdgeSpreadTable::lineSpread(double x) const {
    return interpolate(kLine, std::fabs(x));
}

double EdgeSpreadTable::edgeSpread(double x) const {
    const double v = interpolate(kEdge, std::fabs(x));
    return x >= 0.0 ? v : 1.0 - v;
}

double EdgeSpreadTable::firstIntegral(double x) const {
    const double v = interpolate(kFirst, std::fabs(x));
    return x >= 0.0 ? v : v + x;
}

double EdgeSpreadTable::secondIntegral(double x) const {
    const double v = interpolate(kSecond, std::fabs(x));
    return x >= 0.0 ? v : 0.5 * x * x - v;
}

double EdgeSpreadTable::pixelLevel(double d, double w1, double w2) const {
    w1 = std::fabs(w1);
    w2 = std::fabs(w2);
    if (w1 < w2) {
        std::swap(w1, w2);
    }
    const double p = 0.5 * w1, q = 0.5 * w2;
    if (!(std::fabs(d) + p + q <= step_ * (count_ - 1))) {
        throw std::out_of_range("pixel reaches beyond the edge spread table");
    }
    if (w1 < kThinBox) {
        // Both boxes thin: the edge spread plus the boxes' variance times its curvature.
        const double u = std::min(std::fabs(d) / step_, count_ - 1.0);
        const size_t k = std::min(static_cast<size_t>(u), static_cast<size_t>(count_ - 2));
        const double t = u - static_cast<double>(k);
        const double slope =
            ((1.0 - t) * column_[kSlope][k] + t * column_[kSlope][k + 1]) * (d >= 0.0 ? 1.0 : -1.0);
        return edgeSpread(d) + (w1 * w1 + w2 * w2) / 24.0 * slope;
    }
    if (w2 < kThinBox) {
        const double box = (firstIntegral(d + p) - firstIntegral(d - p)) / w1;
        const double curvature = (lineSpread(d + p) - lineSpread(d - p)) / w1;
        return box + w2 * w2 / 24.0 * curvature;
    }
    return (secondIntegral(d + p + q) - secondIntegral(d + p - q) - secondIntegral(d - p + q) +
            secondIntegral(d - p - q)) /
           (w1 * w2);
}

}  // namespace render
}  // namespace talonvireo
