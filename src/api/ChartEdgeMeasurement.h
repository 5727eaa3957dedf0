// One edge of a chart measured on its region: the SFR by the chosen method, the plateaus'
// levels and noise about the found edge line, the clipped share of its transition zone and,
// for a mosaic, each raw plane.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "api/ChartImage.h"
#include "api/EdgeRegionFit.h"
#include "talonvireo/ChartMeasurement.h"

namespace talonvireo {
namespace api {

// Where to measure: a region fitted to the edge about `centre` (regionSide 0), or a square
// of regionSide pixels round it, as the members cut them.
struct EdgeMeasurementRequest {
    FoundEdge edge;
    cv::Point2d centre;
    int regionSide = 0;
};

// Measures into `out` (its state, region, figures, quality and planes); `others` are the
// edges the fitted region must keep clear of.
void measureChartEdge(const ChartImage& image, const EdgeMeasurementRequest& request,
                      const std::vector<EdgeSegment>& others, const ChartMeasureOptions& options,
                      ChartEdgeReport& out);

// The found edges near `edge` whose region must keep clear of them: every other side within
// reach of it (its own quad's included).
std::vector<EdgeSegment> edgesNear(const std::vector<FoundEdge>& found, std::size_t edge,
                                   double reach);

}  // namespace api
}  // namespace talonvireo
