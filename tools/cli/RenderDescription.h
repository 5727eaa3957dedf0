// render --chart: any chart description (a built-in chart, a .toml file, or "grid", the 9 x 12
// grid of turned squares) drawn through lens distortion with blur growing over the field,
// illumination fall-off, noise and, when asked, clutter; written with its truth per edge.
#pragma once

#include "OptionValues.h"

namespace talonvireo {
namespace cli {

// The options render takes only with --chart (--k1, --sigma-corner, --corner-light,
// --clutter).
void declareDescriptionOptions(OptionValues& o);

// Renders the frame --chart names and writes PREFIX.raw, PREFIX.png and PREFIX.json.
int renderDescriptionFrame(const OptionValues& o);

}  // namespace cli
}  // namespace talonvireo
