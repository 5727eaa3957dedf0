#include "sfr/SlopeSpectrum.h"

#include <algorithm>
#include <cmath>
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
      kernelSigma_(kernelSigma) {
    const double zero = 0.0;
    moduli(&zero, 1, &dc_);
}

void SlopeSpectrum::moduli(const double* f, int n, double* out) const {
    // Each frequency's rotation advances by a constant angle from one sample to the next.
    // Counting positions from the centre of the samples keeps the rounding of that running
    // rotation small.
    const double centre = first_ + 0.5 * step_ * static_cast<double>(value_.size());
    double c[kLanes], s[kLanes], dc[kLanes], ds[kLanes], re[kLanes] = {}, im[kLanes] = {};
    for (int l = 0; l < kLanes; ++l) {
        const double fl = l < n ? f[l] : 0.0;
        const double start = -kTwoPi * fl * (first_ - centre);
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
        // The tails: each blob's phasor times its Gaussian's transfer, where that is not
        // negligible.
        const double a = kTwoPi * kPi * f[l] * f[l];
        for (const TailBlob& t : tails_) {
            const double exponent = a * t.width * t.width;
            if (exponent > kNegligibleExponent) {
                continue;
            }
            const double g = t.weight * std::exp(-exponent);
            const double phase = -kTwoPi * f[l] * (t.position - centre);
            re[l] += g * std::cos(phase);
            im[l] += g * std::sin(phase);
        }
        out[l] = std::hypot(re[l], im[l]);
    }
}

std::vector<double> SlopeSpectrum::sampled(int count, double step) const {
    std::vector<double> out(static_cast<size_t>(std::max(count, 0)));
    for (int base = 0; base < count; base += kLanes) {
        const int n = std::min(kLanes, count - base);
        double f[kLanes], m[kLanes];
        for (int l = 0; l < n; ++l) {
            f[l] = (base + l) * step;
        }
        moduli(f, n, m);
        for (int l = 0; l < n; ++l) {
            out[static_cast<size_t>(base + l)] =
                dc_ > 0.0 ? m[l] / dc_ / gaussianTransfer(kernelSigma_, f[l])
                          : std::numeric_limits<double>::quiet_NaN();
        }
    }
    return out;
}

double SlopeSpectrum::at(double f) const {
    if (!(dc_ > 0.0)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    double m = 0.0;
    moduli(&f, 1, &m);
    return m / dc_ / gaussianTransfer(kernelSigma_, f);
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
