#include "render/SfrTruth.h"

#include <cmath>

#include "render/Pi.h"

namespace talonvireo {
namespace render {

namespace {

double sinc(double x) {
    return x == 0.0 ? 1.0 : std::sin(kPi * x) / (kPi * x);
}
}  // namespace

double trueSfr(double f, double sigma, double angleDeg) {
    const double a = angleDeg * kPi / 180.0;
    return std::exp(-2.0 * kPi * kPi * sigma * sigma * f * f) * sinc(f * std::cos(a)) *
           sinc(f * std::sin(a));
}

double trueMtf50(double sigma, double angleDeg) {
    // The curve falls monotonically through 0.5 well before the first sinc zero at f = 1.
    double lo = 0.0;
    double hi = 1.0;
    for (int i = 0; i < 200; ++i) {
        const double mid = 0.5 * (lo + hi);
        (trueSfr(mid, sigma, angleDeg) > 0.5 ? lo : hi) = mid;
    }
    return 0.5 * (lo + hi);
}

double trueSfr(double f, const LensBlur& lens, double angleDeg, double aperture) {
    const double a = angleDeg * kPi / 180.0;
    return lens.mtf(f) * sinc(aperture * f * std::cos(a)) * sinc(aperture * f * std::sin(a));
}

double trueFrequencyAtLevel(double level, const LensBlur& lens, double angleDeg, double aperture) {
    // Walk up in small steps to the first crossing (a defocused transfer dips and rises
    // again), then halve the bracket.
    constexpr double kScan = 1e-3;
    constexpr double kHighest = 2.0;
    for (double hi = kScan; hi <= kHighest; hi += kScan) {
        if (trueSfr(hi, lens, angleDeg, aperture) < level) {
            double lo = hi - kScan;
            for (int i = 0; i < 60; ++i) {
                const double mid = 0.5 * (lo + hi);
                (trueSfr(mid, lens, angleDeg, aperture) > level ? lo : hi) = mid;
            }
            return 0.5 * (lo + hi);
        }
    }
    return std::nan("");
}

}  // namespace render
}  // namespace talonvireo
