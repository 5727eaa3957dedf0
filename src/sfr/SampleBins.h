// Fine bins of scattered edge samples, keeping the exact moments of their positions.
//
// The local regression weighs samples by their distance from each output point. Evaluating
// the weight once per fine bin instead of once per sample makes it cheap, and because each
// bin keeps the sums of its samples' offsets from its centre (and their squares and
// products with the level), the regression still sees every sample where it is.
#pragma once

#include <vector>

#include "sfr/EdgeFrame.h"
#include "sfr/EdgeSamples.h"

namespace talonvireo {
namespace sfr {

struct SampleBins {
    double width = 0.0;  // pixels per bin; bin k is centred at (k - centre) * width
    int centre = 0;
    std::vector<double> count;           // summed sample weights
    std::vector<double> sumOffset;       // offsets from the bin centre
    std::vector<double> sumOffset2;      // their squares
    std::vector<double> sumLevel;        // levels
    std::vector<double> sumOffsetLevel;  // offset times level
    std::vector<double> sumLevel2;       // squared levels

    int size() const { return static_cast<int>(count.size()); }
    double position(int k) const { return (k - centre) * width; }
};

// Bins every sample whose distance from `frame` lies within +-range, each counted with the
// weight of its row (all sums are weighted). Throws std::invalid_argument for a non-positive
// width or range or a weight list of another length than the rows.
SampleBins binByDistance(const EdgeSamples& samples, const std::vector<double>& rowWeight,
                         const EdgeFrame& frame, double range, double width);

// Columns j of row i whose distance from `frame` lies within +-range: [first, last).
struct ColumnSpan {
    int first = 0;
    int last = 0;
};
ColumnSpan columnsWithin(const EdgeSamples& samples, const EdgeFrame& frame, int i, double range);
// The same from a row's distance at column 0 and its step per column, out of `cols` columns.
ColumnSpan columnsWithin(double start, double step, int cols, double range);

}  // namespace sfr
}  // namespace talonvireo
