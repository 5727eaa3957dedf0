#include "sfr/LineSpread.h"

#include <cmath>

#include "sfr/HammingWindow.h"
#include "sfr/RowCentroid.h"
#include "sfr/RowDerivative.h"

namespace talonvireo {
namespace sfr {

std::vector<double> centredLineSpread(const std::vector<double>& esf, const double kernel[3]) {
    const int n = static_cast<int>(esf.size());
    std::vector<double> lsf(esf.size());
    rowDerivative3(esf.data(), lsf.data(), n, kernel);

    // Centroid (one-based) truncated toward zero, then the shift that moves it to the middle.
    // Any shift of n or more empties the profile, so it is limited there before the integer
    // conversion.
    const double centre = std::trunc(rowCentroid(lsf.data(), n));
    const int middle = (n + 1) / 2;
    const double shiftReal = std::fmin(std::fmax(centre - middle, -n), n);
    const int shift = static_cast<int>(shiftReal);

    std::vector<double> centred(esf.size(), 0.0);
    for (int i = 0; i < n; ++i) {
        const int from = i + shift;
        if (from >= 0 && from < n) {
            centred[i] = lsf[from];
        }
    }
    const std::vector<double> window = hammingWindow(n, (n + 1) * 0.5);
    for (int i = 0; i < n; ++i) {
        centred[i] *= window[i];
    }
    return centred;
}

}  // namespace sfr
}  // namespace talonvireo
