// Where a frame point lies in the field: rho = its distance from the frame centre over half the
// frame diagonal, 0 at the centre and 1 at the corners, as the placement model measures it.
#pragma once

#include <algorithm>
#include <cmath>

namespace talonvireo {
namespace render {

struct FrameField {
    double centreX = 0.0;
    double centreY = 0.0;
    double inverseRadius2 = 1.0;  // 1 / r0^2

    // The field of a width x height frame: centre ((width - 1) / 2, (height - 1) / 2), r0 half
    // the diagonal.
    static FrameField of(int width, int height) {
        const double r0 = std::max(
            0.5 * std::hypot(static_cast<double>(width), static_cast<double>(height)), 1.0);
        return {0.5 * (width - 1), 0.5 * (height - 1), 1.0 / (r0 * r0)};
    }

    double rho2(double x, double y) const {
        const double dx = x - centreX, dy = y - centreY;
        return (dx * dx + dy * dy) * inverseRadius2;
    }
};

}  // namespace render
}  // namespace talonvireo
