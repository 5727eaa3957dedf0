// The line spread's extent, sized from the edge's own 10-90 % rise.
//
// A flat part and a taper beyond it, both scaled to the measured blur and kept within the
// span the samples cover. The line's refinement looks at the samples within their reach; the
// spectrum keeps the core at full resolution and the tails beyond it, out to the span the
// samples cover, in widening blobs (LineSpreadTails.h).
#pragma once

#include "sfr/LocalLinearProfile.h"

namespace talonvireo {
namespace sfr {

struct LsfWindow {
    double centre = 0.0;  // the edge's 50 % point, pixels from the fitted line
    double flat = 0.0;    // half-width of the flat part
    double taper = 0.0;   // length of each taper
    double rise = 0.0;    // the 10-90 % rise it was sized from
    double height = 0.0;  // light plateau less dark plateau, in levels
    int lo = 0;           // the outputs with enough samples behind them: lo..hi
    int hi = -1;

    double reach() const { return flat + taper; }
};

// Sizes the window from the profile's levels. `valid` outputs are those with enough weight.
LsfWindow lsfWindowFor(const LocalLinearProfile& profile);

}  // namespace sfr
}  // namespace talonvireo
