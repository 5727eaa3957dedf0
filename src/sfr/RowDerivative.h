// Derivative along a row with a two- or three-tap kernel.
#pragma once

namespace talonvireo {
namespace sfr {

// out(x) = k[0] in(x) + k[1] in(x+1), samples past the end counting as 0; then out(0) is
// replaced by out(1) and out(n-1) by out(n-2). Throws std::invalid_argument for n < 2.
// `in` and `out` must not overlap.
void rowDerivative2(const double* in, double* out, int n, const double k[2]);

// out(x) = k[0] in(x-1) + k[1] in(x) + k[2] in(x+1) for 1 <= x <= n-2, i.e. a centred
// difference; then out(0) = out(1) and out(n-1) = out(n-2). Throws for n < 2.
void rowDerivative3(const double* in, double* out, int n, const double k[3]);

}  // namespace sfr
}  // namespace talonvireo
