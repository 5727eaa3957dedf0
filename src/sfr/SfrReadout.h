// Figures read off the frequency and SFR tables.
#pragma once

#include "sfr/SfrContext.h"

namespace talonvireo {
namespace sfr {

// SFR at f = 0.5 / divisor cycles per pixel, interpolated linearly between the entry before
// and the first entry whose frequency is strictly above f. Returns -1.0 for a channel outside
// the region. When no entry lies above f (f beyond the table) the first entry is taken as
// "above" and the missing entry before it reads as zeros, which gives +infinity: nothing is
// read outside the table.
double sfrAtDivisor(const SfrContext& ctx, int channel, double divisor);

// Frequency at which the SFR first falls strictly below 0.5, interpolated linearly; when it
// never does, the line through the first two entries is extended to 0.5. Returns -1.0 for a
// channel outside the region.
double mtf50(const SfrContext& ctx, int channel);

}  // namespace sfr
}  // namespace talonvireo
