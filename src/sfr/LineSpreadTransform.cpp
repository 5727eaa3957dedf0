#include "sfr/LineSpreadTransform.h"

#include <cmath>
#include <stdexcept>
#include <vector>

#include "sfr/SfrConstants.h"

namespace talonvireo {
namespace sfr {

namespace {
// Four frequencies per sweep over the samples: eight independent sums keep the FP adders
// busy, and each sum still runs over j in order, exactly like the plain direct sum.
constexpr int kLanes = 4;
}  // namespace

void lineSpreadTransform(const double* lsf, int n, int count, double* magnitude) {
    if (n <= 0 || count < 0 || count > n) {
        throw std::invalid_argument("spectrum size");
    }
    std::vector<double> cosTable(static_cast<size_t>(n));
    std::vector<double> sinTable(static_cast<size_t>(n));
    for (int r = 0; r < n; ++r) {
        const double angle = r * kTwoPi / n;
        cosTable[r] = std::cos(angle);
        sinTable[r] = std::sin(angle);
    }
    const double* cosT = cosTable.data();
    const double* sinT = sinTable.data();

    int k = 0;
    for (; k + kLanes <= count; k += kLanes) {
        double re[kLanes] = {};
        double im[kLanes] = {};
        int idx[kLanes] = {};
        for (int j = 0; j < n; ++j) {
            const double v = lsf[j];
            for (int l = 0; l < kLanes; ++l) {
                re[l] += v * cosT[idx[l]];
                im[l] += v * sinT[idx[l]];
                idx[l] += k + l;
                if (idx[l] >= n) {
                    idx[l] -= n;
                }
            }
        }
        for (int l = 0; l < kLanes; ++l) {
            magnitude[k + l] = std::sqrt(re[l] * re[l] + im[l] * im[l]);
        }
    }
    for (; k < count; ++k) {
        double re = 0.0;
        double im = 0.0;
        int idx = 0;
        for (int j = 0; j < n; ++j) {
            re += lsf[j] * cosT[idx];
            im += lsf[j] * sinT[idx];
            idx += k;
            if (idx >= n) {
                idx -= n;
            }
        }
        magnitude[k] = std::sqrt(re * re + im * im);
    }
}

}  // namespace sfr
}  // namespace talonvireo
