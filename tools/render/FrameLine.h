// The image of a straight chart line in the frame, and the signed frame distance of a pixel
// from it.
//
// A homography keeps lines straight, so in undistorted pixels u the line is n . u = c; only the
// radial distortion bends its image. With f(p) = n . u(p) - c:
//   first order  d0 = f / |grad f|, grad f = (du/dp)^T n: exact without distortion;
//   refined      one Newton step from the foot estimate q = p - d0 g (g the unit gradient)
//                onto the image: d = d0 + f(q) / |grad f(q)|.
// Measured at a frame corner of a 4000 x 3000 frame under 10 % barrel distortion (the worst
// case here): the first-order distance errs by about 5e-5 d^2 px (0.011 px at 15 px from the
// side; DistortionBounds' bend times d^2 bounds it), the refined one by about 2e-9 |d|^3 px
// (4e-7 px at 6 px, 7e-6 px at 15 px). The image there curves with a radius above 10^4 px (a
// 190 px side bows 0.34 px), so a pixel's nodes, within 0.71 px of its centre, sit on the
// linearisation d + g . offset to about 0.71^2 / (2 R), below 3e-5 px.
#pragma once

#include "render/Undistortion.h"
#include "talonvireo/ChartRegistration.h"

namespace talonvireo {
namespace render {

struct FrameLine {
    double nx = 0.0;  // unit normal in undistorted pixels, toward the positive side
    double ny = 1.0;
    double c = 0.0;

    double undistortedDistance(const UndistortedPoint& u) const { return nx * u.x + ny * u.y - c; }
};

// The line through chart points a and b, positive on the side of chart point `positive`.
// Throws std::invalid_argument when a and b are one point in the frame.
FrameLine frameLine(const ChartRegistration& placement, ChartPoint a, ChartPoint b,
                    ChartPoint positive);

// A signed frame distance and the unit frame normal (toward the positive side) there.
struct FrameDistance {
    double d = 0.0;
    double nx = 0.0;
    double ny = 0.0;
};

// First order, at the pixel whose undistorted point is u.
FrameDistance firstOrderDistance(const FrameLine& line, const UndistortedPoint& u);

// Refined by one Newton step onto the image, from the first-order distance at (px, py).
FrameDistance refinedDistance(const FrameLine& line, const ChartRegistration& placement, double px,
                              double py, const FrameDistance& first);

}  // namespace render
}  // namespace talonvireo
