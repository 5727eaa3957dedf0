// The line spread's tails, smoothed more the farther they lie from the edge.
//
// A lens's line spread does not end a few pixels from the edge: diffraction leaves tails that
// fall off only as the inverse square of the distance, and defocus and stray light add wider
// skirts. Cutting them off drops their share of the light, and every frequency above the
// lowest then reads high by that share. Kept at full resolution, though, the far line spread
// is mostly noise, and over a whole region it would add several times the noise of the edge.
//
// Far from the edge the true line spread varies slowly: its detail lies at low frequencies.
// So beyond the core the regression's slope samples are gathered into blobs, each holding
// exactly the light of the samples it replaces and spread as a Gaussian whose width grows in
// proportion to the distance beyond the core. The light, and so the normalisation, is kept to
// the region's edge; the noise far out is kept away from every frequency but the lowest.
#pragma once

#include <vector>

#include "sfr/EdgeFrame.h"
#include "sfr/EdgeSamples.h"
#include "sfr/LocalLinearProfile.h"

namespace talonvireo {
namespace sfr {

struct TailBlob {
    double position = 0.0;  // pixels from the fitted line
    double weight = 0.0;    // the sum of the slope samples it replaces
    double width = 0.0;     // standard deviation of its Gaussian spread, pixels
};

// Blobs for the profile's outputs from `from` outward in `direction` (+1 or -1) up to and
// including `to`, whose Gaussian width grows by `widening` pixels per pixel beyond `coreEdge`
// (the distance from the fitted line where the core ends).
std::vector<TailBlob> lineSpreadTail(const LocalLinearProfile& profile, int from, int to,
                                     int direction, double coreEdge, double widening);

// The root-mean-square scatter, in levels, of the samples about the profile's level at their
// distance, over the samples farther than `reach` from `centre` within outputs lo..hi.
// 0 when there are none.
double scatterBeyond(const EdgeSamples& samples, const EdgeFrame& frame,
                     const LocalLinearProfile& profile, double centre, double reach, int lo,
                     int hi);

}  // namespace sfr
}  // namespace talonvireo
