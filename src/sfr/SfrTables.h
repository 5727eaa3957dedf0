// Frequency and SFR tables of one channel.
#pragma once

#include "sfr/SfrContext.h"

namespace talonvireo {
namespace sfr {

// From the cropped upright working image and the fitted line in `ctx`: ESF, LSF, spectrum,
// derivative correction; writes column `channel` of ctx.freqTable and ctx.sfrTable (creating
// both, 2 * cols zero records, when they are empty) and sets ctx.nyquist. Returns 0, or -2
// when the spectrum's DC term is 0 (the tables are then not written).
int writeChannelTables(SfrContext& ctx, int channel);

}  // namespace sfr
}  // namespace talonvireo
