// One full-resolution image of the edge from the four colour planes of a mosaic.
//
// A single plane sees the edge at half the phases of the mosaic, and with a sharp edge its
// own samples place the line poorly. All four planes see the same line, so the line is
// refined on the whole mosaic once the planes' levels are brought to a common scale: each
// plane's dark and light sides, measured the same way on every plane, are mapped to 0 and 1.
#pragma once

#include <array>

#include "sfr/EdgeFrame.h"
#include "sfr/EdgeSamples.h"

namespace talonvireo {
namespace sfr {

// Mean level of a plane on each side of `frame`, between `inner` and `outer` pixels away;
// both 0 when a side has no sample there.
struct PlaneLevels {
    double dark = 0.0;
    double light = 0.0;
};
PlaneLevels planeLevels(const EdgeSamples& plane, const EdgeFrame& frame, double inner,
                        double outer);

// The mosaic (upright, `rows` x `cols`) with every plane's samples mapped from
// [dark, light] to [0, 1]. Throws NoSpectrum when a plane shows no step.
EdgeSamples balancedMosaic(const std::array<EdgeSamples, 4>& planes,
                           const std::array<PlaneLevels, 4>& levels, int rows, int cols);

}  // namespace sfr
}  // namespace talonvireo
