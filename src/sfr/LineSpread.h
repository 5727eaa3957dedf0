// Line-spread function from the oversampled edge profile.
#pragma once

#include <vector>

namespace talonvireo {
namespace sfr {

// Differentiates the ESF with the three-tap kernel, moves its centroid to position
// (N + 1) / 2 (one-based, integer division) and applies a Hamming window centred on the
// profile. Samples shifted in from outside the profile are 0.
std::vector<double> centredLineSpread(const std::vector<double>& esf, const double kernel[3]);

}  // namespace sfr
}  // namespace talonvireo
