// Least-squares straight line through equally spaced samples.
#pragma once

#include "sfr/SfrContext.h"

namespace talonvireo {
namespace sfr {

// Fits y(m) = intercept + slope * m, m = 0..n-1. Samples that are all equal give a slope of
// exactly 0 (the centred moments are summed in mirrored pairs, which cancel exactly).
// Throws std::invalid_argument for n < 2.
EdgeLine fitLine(const double* y, int n);

}  // namespace sfr
}  // namespace talonvireo
