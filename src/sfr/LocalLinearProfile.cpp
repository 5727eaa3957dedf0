#include "sfr/LocalLinearProfile.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "sfr/SfrConstants.h"

namespace talonvireo {
namespace sfr {

namespace {
// Beyond 4.5 standard deviations the weight is below 4e-5 of its peak.
constexpr double kKernelReach = 4.5;
// A fit needs this much weight (in samples at the peak weight) and offset spread.
constexpr double kMinWeight = 2.0;
constexpr double kMinSpread = 1.0e-4;

// Weighted sums of one output point's regression.
struct Sums {
    double s0 = 0.0, s1 = 0.0, s2 = 0.0, t0 = 0.0, t1 = 0.0;
};

// Spreads every occupied bin over the output points within the kernel's reach. A bin's
// weight is the kernel at the mean position of its samples, not at its centre: when the
// phases bunch, all samples of a bin sit at one place and the weight is then exact.
std::vector<Sums> scatterBins(const SampleBins& bins, double sigma, int binsPerStep, int first,
                              size_t count) {
    std::vector<Sums> sums(count);
    const double step = bins.width * binsPerStep;
    const int reach = static_cast<int>(std::ceil(kKernelReach * sigma / step));
    const double inv2 = 1.0 / (sigma * sigma);
    // exp(-(t step)^2 / 2 sigma^2): the part of the weight that depends only on the distance
    // in output steps from the nearest output point.
    std::vector<double> far(static_cast<size_t>(reach + 1));
    for (int t = 0; t <= reach; ++t) {
        far[static_cast<size_t>(t)] = std::exp(-0.5 * t * t * step * step * inv2);
    }
    for (int k = 0; k < bins.size(); ++k) {
        const double n = bins.count[k];
        if (n == 0.0) {
            continue;
        }
        const double se = bins.sumOffset[k];
        const double sv = bins.sumLevel[k];
        const double mean = bins.position(k) + se / n;
        const int nearest = static_cast<int>(std::lround(mean / step));
        const double u = mean - nearest * step;  // |u| <= step / 2
        // weight(t) = exp(-(u - t step)^2 / 2 sigma^2) = base * grow^t * far[|t|]
        const double base = std::exp(-0.5 * u * u * inv2);
        const double grow = std::exp(u * step * inv2);
        const double shrink = 1.0 / grow;
        double up = base, down = base;
        for (int t = 0; t <= reach; ++t) {
            for (int sideSign : {1, -1}) {
                if (t == 0 && sideSign < 0) {
                    continue;
                }
                const long j = static_cast<long>(nearest) + sideSign * t - first;
                if (j < 0 || j >= static_cast<long>(count)) {
                    continue;
                }
                const double w = (sideSign > 0 ? up : down) * far[static_cast<size_t>(t)];
                // Bin centre minus output point.
                const double delta = bins.position(k) - static_cast<double>(j + first) * step;
                Sums& o = sums[static_cast<size_t>(j)];
                o.s0 += w * n;
                o.s1 += w * (se + n * delta);
                o.s2 += w * (bins.sumOffset2[k] + 2.0 * delta * se + n * delta * delta);
                o.t0 += w * sv;
                o.t1 += w * (bins.sumOffsetLevel[k] + delta * sv);
            }
            up *= grow;
            down *= shrink;
        }
    }
    return sums;
}
}  // namespace

double LocalLinearProfile::levelAt(double x, int lo, int hi) const {
    const double u = std::clamp(x / step - first, static_cast<double>(lo), static_cast<double>(hi));
    const int k = std::min(static_cast<int>(std::floor(u)), hi - 1);
    if (k < lo) {
        return level[static_cast<size_t>(lo)];
    }
    const double t = u - k;
    return (1.0 - t) * level[static_cast<size_t>(k)] + t * level[static_cast<size_t>(k + 1)];
}

double gaussianTransfer(double sigma, double f) {
    return std::exp(-2.0 * kPi * kPi * sigma * sigma * f * f);
}

LocalLinearProfile localLinearProfile(const SampleBins& bins, double sigma, int binsPerStep) {
    if (!(sigma > 0.0) || binsPerStep < 1 || bins.size() == 0) {
        throw std::invalid_argument("local regression needs a positive width and bins");
    }
    LocalLinearProfile p;
    p.sigma = sigma;
    p.step = bins.width * binsPerStep;
    const int firstStep = -(bins.centre / binsPerStep);
    const int lastStep = (bins.size() - 1 - bins.centre) / binsPerStep;
    p.first = firstStep;
    const size_t n = static_cast<size_t>(lastStep - firstStep + 1);
    p.level.assign(n, 0.0);
    p.slope.assign(n, 0.0);
    p.weight.assign(n, 0.0);
    std::vector<bool> valid(n, false);
    const std::vector<Sums> sums = scatterBins(bins, sigma, binsPerStep, firstStep, n);
    const double spreadFloor = kMinSpread * sigma * sigma;
    for (size_t k = 0; k < n; ++k) {
        const Sums& o = sums[k];
        p.weight[k] = o.s0;
        if (!(o.s0 >= kMinWeight)) {
            continue;
        }
        const double meanD = o.s1 / o.s0;
        const double meanV = o.t0 / o.s0;
        const double spread = o.s2 / o.s0 - meanD * meanD;
        if (!(spread > spreadFloor)) {
            p.weight[k] = 0.0;
            continue;
        }
        p.slope[k] = (o.t1 / o.s0 - meanD * meanV) / spread;
        p.level[k] = meanV - p.slope[k] * meanD;
        valid[k] = true;
    }
    // Unfit points at the ends hold the nearest fitted level with no slope.
    const auto firstValid = std::find(valid.begin(), valid.end(), true);
    if (firstValid == valid.end()) {
        return p;
    }
    const size_t a = static_cast<size_t>(firstValid - valid.begin());
    for (size_t k = 0; k < a; ++k) {
        p.level[k] = p.level[a];
    }
    for (size_t k = a + 1; k < n; ++k) {
        if (!valid[k]) {
            p.level[k] = p.level[k - 1];
            p.slope[k] = 0.0;
        }
    }
    return p;
}

}  // namespace sfr
}  // namespace talonvireo
