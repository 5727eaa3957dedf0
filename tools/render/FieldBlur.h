// The Gaussian PSF's sigma over the field: sigmaCentre + (sigmaCorner - sigmaCentre) rho^2,
// held at the corners' value past them (a blur reaching over the frame border).
#pragma once

#include <algorithm>

#include "render/FrameField.h"

namespace talonvireo {
namespace render {

struct FieldBlur {
    FrameField field;
    double sigmaCentre = 1.0;
    double sigmaCorner = 1.0;

    double sigma(double x, double y) const {
        const double rho2 = std::min(field.rho2(x, y), 1.0);
        return sigmaCentre + (sigmaCorner - sigmaCentre) * rho2;
    }

    // The largest sigma over the box [x0, x1] x [y0, y1]: sigma is linear in rho^2, so at the
    // box's farthest corner from the centre or at its nearest point to it.
    double largestOver(double x0, double y0, double x1, double y1) const {
        const double nearX = std::clamp(field.centreX, x0, x1);
        const double nearY = std::clamp(field.centreY, y0, y1);
        const double farX = field.centreX - x0 > x1 - field.centreX ? x0 : x1;
        const double farY = field.centreY - y0 > y1 - field.centreY ? y0 : y1;
        return std::max(sigma(nearX, nearY), sigma(farX, farY));
    }
};

}  // namespace render
}  // namespace talonvireo
