// Hamming window centred at an arbitrary (real) position.
#pragma once

#include <vector>

namespace talonvireo {
namespace sfr {

// w(i) = 0.54 + 0.46 cos(pi (i - mid) / wid) for one-based i = 1..n, with
// wid = max(mid - 1, n - mid), so the window reaches 0.08 at the farther end. Written to
// out[0..n-1]. Agrees with the direct cosine to within 1e-14.
void hammingWindow(int n, double mid, double* out);

std::vector<double> hammingWindow(int n, double mid);

}  // namespace sfr
}  // namespace talonvireo
