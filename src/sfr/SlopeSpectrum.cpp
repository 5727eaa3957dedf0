#include "sfr/SlopeSpectrum.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <utility>

#include "sfr/LocalLinearProfile.h"
#include "sfr/SfrConstants.h"

namespace talonvireo {
namespace sfr {

namespace {
// Halvings of the bracket: a 0.005 per-pixel bracket narrows to 3e-10, well below what any
// reported figure resolves.
constexpr int kRefineSteps = 24;
// exp(-28) is below 1e-12: a blob's transfer past this exponent is left out.
constexpr double kNegligibleExponent = 28.0;
}  // namespace

SlopeSpectrum::SlopeSpectrum(std::vector<double> value, double first, double step,
                             double kernelSigma, std::vector<TailBlob> tails)
    : value_(std::move(value)),
      tails_(std::move(tails)),
      first_(first),
      step_(step),
      kernelSigma_(kernelSigma),
      centre_(first + 0.5 * step * static_cast<double>(value_.size())) {
    dc_ = std::fabs(transform(0.0).real());
}

void SlopeSpectrum::coreTransforms(const double* f, int n, std::complex<double>* out) const {
    // Each frequency's rotation advances by a constant angle from one sample to the next.
    // Counting positions from the centre of the samples keeps the rounding of that running
    // rotation small.
    if (n == 1) {
        // One frequency (a reading between the table's): the same rotation, one lane only.
        const double start = -kTwoPi * f[0] * (first_ - centre_);
        double c = std::cos(start), s = std::sin(start), re = 0.0, im = 0.0;
        const double dc = std::cos(-kTwoPi * f[0] * step_);
        const double ds = std::sin(-kTwoPi * f[0] * step_);
        for (double v : value_) {
            re += v * c;
            im += v * s;
            const double nc = c * dc - s * ds;
            s = c * ds + s * dc;
            c = nc;
        }
        out[0] = {re, im};
        return;
    }
    // Unused lanes turn by nothing; their sums are dropped.
    double c[kLanes], s[kLanes], dc[kLanes], ds[kLanes], re[kLanes] = {}, im[kLanes] = {};
    for (int l = 0; l < kLanes; ++l) {
        c[l] = 1.0;
        s[l] = 0.0;
        dc[l] = 1.0;
        ds[l] = 0.0;
    }
    for (int l = 0; l < n; ++l) {
        const double start = -kTwoPi * f[l] * (first_ - centre_);
        c[l] = std::cos(start);
        s[l] = std::sin(start);
        dc[l] = std::cos(-kTwoPi * f[l] * step_);
        ds[l] = std::sin(-kTwoPi * f[l] * step_);
    }
    for (double v : value_) {
        for (int l = 0; l < kLanes; ++l) {
            re[l] += v * c[l];
            im[l] += v * s[l];
            const double nc = c[l] * dc[l] - s[l] * ds[l];
            s[l] = c[l] * ds[l] + s[l] * dc[l];
            c[l] = nc;
        }
    }
    for (int l = 0; l < n; ++l) {
        out[l] = {re[l], im[l]};
    }
}

void SlopeSpectrum::addTails(double f, std::complex<double>& sum) const {
    // Each blob's phasor times its Gaussian's transfer, where that is not negligible.
    const double a = kTwoPi * kPi * f * f;
    for (const TailBlob& t : tails_) {
        const double exponent = a * t.width * t.width;
        if (exponent <= kNegligibleExponent) {
            sum += std::polar(t.weight * std::exp(-exponent), -kTwoPi * f * (t.position - centre_));
        }
    }
}

std::complex<double> SlopeSpectrum::transform(double f) const {
    std::complex<double> sum;
    coreTransforms(&f, 1, &sum);
    addTails(f, sum);
    return sum;
}

std::vector<double> SlopeSpectrum::sampled(int count, double step) const {
    count = std::max(count, 0);
    std::vector<std::complex<double>> sums(static_cast<size_t>(count));
    for (int base = 0; base < count; base += kLanes) {
        const int n = std::min(kLanes, count - base);
        double f[kLanes];
        for (int l = 0; l < n; ++l) {
            f[l] = (base + l) * step;
        }
        coreTransforms(f, n, &sums[static_cast<size_t>(base)]);
    }
    // The tails on the evenly spaced frequencies: each blob's phasor turns by a constant
    // angle per step, and its Gaussian exp(-a k^2) follows from one factor per step.
    for (const TailBlob& t : tails_) {
        const double a = kTwoPi * kPi * t.width * t.width * step * step;
        const std::complex<double> turn = std::polar(1.0, -kTwoPi * step * (t.position - centre_));
        const double ratio = std::exp(-2.0 * a);
        std::complex<double> phasor = t.weight;
        double factor = std::exp(-a);
        for (int k = 0; k < count && a * k * k <= kNegligibleExponent; ++k) {
            sums[static_cast<size_t>(k)] += phasor;
            phasor *= turn * factor;
            factor *= ratio;
        }
    }
    std::vector<double> out(static_cast<size_t>(count));
    for (int k = 0; k < count; ++k) {
        out[static_cast<size_t>(k)] = dc_ > 0.0 ? std::abs(sums[static_cast<size_t>(k)]) / dc_ /
                                                      gaussianTransfer(kernelSigma_, k * step)
                                                : std::numeric_limits<double>::quiet_NaN();
    }
    return out;
}

double SlopeSpectrum::at(double f) const {
    if (!(dc_ > 0.0)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    return std::abs(transform(f)) / dc_ / gaussianTransfer(kernelSigma_, f);
}

void SlopeSpectrum::atEach(const double* f, int n, double* out) const {
    for (int base = 0; base < n; base += kLanes) {
        const int lanes = std::min(kLanes, n - base);
        if (!(dc_ > 0.0)) {
            std::fill(out + base, out + base + lanes, std::numeric_limits<double>::quiet_NaN());
            continue;
        }
        std::complex<double> sums[kLanes];
        coreTransforms(f + base, lanes, sums);
        for (int l = 0; l < lanes; ++l) {
            addTails(f[base + l], sums[l]);
            out[base + l] = std::abs(sums[l]) / dc_ / gaussianTransfer(kernelSigma_, f[base + l]);
        }
    }
}

double SlopeSpectrum::frequencyAtLevel(double level, const std::vector<double>& frequency,
                                       const std::vector<double>& sfr) const {
    for (size_t k = 1; k < frequency.size() && k < sfr.size(); ++k) {
        if (sfr[k] < level) {
            double lo = frequency[k - 1], hi = frequency[k];
            for (int i = 0; i < kRefineSteps; ++i) {
                const double mid = 0.5 * (lo + hi);
                (at(mid) < level ? hi : lo) = mid;
            }
            return 0.5 * (lo + hi);
        }
    }
    return std::numeric_limits<double>::quiet_NaN();
}

std::vector<double> SlopeSpectrum::frequenciesAtLevels(const std::vector<double>& levels,
                                                       const std::vector<double>& frequency,
                                                       const std::vector<double>& sfr) const {
    std::vector<double> out(levels.size(), std::numeric_limits<double>::quiet_NaN());
    for (size_t first = 0; first < levels.size(); first += kLanes) {
        const size_t count = std::min(levels.size() - first, static_cast<size_t>(kLanes));
        // Each level's bracket, as frequencyAtLevel finds it; `which` lists those with one.
        double lo[kLanes], hi[kLanes], level[kLanes];
        size_t which[kLanes];
        int n = 0;
        for (size_t i = first; i < first + count; ++i) {
            for (size_t k = 1; k < frequency.size() && k < sfr.size(); ++k) {
                if (sfr[k] < levels[i]) {
                    lo[n] = frequency[k - 1];
                    hi[n] = frequency[k];
                    level[n] = levels[i];
                    which[n++] = i;
                    break;
                }
            }
        }
        for (int step = 0; step < kRefineSteps && n > 0; ++step) {
            double mid[kLanes], value[kLanes];
            for (int l = 0; l < n; ++l) {
                mid[l] = 0.5 * (lo[l] + hi[l]);
            }
            atEach(mid, n, value);
            for (int l = 0; l < n; ++l) {
                (value[l] < level[l] ? hi[l] : lo[l]) = mid[l];
            }
        }
        for (int l = 0; l < n; ++l) {
            out[which[l]] = 0.5 * (lo[l] + hi[l]);
        }
    }
    return out;
}

}  // namespace sfr
}  // namespace talonvireo
