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
    double c[kLanes], s[kLanes], dc[kLanes], ds[kLanes], re[kLanes] = {}, im[kLanes] = {};
    for (int l = 0; l < kLanes; ++l) {
        const double fl = l < n ? f[l] : 0.0;
        const double start = -kTwoPi * fl * (first_ - centre_);
        c[l] = std::cos(start);
        s[l] = std::sin(start);
        dc[l] = std::cos(-kTwoPi * fl * step_);
        ds[l] = std::sin(-kTwoPi * fl * step_);
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

std::complex<double> SlopeSpectrum::transform(double f) const {
    std::complex<double> sum;
    coreTransforms(&f, 1, &sum);
    // Each blob's phasor times its Gaussian's transfer, where that is not negligible.
    const double a = kTwoPi * kPi * f * f;
    for (const TailBlob& t : tails_) {
        const double exponent = a * t.width * t.width;
        if (exponent <= kNegligibleExponent) {
            sum += std::polar(t.weight * std::exp(-exponent), -kTwoPi * f * (t.position - centre_));
        }
    }
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

}  // namespace sfr
}  // namespace talonvireo
