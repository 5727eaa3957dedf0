#include "sfr/PhaseWeights.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <stdexcept>

#include "sfr/SfrConstants.h"

namespace talonvireo {
namespace sfr {

namespace {
// Gaps below this share of the widest gap join two rows into one cluster.
constexpr double kClusterShare = 0.25;

double fraction(double t) {
    return t - std::floor(t);
}
}  // namespace

PhaseWeights phaseWeights(const EdgeSamples& samples, const EdgeFrame& frame) {
    PhaseWeights out;
    const size_t n = static_cast<size_t>(samples.rows());
    if (n == 0) {
        return out;
    }
    const double b = frame.line.intercept, m = frame.line.slope;
    out.rowPhase.resize(n);
    for (size_t i = 0; i < n; ++i) {
        out.rowPhase[i] =
            fraction((samples.x(0) - b - m * samples.y(static_cast<int>(i))) / samples.pitch);
    }
    const std::vector<double>& phase = out.rowPhase;
    std::vector<size_t> order(n);
    std::iota(order.begin(), order.end(), size_t{0});
    std::sort(order.begin(), order.end(), [&](size_t a, size_t c) { return phase[a] < phase[c]; });
    // gap[i]: from the i-th phase in order to the next, round the circle.
    std::vector<double> gap(n);
    for (size_t i = 0; i < n; ++i) {
        const double next = i + 1 < n ? phase[order[i + 1]] : phase[order[0]] + 1.0;
        gap[i] = next - phase[order[i]];
    }
    const size_t widest =
        static_cast<size_t>(std::max_element(gap.begin(), gap.end()) - gap.begin());
    const double joinBelow = kClusterShare * gap[widest];
    out.rowWeight.assign(n, 1.0);
    if (n > 1 && gap[widest] > 0.0) {
        // Walk round the circle from just after the widest gap, which always ends a cluster.
        size_t i = 0;
        while (i < n) {
            const size_t start = (widest + 1 + i) % n;
            const size_t before = (start + n - 1) % n;
            double inside = 0.0;
            size_t size = 1;
            while (i + size < n && gap[(start + size - 1) % n] < joinBelow) {
                inside += gap[(start + size - 1) % n];
                ++size;
            }
            const size_t last = (start + size - 1) % n;
            const double cell = 0.5 * gap[before] + inside + 0.5 * gap[last];
            for (size_t k = 0; k < size; ++k) {
                out.rowWeight[order[(start + k) % n]] = cell / static_cast<double>(size);
            }
            i += size;
        }
    }
    const double total = std::accumulate(out.rowWeight.begin(), out.rowWeight.end(), 0.0);
    const double scale = total > 0.0 ? static_cast<double>(n) / total : 1.0;
    for (double& w : out.rowWeight) {
        w *= scale;
    }
    return out;
}

double phaseComponent(const PhaseWeights& weights, int k) {
    double re = 0.0, im = 0.0, total = 0.0;
    for (size_t r = 0; r < weights.rowPhase.size(); ++r) {
        const double a = kTwoPi * k * weights.rowPhase[r];
        re += weights.rowWeight[r] * std::cos(a);
        im += weights.rowWeight[r] * std::sin(a);
        total += weights.rowWeight[r];
    }
    if (!(total > 0.0)) {
        throw std::invalid_argument("no rows");
    }
    return std::hypot(re, im) / total;
}

}  // namespace sfr
}  // namespace talonvireo
