// The line spread's tails, smoothed more the farther they lie from the edge.
//
// A lens's line spread does not end a few pixels from the edge: diffraction leaves tails that
// fall off only as the inverse square of the distance, and defocus and stray light add wider
// skirts. Cutting them off drops their share of the light, and every frequency above the
// lowest then reads high by that share. Kept at full resolution, though, the far line spread
// is mostly noise, and over a whole region it would add several times the noise of the edge.
//
// Far from the edge the true line spread varies slowly: its detail lies at low frequencies.
// So beyond the core the line spread is gathered into blobs, each holding exactly the light
// between two levels of the edge spread and spread as a Gaussian whose width grows in
// proportion to the distance beyond the core; the levels are means over windows as wide. The
// light, and so the normalisation, is kept to the region's edge; the noise far out is kept
// away from every frequency but the lowest.
#pragma once

#include <vector>

#include "sfr/LocalLinearProfile.h"
#include "sfr/SampleBins.h"

namespace talonvireo {
namespace sfr {

struct TailBlob {
    double position = 0.0;  // pixels from the fitted line
    double weight = 0.0;    // light, in slope samples (the sum of those it replaces)
    double width = 0.0;     // standard deviation of its Gaussian spread, pixels
};

// Every sample out to the region's reach, as running sums over fine bins (binByDistance over
// the whole region, which must outlive it): mean levels over any window and the scatter about
// local lines.
class FarField {
public:
    explicit FarField(const SampleBins& bins);

    // The span the samples cover: outward from the line, every pixel of distance holding at
    // least a fifth of the fullest pixel's samples.
    double first() const { return first_; }
    double last() const { return last_; }

    // Mean level of the samples in [from, to] within the span; NaN when it holds none.
    double meanLevel(double from, double to) const;

    // Root-mean-square scatter, in levels, of the samples about a line fitted to each pixel of
    // distance, over the span farther than `reach` from `centre`; 0 when there are none.
    double scatterBeyond(double centre, double reach) const;

private:
    const SampleBins& bins_;
    std::vector<double> count_;  // running sums: count_[k] over bins 0 .. k - 1
    std::vector<double> level_;
    double first_ = 0.0;
    double last_ = 0.0;
};

// Blobs from `start` (where the core ends, between outputs of `core`) outward in `direction`
// (+1 or -1) to `end`, whose Gaussian width grows by `widening` pixels per pixel beyond
// `coreEdge`. Levels come from `core` (outputs lo..hi) within its reach, from `far` beyond.
std::vector<TailBlob> lineSpreadTail(const LocalLinearProfile& core, int lo, int hi,
                                     const FarField& far, double start, double end, int direction,
                                     double coreEdge, double widening);

}  // namespace sfr
}  // namespace talonvireo
