// Edge profile by local linear regression on scattered samples.
//
// At each output point a straight line is fitted to the samples around it, weighted by a
// Gaussian of their distance. Its value estimates the edge spread function and its slope the
// line spread function. With samples spread evenly, that slope is exactly the line spread
// convolved with the Gaussian (the weight's derivative is the weight times the offset), so
// the whole construction has the known transfer exp(-2 pi^2 sigma^2 f^2) and no derivative
// filter of its own. Uneven spread cancels to first order because each point fits its own
// line instead of averaging.
#pragma once

#include <vector>

#include "sfr/SampleBins.h"

namespace talonvireo {
namespace sfr {

struct LocalLinearProfile {
    double sigma = 0.0;          // the Gaussian weight's standard deviation, pixels
    double step = 0.0;           // pixels between output points
    int first = 0;               // output k sits at (first + k) * step
    std::vector<double> level;   // fitted value: the smoothed edge spread
    std::vector<double> slope;   // fitted slope: the smoothed line spread
    std::vector<double> weight;  // total weight of the samples behind each point

    int size() const { return static_cast<int>(level.size()); }
    double position(int k) const { return (first + k) * step; }
    // The level at distance x, interpolated between outputs and held within outputs lo..hi.
    double levelAt(double x, int lo, int hi) const;
};

// Fits at every `binsPerStep`-th bin centre over the bins' whole range. Points whose samples
// cannot fix a line (too few, or all at one distance) copy their neighbour and get weight 0.
LocalLinearProfile localLinearProfile(const SampleBins& bins, double sigma, int binsPerStep);

// The kernel's transfer at f cycles per pixel.
double gaussianTransfer(double sigma, double f);

}  // namespace sfr
}  // namespace talonvireo
