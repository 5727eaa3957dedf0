// render --chart: any chart description (a built-in chart, a .toml file, or "grid", the 9 x 12
// grid of turned squares) drawn through lens distortion with blur growing over the field,
// illumination fall-off, noise and, when asked, clutter and defocus (one lens position or a
// through-focus stack); written with its truth per edge.
#pragma once

#include "OptionValues.h"

namespace talonvireo {
namespace cli {

// The options render takes only with --chart (--k1, --sigma-corner, --corner-light,
// --clutter, and the focus model's --focus-z, --focus-stack and the surface's options).
void declareDescriptionOptions(OptionValues& o);

// Renders the frame --chart names and writes PREFIX.raw, PREFIX.png and PREFIX.json; with
// --focus-stack PREFIX-00.raw ... instead, listed in PREFIX.csv.
int renderDescriptionFrame(const OptionValues& o);

}  // namespace cli
}  // namespace talonvireo
