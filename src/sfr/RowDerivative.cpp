#include "sfr/RowDerivative.h"

#include <stdexcept>

namespace talonvireo {
namespace sfr {

namespace {
void requireTwoSamples(int n) {
    if (n < 2) {
        throw std::invalid_argument("row derivative needs at least two samples");
    }
}

// The end samples get no full stencil; they repeat their neighbours.
void copyEnds(double* out, int n) {
    out[0] = out[1];
    out[n - 1] = out[n - 2];
}
}  // namespace

void rowDerivative2(const double* in, double* out, int n, const double k[2]) {
    requireTwoSamples(n);
    for (int x = 0; x + 1 < n; ++x) {
        out[x] = k[0] * in[x] + k[1] * in[x + 1];
    }
    copyEnds(out, n);
}

void rowDerivative3(const double* in, double* out, int n, const double k[3]) {
    requireTwoSamples(n);
    out[0] = 0.0;
    out[n - 1] = 0.0;
    for (int x = 1; x + 1 < n; ++x) {
        out[x] = k[0] * in[x - 1] + k[1] * in[x] + k[2] * in[x + 1];
    }
    copyEnds(out, n);
}

}  // namespace sfr
}  // namespace talonvireo
