// One dark square of a synthetic chart, in chart coordinates (full-resolution pixels of the
// nominal chart position; integer coordinates are pixel centres).
#pragma once

#include <array>
#include <cmath>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace render {

// Corner roles, numbered like the layouts' corner kinds: the kind names the quadrant of the
// light side, so kind 0 is a square's top-left corner (square below and to the right).
enum CornerRole { TopLeft = 0, BottomLeft = 1, TopRight = 2, BottomRight = 3 };

struct ChartSquare {
    double cx = 0.0;  // centre
    double cy = 0.0;
    double side = 200.0;
    double angleRad = 0.0;  // turn of the square's own axes; positive turns x toward +y

    // The square's own unit axes: u along its top edge (left to right), v down its left edge.
    cv::Point2d axisU() const { return {std::cos(angleRad), std::sin(angleRad)}; }
    cv::Point2d axisV() const { return {-std::sin(angleRad), std::cos(angleRad)}; }

    // Signs of a corner's u and v offsets from the centre.
    static int signU(int role) { return role == TopRight || role == BottomRight ? 1 : -1; }
    static int signV(int role) { return role == BottomLeft || role == BottomRight ? 1 : -1; }

    cv::Point2d corner(int role) const {
        const double h = 0.5 * side;
        return cv::Point2d(cx, cy) + signU(role) * h * axisU() + signV(role) * h * axisV();
    }

    // Corners in drawing order (top-left, top-right, bottom-right, bottom-left).
    std::array<cv::Point2d, 4> outline() const {
        return {corner(TopLeft), corner(TopRight), corner(BottomRight), corner(BottomLeft)};
    }

    // Unit directions of the two sides that leave a corner: along u, then along v.
    std::array<cv::Point2d, 2> sidesFrom(int role) const {
        return {-signU(role) * axisU(), -signV(role) * axisV()};
    }

    // The square with its corner of the given role at p.
    static ChartSquare withCorner(cv::Point2d p, int role, double side, double angleRad) {
        ChartSquare s{0.0, 0.0, side, angleRad};
        const cv::Point2d offset = p - s.corner(role);
        s.cx = offset.x;
        s.cy = offset.y;
        return s;
    }
};

}  // namespace render
}  // namespace talonvireo
