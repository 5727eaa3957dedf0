// Ground truth of a rendered chart, per layout, in image pixels: where every listed corner
// lies, and for every edge (in the order a locator numbers them: increasing edge index, edges
// no row names dropped) its corners, its expected centre, its angle and its true SFR.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "render/ChartDesign.h"
#include "render/ChartTransform.h"

namespace talonvireo {
namespace render {

struct CornerTruth {
    cv::Point2d position;  // image pixels
    int square = -1;
    int kind = 0;
};

struct EdgeTruth {
    int edgeIndex = 0;    // the layout's edge index
    int cornerCount = 0;  // 1 or 2
    int corner0 = 0;      // rows of the layout
    int corner1 = 0;
    int code = 0;  // from the first row naming the edge
    int square = -1;
};

struct LayoutTruth {
    std::vector<CornerTruth> corners;  // one per layout row
    std::vector<EdgeTruth> edges;
};

LayoutTruth layoutTruth(const ChartDesign& design, int layoutIndex,
                        const ChartTransform& transform);

// Expected centre of an edge: the midpoint of its two corners, or for a single-corner edge
// the point on the square's side at ringRadius image pixels from the corner, choosing the
// topmost of the corner's two sides for code 0 and the bottommost otherwise.
cv::Point2d edgeCentre(const ChartDesign& design, const LayoutTruth& truth, const EdgeTruth& edge,
                       const ChartTransform& transform, double ringRadius);

// Unit direction of the edge in the image, and its angle from the nearer pixel axis in
// degrees (0 .. 45), both taken at the expected centre.
cv::Point2d edgeDirection(const ChartDesign& design, const LayoutTruth& truth,
                          const EdgeTruth& edge, const ChartTransform& transform,
                          double ringRadius);
double edgeAngleDeg(const ChartDesign& design, const LayoutTruth& truth, const EdgeTruth& edge,
                    const ChartTransform& transform, double ringRadius);

// The chart side an edge lies on, in chart coordinates: its two end corners.
struct ChartSide {
    cv::Point2d from;
    cv::Point2d to;
};
ChartSide edgeSide(const ChartDesign& design, const LayoutTruth& truth, const EdgeTruth& edge,
                   const ChartTransform& transform, double ringRadius);

}  // namespace render
}  // namespace talonvireo
