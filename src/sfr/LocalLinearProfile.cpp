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

// Weighted sums of every output point's regression, one array per sum so that the spread of
// a bin over its run of outputs is a plain loop.
struct Sums {
    std::vector<double> s0, s1, s2, t0, t1;
};

// std::lround for |x| < 2^52 without the library call: x less its truncation is exact there.
long roundHalfAway(double x) {
    long r = static_cast<long>(x);
    const double frac = x - static_cast<double>(r);
    if (frac >= 0.5) {
        ++r;
    } else if (frac <= -0.5) {
        --r;
    }
    return r;
}

// One bin's moments.
struct BinMoments {
    double n, se, se2, sv, sev, centre;
};

// Adds one bin's terms, weighted by w[j], to `size` outputs at positions at[j]. The arrays
// do not overlap, which lets the loop run several outputs at once (each output's sums still
// take the same terms in the same order).
void addBin(const BinMoments& b, const double* __restrict w, const double* __restrict at, long size,
            double* __restrict s0, double* __restrict s1, double* __restrict s2,
            double* __restrict t0, double* __restrict t1) {
    const double n = b.n, se = b.se, se2 = b.se2, sv = b.sv, sev = b.sev, centre = b.centre;
    for (long j = 0; j < size; ++j) {
        // Bin centre minus output point.
        const double delta = centre - at[j];
        s0[j] += w[j] * n;
        s1[j] += w[j] * (se + n * delta);
        s2[j] += w[j] * (se2 + 2.0 * delta * se + n * delta * delta);
        t0[j] += w[j] * sv;
        t1[j] += w[j] * (sev + delta * sv);
    }
}

// Spreads every occupied bin over the output points within the kernel's reach. A bin's
// weight is the kernel at the mean position of its samples, not at its centre: when the
// phases bunch, all samples of a bin sit at one place and the weight is then exact.
Sums scatterBins(const SampleBins& bins, double sigma, int binsPerStep, int first, size_t count) {
    Sums sums;
    for (auto* v : {&sums.s0, &sums.s1, &sums.s2, &sums.t0, &sums.t1}) {
        v->assign(count, 0.0);
    }
    const double step = bins.width * binsPerStep;
    const int reach = static_cast<int>(std::ceil(kKernelReach * sigma / step));
    const double inv2 = 1.0 / (sigma * sigma);
    // exp(-(t step)^2 / 2 sigma^2): the part of the weight that depends only on the distance
    // in output steps from the nearest output point.
    std::vector<double> far(static_cast<size_t>(reach + 1));
    for (int t = 0; t <= reach; ++t) {
        far[static_cast<size_t>(t)] = std::exp(-0.5 * t * t * step * step * inv2);
    }
    // Bins are taken a few at a time: each one's weights come from two chains of
    // multiplications, and the chains of different bins can then run side by side. Every
    // bin's weights, and the order in which bins reach the sums, stay as one at a time.
    constexpr int kBatch = 4;
    const size_t span = static_cast<size_t>(2 * reach + 1);
    // Bin l of a batch: its weights at outputs nearest - reach .. nearest + reach.
    std::vector<double> weight(kBatch * span);
    // Output positions, made once rather than once per bin.
    std::vector<double> output(count);
    for (size_t j = 0; j < count; ++j) {
        output[j] = static_cast<double>(static_cast<long>(j) + first) * step;
    }
    const double* at = output.data();
    double* s0 = sums.s0.data();
    double* s1 = sums.s1.data();
    double* s2 = sums.s2.data();
    double* t0 = sums.t0.data();
    double* t1 = sums.t1.data();
    int k = 0;
    while (k < bins.size()) {
        BinMoments b[kBatch] = {};
        int nearest[kBatch] = {};
        double up[kBatch], down[kBatch], grow[kBatch], shrink[kBatch];
        int m = 0;
        for (; k < bins.size() && m < kBatch; ++k) {
            const double n = bins.count[k];
            if (n == 0.0) {
                continue;
            }
            b[m] = BinMoments{n,
                              bins.sumOffset[k],
                              bins.sumOffset2[k],
                              bins.sumLevel[k],
                              bins.sumOffsetLevel[k],
                              bins.position(k)};
            const double mean = b[m].centre + b[m].se / n;
            nearest[m] = static_cast<int>(roundHalfAway(mean / step));
            const double u = mean - nearest[m] * step;  // |u| <= step / 2
            // weight(t) = exp(-(u - t step)^2 / 2 sigma^2) = base * grow^t * far[|t|]
            const double base = std::exp(-0.5 * u * u * inv2);
            grow[m] = std::exp(u * step * inv2);
            shrink[m] = 1.0 / grow[m];
            up[m] = base;
            down[m] = base;
            ++m;
        }
        for (int l = m; l < kBatch; ++l) {  // idle lanes
            up[l] = down[l] = grow[l] = shrink[l] = 1.0;
        }
        for (int t = 0; t <= reach; ++t) {
            const double f = far[static_cast<size_t>(t)];
            for (int l = 0; l < kBatch; ++l) {
                double* w = weight.data() + static_cast<size_t>(l) * span;
                w[reach + t] = up[l] * f;
                w[reach - t] = down[l] * f;
                up[l] *= grow[l];
                down[l] *= shrink[l];
            }
        }
        for (int l = 0; l < m; ++l) {
            // Each output gets one term per bin, so the bins' order alone fixes every sum's.
            const long offset = static_cast<long>(nearest[l]) - first;  // output of w[reach]
            const long lo = std::max(0L, offset - reach);
            const long hi = std::min(static_cast<long>(count) - 1, offset + reach);
            if (lo <= hi) {
                const double* w = weight.data() + static_cast<size_t>(l) * span;
                addBin(b[l], w + (reach - offset + lo), at + lo, hi - lo + 1, s0 + lo, s1 + lo,
                       s2 + lo, t0 + lo, t1 + lo);
            }
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
    std::vector<char> valid(n, 0);
    const Sums sums = scatterBins(bins, sigma, binsPerStep, firstStep, n);
    const double spreadFloor = kMinSpread * sigma * sigma;
    for (size_t k = 0; k < n; ++k) {
        const double s0 = sums.s0[k];
        p.weight[k] = s0;
        if (!(s0 >= kMinWeight)) {
            continue;
        }
        const double meanD = sums.s1[k] / s0;
        const double meanV = sums.t0[k] / s0;
        const double spread = sums.s2[k] / s0 - meanD * meanD;
        if (!(spread > spreadFloor)) {
            p.weight[k] = 0.0;
            continue;
        }
        p.slope[k] = (sums.t1[k] / s0 - meanD * meanV) / spread;
        p.level[k] = meanV - p.slope[k] * meanD;
        valid[k] = 1;
    }
    // Unfit points at the ends hold the nearest fitted level with no slope.
    const auto firstValid = std::find(valid.begin(), valid.end(), 1);
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
