#include "render/ChartTruth.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "render/Pi.h"

namespace talonvireo {
namespace render {

namespace {

// Chart point at ringRadius image pixels from the corner along a side (bisection on the
// distance, which grows monotonically for any mild transform).
cv::Point2d alongSide(const cv::Matx33d& h, cv::Point2d corner, cv::Point2d dir,
                      double ringRadius) {
    const cv::Point2d origin = applyHomography(h, corner);
    double lo = 0.0, hi = 4.0 * ringRadius + 10.0;
    for (int i = 0; i < 100; ++i) {
        const double mid = 0.5 * (lo + hi);
        const cv::Point2d d = applyHomography(h, corner + mid * dir) - origin;
        (std::hypot(d.x, d.y) < ringRadius ? lo : hi) = mid;
    }
    return corner + 0.5 * (lo + hi) * dir;
}

// For a single-corner edge: the chosen side's direction (chart) and the ring point (chart).
std::pair<cv::Point2d, cv::Point2d> ringSide(const ChartDesign& design, const LayoutTruth& truth,
                                             const EdgeTruth& edge, const ChartTransform& transform,
                                             double ringRadius) {
    const cv::Matx33d h = transform.homography();
    const ChartSquare& s = design.squares[edge.square];
    const int kind = truth.corners[edge.corner0].kind;
    const cv::Point2d corner = s.corner(kind);
    const auto sides = s.sidesFrom(kind);
    const cv::Point2d a = alongSide(h, corner, sides[0], ringRadius);
    const cv::Point2d b = alongSide(h, corner, sides[1], ringRadius);
    const bool aIsTop = applyHomography(h, a).y < applyHomography(h, b).y;
    const bool takeA = edge.code == 0 ? aIsTop : !aIsTop;
    return takeA ? std::make_pair(sides[0], a) : std::make_pair(sides[1], b);
}
}  // namespace

LayoutTruth layoutTruth(const ChartDesign& design, int layoutIndex,
                        const ChartTransform& transform) {
    const ChartLayout& layout = design.layouts.at(layoutIndex);
    const cv::Matx33d h = transform.homography();
    LayoutTruth truth;
    std::map<int, EdgeTruth> edges;
    const int count = static_cast<int>(layout.rows.size());
    for (int i = 0; i < count; ++i) {
        const ChartRow& row = layout.rows[i];
        const int sq = layout.squareOfRow[i];
        truth.corners.push_back(
            {applyHomography(h, design.squares[sq].corner(row.kind)), sq, row.kind});
        if (row.edge < 0 || row.edge >= count) {
            continue;
        }
        EdgeTruth& e = edges[row.edge];
        if (e.cornerCount == 0) {
            e.edgeIndex = row.edge;
            e.code = row.code;
            e.square = sq;
            e.corner0 = i;
            e.cornerCount = 1;
        } else if (e.cornerCount == 1) {
            e.corner1 = i;
            e.cornerCount = 2;
        }
    }
    for (const auto& [index, e] : edges) {
        truth.edges.push_back(e);
    }
    return truth;
}

cv::Point2d edgeCentre(const ChartDesign& design, const LayoutTruth& truth, const EdgeTruth& edge,
                       const ChartTransform& transform, double ringRadius) {
    if (edge.cornerCount == 2) {
        return 0.5 * (truth.corners[edge.corner0].position + truth.corners[edge.corner1].position);
    }
    return applyHomography(transform.homography(),
                           ringSide(design, truth, edge, transform, ringRadius).second);
}

ChartSide edgeSide(const ChartDesign& design, const LayoutTruth& truth, const EdgeTruth& edge,
                   const ChartTransform& transform, double ringRadius) {
    const ChartSquare& s = design.squares[edge.square];
    const int kind = truth.corners[edge.corner0].kind;
    const cv::Point2d corner = s.corner(kind);
    cv::Point2d dir;
    if (edge.cornerCount == 2) {
        const int kind1 = truth.corners[edge.corner1].kind;
        dir = s.corner(kind1) - corner;
        dir *= 1.0 / std::hypot(dir.x, dir.y);
    } else {
        dir = ringSide(design, truth, edge, transform, ringRadius).first;
    }
    return {corner, corner + s.side * dir};
}

cv::Point2d edgeDirection(const ChartDesign& design, const LayoutTruth& truth,
                          const EdgeTruth& edge, const ChartTransform& transform,
                          double ringRadius) {
    const ChartSide side = edgeSide(design, truth, edge, transform, ringRadius);
    const cv::Matx33d h = transform.homography();
    const cv::Point2d d = applyHomography(h, side.to) - applyHomography(h, side.from);
    return d * (1.0 / std::hypot(d.x, d.y));
}

double edgeAngleDeg(const ChartDesign& design, const LayoutTruth& truth, const EdgeTruth& edge,
                    const ChartTransform& transform, double ringRadius) {
    const cv::Point2d d = edgeDirection(design, truth, edge, transform, ringRadius);
    const double a = std::atan2(std::abs(d.y), std::abs(d.x)) * 180.0 / kPi;  // 0 .. 90
    return std::min(a, 90.0 - a);
}

}  // namespace render
}  // namespace talonvireo
