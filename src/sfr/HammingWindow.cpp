#include "sfr/HammingWindow.h"

#include <algorithm>
#include <cmath>

#include "sfr/SfrConstants.h"

namespace talonvireo {
namespace sfr {

void hammingWindow(int n, double mid, double* out) {
    const double wid = std::max(mid - 1.0, n - mid);
    // The second centroid pass needs one window per row, so the cosine runs as a rotation
    // by a fixed step, re-seeded exactly every few samples to keep rounding below 1e-14.
    constexpr int kReseed = 32;
    const double stepCos = std::cos(kPi / wid);
    const double stepSin = std::sin(kPi / wid);
    for (int block = 0; block < n; block += kReseed) {
        const double phase = kPi * ((block + 1) - mid) / wid;
        double c = std::cos(phase);
        double s = std::sin(phase);
        const int end = std::min(n, block + kReseed);
        for (int i = block; i < end; ++i) {
            out[i] = 0.54 + 0.46 * c;
            const double next = c * stepCos - s * stepSin;
            s = s * stepCos + c * stepSin;
            c = next;
        }
    }
}

std::vector<double> hammingWindow(int n, double mid) {
    std::vector<double> w(static_cast<size_t>(std::max(n, 0)));
    hammingWindow(n, mid, w.data());
    return w;
}

}  // namespace sfr
}  // namespace talonvireo
