// The smallest region side whose SFR the station trusts.
#pragma once

#include <cstdio>

namespace talonvireo {
namespace station {

// Below 40 px a region holds too few rows for the edge's slant to sweep every sub-pixel phase
// evenly, and too short a line spread for its tails: the SFR still comes out, but noisy and
// biased.
constexpr int kReliableRegionSide = 40;

// Writes one warning line to `out` when the shorter side of a width x height region lies
// below kReliableRegionSide; returns whether it warned.
bool warnSmallRegion(int width, int height, std::FILE* out);

}  // namespace station
}  // namespace talonvireo
