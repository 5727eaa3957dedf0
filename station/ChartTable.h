// A chart's report as a table for people: one line per edge with its name, centre, direction,
// length, region and figures, and the state or flags of an edge without figures.
#pragma once

#include <cstdio>

#include "station/EdgeReport.h"

namespace talonvireo {
namespace station {

void printChartTable(std::FILE* out, const FrameReport& report);

}  // namespace station
}  // namespace talonvireo
