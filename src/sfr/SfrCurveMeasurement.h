// The precise curve of a region whose classic pass is done: what measureSfrCurve's precise
// method returns for a grey or BGR region, started from the line that pass fitted. A caller
// that has just run the classic pass on the same region (a member measuring its slots) gets
// the precise figures without running it twice.
#pragma once

#include "sfr/SfrContext.h"
#include "talonvireo/SfrCurve.h"

namespace talonvireo {
namespace sfr {

// `ctx` after runSfrCore returned kSfrOk on the region (its spectrum may or may not have been
// wanted: the precise method reads only the lines and profiles). Returns 0 and fills `curve`,
// or measureSfrCurve's status for a region the precise method refuses; never throws.
int preciseCurveFromClassic(const SfrContext& ctx, const SfrCurveOptions& options, SfrCurve& curve);

}  // namespace sfr
}  // namespace talonvireo
