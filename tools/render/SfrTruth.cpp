#include "render/SfrTruth.h"

#include <cmath>

namespace talonvireo {
namespace render {

namespace {
constexpr double kPi = 3.141592653589793;

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

}  // namespace render
}  // namespace talonvireo
