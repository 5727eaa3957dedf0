#include "sfr/LineFit.h"

#include <stdexcept>

namespace talonvireo {
namespace sfr {

EdgeLine fitLine(const double* y, int n) {
    if (n < 2) {
        throw std::invalid_argument("line fit needs at least two samples");
    }
    double sumM = 0.0;
    double sumY = 0.0;
    for (int m = 0; m < n; ++m) {
        sumM += m;
        sumY += y[m];
    }
    const double meanM = sumM / n;  // (n-1)/2, exact
    // m - meanM is exact and mirrored about the middle, so pairing m with n-1-m makes a
    // perfectly aligned edge (equal samples) cancel to exactly 0 instead of rounding noise.
    double moment = 0.0;
    double spread = 0.0;
    for (int m = 0; m < n / 2; ++m) {
        const double d = m - meanM;
        moment += d * (y[m] - y[n - 1 - m]);
        spread += 2.0 * d * d;
    }
    EdgeLine line;
    line.slope = moment / spread;
    line.intercept = (sumY - line.slope * sumM) / n;
    return line;
}

}  // namespace sfr
}  // namespace talonvireo
