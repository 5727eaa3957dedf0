// The narrowest regression kernel the sample phases allow.
//
// Along the edge normal the samples of a slanted edge fall on a lattice: x on a grid of
// `pitch` pixels, each row at its own phase. Their density of distances carries components
// only at multiples of 1 / (pitch cos a), of relative size given by the rows' (weighted)
// phases. When the slope is near a simple fraction p/q the phases bunch into q clusters and
// those components stay large; a kernel narrower than the cluster spacing would see the
// bunching as structure of the edge. The kernel chosen is the narrowest whose transfer holds
// every component below a set residual, so it widens exactly where the phases bunch.
#pragma once

#include "sfr/PhaseWeights.h"

namespace talonvireo {
namespace sfr {

// Smallest kernel sigma (pixels, from a ladder) for which every phase-density component,
// times the kernel's transfer at its frequency, stays below `residual`.
double kernelSigmaFor(const PhaseWeights& weights, double slope, int pitch, double residual);

}  // namespace sfr
}  // namespace talonvireo
