// Magnitude of the discrete Fourier transform of the line-spread function.
#pragma once

namespace talonvireo {
namespace sfr {

// M(k) = |sum_j lsf(j) exp(i 2 pi j k / n)| for k = 0..count-1, as a direct O(n * count) sum.
// The cosines and sines come from a table of one period indexed by (j k) mod n, which equals
// the per-term sine and cosine to rounding. `count` must not exceed n.
void lineSpreadTransform(const double* lsf, int n, int count, double* magnitude);

}  // namespace sfr
}  // namespace talonvireo
