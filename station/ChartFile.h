// Chart description files: a chart's shapes, lone edges, marks, slots and zones written by hand
// in TOML (the README's "Chart description files"), read into a ChartDescription. Every mistake
// is refused with the file, the line and the key: a typo must never drop a slot silently.
#pragma once

#include <string>

#include "talonvireo/ChartDescription.h"

namespace talonvireo {
namespace station {

// The description `text` holds; `sourceName` (a path, or a built-in chart's name) heads every
// message: "chart charts/x.toml:14: shape[3].corners: expected 4 [x, y] points". Corners
// given counter-clockwise are put clockwise (y down), the slots on that shape following their
// sides. Throws Failure (BadInput) on any problem.
ChartDescription parseChartDescription(const std::string& text, const std::string& sourceName);

// The file at `path`, parsed as above; Failure (UnreadableFile) when it cannot be read.
ChartDescription readChartFile(const std::string& path);

}  // namespace station
}  // namespace talonvireo
