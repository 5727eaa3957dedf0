// The slanted-edge SFR core: every channel of a region, one after the other.
#pragma once

#include "sfr/SfrContext.h"

namespace talonvireo {
namespace sfr {

// Splits ctx.region into channels and, for each, locates the edge and writes its frequency
// and SFR tables. The first refused channel ends the run. Returns 0 (also for a region with
// no channel) or the refusal (-2, -3, -4); stores it in ctx.status. Errors of OpenCV or of
// the input's shape are thrown.
int runSfrCore(SfrContext& ctx);

}  // namespace sfr
}  // namespace talonvireo
