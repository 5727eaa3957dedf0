#include "sfr/DerivativeCorrection.h"

#include <algorithm>
#include <cmath>

#include "sfr/SfrConstants.h"

namespace talonvireo {
namespace sfr {

std::vector<double> derivativeCorrection(int columns) {
    const int n = (kOversampling * columns) / 2 + 1;
    std::vector<double> correct(static_cast<size_t>(n));
    correct[0] = 1.0;
    for (int i = 1; i < n; ++i) {
        const int k = i + 1;
        const double x = kTwoPi * k / (2.0 * n + 2.0);
        correct[i] = std::min(std::fabs(x / std::sin(x)), kMaxDerivativeCorrection);
    }
    return correct;
}

}  // namespace sfr
}  // namespace talonvireo
