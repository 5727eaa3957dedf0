// Weights that even out how densely the rows' sample phases cover the edge.
//
// Each row of a slanted edge samples the edge at one phase (its crossing, modulo the sample
// pitch). Over a region that does not hold a whole number of phase cycles, some phases are
// seen by twice as many rows as others, and a sharp edge profile then leaks that uneven
// density into the regression whatever its kernel. Giving each row a weight equal to the
// share of the phase circle it stands for (half the gap to each neighbour) makes the weighted
// phases even. Rows whose phases bunch (slopes near a simple fraction) are pooled first and
// share their cluster's cell equally, so no row is given undue weight inside a cluster.
#pragma once

#include <vector>

#include "sfr/EdgeFrame.h"
#include "sfr/EdgeSamples.h"

namespace talonvireo {
namespace sfr {

// Per sample row: its phase (0..1, in units of the pitch) and its weight (mean 1).
struct PhaseWeights {
    std::vector<double> rowPhase;
    std::vector<double> rowWeight;
};

PhaseWeights phaseWeights(const EdgeSamples& samples, const EdgeFrame& frame);

// |sum of w exp(2 pi i k phase)| / sum of w over the rows: the k-th component of the weighted
// phase density (0 when even, 1 when every row has one phase).
double phaseComponent(const PhaseWeights& weights, int k);

}  // namespace sfr
}  // namespace talonvireo
