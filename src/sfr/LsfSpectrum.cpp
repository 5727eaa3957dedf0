#include "sfr/LsfSpectrum.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "sfr/LocalLinearProfile.h"
#include "sfr/SfrConstants.h"

namespace talonvireo {
namespace sfr {

namespace {
// Halvings of a table step: 0.005 / 2^24 is far below any figure's precision.
constexpr int kRefineSteps = 24;
}  // namespace

LsfSpectrum::LsfSpectrum(std::vector<double> value, double first, double step, double kernelSigma)
    : value_(std::move(value)), first_(first), step_(step), kernelSigma_(kernelSigma) {
    dc_ = modulus(0.0);
}

double LsfSpectrum::modulus(double f) const {
    // The phasor advances by a fixed turn per sample; the origin sits mid-span so that the
    // recurrence's rounding stays small.
    const double centre = first_ + 0.5 * step_ * static_cast<double>(value_.size());
    const double start = -kTwoPi * f * (first_ - centre);
    double c = std::cos(start), s = std::sin(start);
    const double dc = std::cos(-kTwoPi * f * step_), ds = std::sin(-kTwoPi * f * step_);
    double re = 0.0, im = 0.0;
    for (double v : value_) {
        re += v * c;
        im += v * s;
        const double nc = c * dc - s * ds;
        s = c * ds + s * dc;
        c = nc;
    }
    return std::hypot(re, im);
}

std::vector<double> LsfSpectrum::table(int count, double step) const {
    constexpr int kLanes = 4;  // independent phasor recurrences keep the multipliers busy
    std::vector<double> out(static_cast<size_t>(std::max(count, 0)));
    const double centre = first_ + 0.5 * step_ * static_cast<double>(value_.size());
    for (int base = 0; base < count; base += kLanes) {
        double c[kLanes], s[kLanes], dc[kLanes], ds[kLanes], re[kLanes] = {}, im[kLanes] = {};
        for (int l = 0; l < kLanes; ++l) {
            const double f = (base + l) * step;
            const double start = -kTwoPi * f * (first_ - centre);
            c[l] = std::cos(start);
            s[l] = std::sin(start);
            dc[l] = std::cos(-kTwoPi * f * step_);
            ds[l] = std::sin(-kTwoPi * f * step_);
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
        for (int l = 0; l < kLanes && base + l < count; ++l) {
            const double f = (base + l) * step;
            out[static_cast<size_t>(base + l)] =
                dc_ > 0.0 ? std::hypot(re[l], im[l]) / dc_ / gaussianTransfer(kernelSigma_, f)
                          : std::numeric_limits<double>::quiet_NaN();
        }
    }
    return out;
}

double LsfSpectrum::at(double f) const {
    if (!(dc_ > 0.0)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    return modulus(f) / dc_ / gaussianTransfer(kernelSigma_, f);
}

double LsfSpectrum::frequencyAtLevel(double level, const std::vector<double>& frequency,
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
