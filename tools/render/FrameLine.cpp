#include "render/FrameLine.h"

#include <cmath>
#include <stdexcept>

namespace talonvireo {
namespace render {

FrameLine frameLine(const ChartRegistration& placement, ChartPoint a, ChartPoint b,
                    ChartPoint positive) {
    double wa = 0.0, wb = 0.0, wp = 0.0;
    const ChartPoint ua = chartToUndistorted(placement, a, wa);
    const ChartPoint ub = chartToUndistorted(placement, b, wb);
    const ChartPoint up = chartToUndistorted(placement, positive, wp);
    const double tx = ub.x - ua.x, ty = ub.y - ua.y;
    const double length = std::hypot(tx, ty);
    if (!(length > 1e-12) || !std::isfinite(length)) {
        throw std::invalid_argument("a side's ends meet in the frame");
    }
    FrameLine line{-ty / length, tx / length, 0.0};
    line.c = line.nx * ua.x + line.ny * ua.y;
    if (line.nx * up.x + line.ny * up.y - line.c < 0.0) {
        line = {-line.nx, -line.ny, -line.c};
    }
    return line;
}

FrameDistance firstOrderDistance(const FrameLine& line, const UndistortedPoint& u) {
    const double f = line.undistortedDistance(u);
    const double gx = u.dxx * line.nx + u.dxy * line.ny;
    const double gy = u.dxy * line.nx + u.dyy * line.ny;
    const double norm = std::sqrt(gx * gx + gy * gy);
    return {f / norm, gx / norm, gy / norm};
}

FrameDistance refinedDistance(const FrameLine& line, const ChartRegistration& placement, double px,
                              double py, const FrameDistance& first) {
    if (placement.k1 == 0.0 && placement.k2 == 0.0) {
        return first;  // exact already
    }
    UndistortedPoint foot;
    if (!undistort(placement, px - first.d * first.nx, py - first.d * first.ny, foot)) {
        return first;
    }
    const FrameDistance rest = firstOrderDistance(line, foot);
    return {first.d + rest.d, first.nx, first.ny};
}

}  // namespace render
}  // namespace talonvireo
