// The charts the station knows by name, with no file to hand: the description files of
// charts/ (K74T16BX, K83P09BQ, HLX6C, K31R22BX), embedded when the station is built.
#pragma once

#include <string>
#include <vector>

#include "talonvireo/ChartDescription.h"

namespace talonvireo {
namespace station {

// The built-in chart called `name` (any letter case) into `out`; false, `out` untouched, for
// any other name.
bool builtinChart(const std::string& name, ChartDescription& out);

// The built-in charts' names: K74T16BX, K83P09BQ, HLX6C, K31R22BX.
std::vector<std::string> builtinChartNames();

// A --chart value: a built-in chart's name, else the path of a chart description file.
// Failure (BadInput) listing the built-in names when it is neither; a file's own mistakes as
// readChartFile gives them. "auto" is the caller's.
ChartDescription resolveChart(const std::string& arg);

}  // namespace station
}  // namespace talonvireo
