// Measuring the slots of a chart description: the description registered to the found
// quadrilaterals, each slot's point placed on its found side and measured there.
#pragma once

#include <vector>

#include "api/ChartImage.h"
#include "detect/Quad.h"
#include "talonvireo/ChartMeasurement.h"

namespace talonvireo {
namespace api {

// Fills report.edges (one per slot, in slot order) and report.registration; `found` holds
// report.found's sides, quad by quad (four per quad). Returns 0, or -2 when the description
// does not register to the frame (every slot then not found).
int measureDescribedChart(const ChartImage& image, const ChartDescription& description,
                          const std::vector<detect::Quad>& quads,
                          const ChartMeasureOptions& options, ChartReport& report);

// The slots of a description: its own, or every side of every shape then every lone edge.
std::vector<ChartSlot> slotsOf(const ChartDescription& description);

// The zone holding an edge at `field` (0 the frame centre, 1 its corners); "" for none.
std::string zoneAt(const ChartDescription& description, double field);

}  // namespace api
}  // namespace talonvireo
