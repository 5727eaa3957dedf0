#include "sfr/LsfWindow.h"

#include <algorithm>
#include <cmath>

namespace talonvireo {
namespace sfr {

namespace {
// Span of the flat part and of the taper, in rises, plus a fixed pixel margin each. For a
// Gaussian spread the flat part reaches 3.6 standard deviations and the taper ends past 4.5;
// wider windows only add noise (measured on rendered edges with 1 % noise).
constexpr double kFlatRises = 1.4;
constexpr double kFlatMargin = 0.0;
constexpr double kTaperRises = 0.6;
constexpr double kTaperMargin = 0.3;
// Share of the covered span at each end whose mean level is taken as a plateau.
constexpr double kPlateauShare = 0.15;
// Outputs with less than this share of the largest weight are left out.
constexpr double kMinWeightShare = 0.2;

// Position where `level` crosses `target` between outputs k and k + 1.
double crossing(const LocalLinearProfile& p, int k, double target) {
    const double a = p.level[k], b = p.level[k + 1];
    const double t = b != a ? (target - a) / (b - a) : 0.5;
    return p.position(k) + std::clamp(t, 0.0, 1.0) * p.step;
}
}  // namespace

LsfWindow lsfWindowFor(const LocalLinearProfile& p) {
    LsfWindow w;
    const int n = p.size();
    if (n == 0) {
        return w;
    }
    // Too few points to size a window: all of them, unweighted.
    const auto everything = [&] {
        w.centre = 0.5 * (p.position(0) + p.position(n - 1));
        w.flat = 0.5 * (p.position(n - 1) - p.position(0));
        w.taper = 0.0;
        w.rise = 0.0;
        w.lo = 0;
        w.hi = n - 1;
        return w;
    };
    if (n < 4) {
        return everything();
    }
    const double top = *std::max_element(p.weight.begin(), p.weight.end());
    int lo = 0, hi = n - 1;
    while (lo < n && p.weight[lo] < kMinWeightShare * top) {
        ++lo;
    }
    while (hi > lo && p.weight[hi] < kMinWeightShare * top) {
        --hi;
    }
    if (hi - lo < 4) {
        return everything();
    }
    w.lo = lo;
    w.hi = hi;
    const int share = std::max(1, static_cast<int>((hi - lo + 1) * kPlateauShare));
    double dark = 0.0, light = 0.0;
    for (int k = 0; k < share; ++k) {
        dark += p.level[lo + k];
        light += p.level[hi - k];
    }
    dark /= share;
    light /= share;
    const double height = light - dark;
    w.height = height;
    auto norm = [&](int k) { return height != 0.0 ? (p.level[k] - dark) / height : 0.5; };
    // The 50 % crossing nearest the fitted line, then outward to 10 % and 90 %.
    int mid = -1;
    double best = 1e300;
    for (int k = lo; k < hi; ++k) {
        if ((norm(k) - 0.5) * (norm(k + 1) - 0.5) <= 0.0 && std::fabs(p.position(k)) < best) {
            best = std::fabs(p.position(k));
            mid = k;
        }
    }
    if (mid < 0) {
        mid = (lo + hi) / 2;
    }
    w.centre = crossing(p, mid, dark + 0.5 * height);
    int k10 = mid;
    while (k10 > lo && norm(k10) > 0.1) {
        --k10;
    }
    int k90 = mid + 1;
    while (k90 < hi && norm(k90) < 0.9) {
        ++k90;
    }
    const double x10 = k10 < mid ? crossing(p, k10, dark + 0.1 * height) : p.position(k10);
    const double x90 = k90 > mid + 1 ? crossing(p, k90 - 1, dark + 0.9 * height) : p.position(k90);
    w.rise = std::max(x90 - x10, 2.0 * p.step);
    w.flat = kFlatRises * w.rise + kFlatMargin;
    w.taper = kTaperRises * w.rise + kTaperMargin;
    // Keep the window where the samples are.
    const double room = std::min(w.centre - p.position(lo), p.position(hi) - w.centre);
    if (w.reach() > room && room > 0.0) {
        const double shrink = room / w.reach();
        w.flat *= shrink;
        w.taper *= shrink;
    }
    return w;
}

}  // namespace sfr
}  // namespace talonvireo
