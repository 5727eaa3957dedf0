// The Gaussian PSF's sigma over the field: in focus sigmaCentre + (sigmaCorner - sigmaCentre)
// rho^2, held at the corners' value past them (a blur reaching over the frame border); with
// the focus model on, widened by the defocus there, more along one direction than the other
// (FocusField).
#pragma once

#include <algorithm>
#include <cmath>

#include "render/FocusField.h"
#include "render/FrameField.h"

namespace talonvireo {
namespace render {

struct FieldBlur {
    FrameField field;
    double sigmaCentre = 1.0;
    double sigmaCorner = 1.0;
    FocusField focus;

    // The sigma at best focus.
    double focusedSigma(double x, double y) const {
        const double rho2 = std::min(field.rho2(x, y), 1.0);
        return sigmaCentre + (sigmaCorner - sigmaCentre) * rho2;
    }

    // The sigma across a side of unit normal (nx, ny) at (x, y): what its edge profile shows.
    double sigmaAcross(double x, double y, double nx, double ny) const {
        const double s0 = focusedSigma(x, y);
        if (!focus.settings.on) {
            return s0;
        }
        return std::sqrt(s0 * s0 + focus.defocusVariance(x, y, nx, ny));
    }

    // An isotropic sigma at (x, y), for the round marks and the print: the root mean square of
    // the radial and azimuthal ones.
    double sigma(double x, double y) const {
        const double s0 = focusedSigma(x, y);
        if (!focus.settings.on) {
            return s0;
        }
        return std::sqrt(s0 * s0 + focus.meanDefocusVariance(x, y));
    }

    // An upper bound on the sigma along any direction over the box [x0, x1] x [y0, y1]. In
    // focus exact: sigma is linear in rho^2, so it is largest at the box's farthest corner
    // from the centre or at its nearest point to it.
    double largestOver(double x0, double y0, double x1, double y1) const {
        const double nearX = std::clamp(field.centreX, x0, x1);
        const double nearY = std::clamp(field.centreY, y0, y1);
        const double farX = field.centreX - x0 > x1 - field.centreX ? x0 : x1;
        const double farY = field.centreY - y0 > y1 - field.centreY ? y0 : y1;
        const double s0 = std::max(focusedSigma(nearX, nearY), focusedSigma(farX, farY));
        if (!focus.settings.on) {
            return s0;
        }
        return std::hypot(s0, focus.largestDefocusOver(x0, y0, x1, y1));
    }

    // An upper bound on the sigma anywhere.
    double largest() const {
        const double s0 = std::max(sigmaCentre, sigmaCorner);
        if (!focus.settings.on) {
            return s0;
        }
        return std::hypot(s0, focus.largestDefocusOver(0.0, 0.0, focus.lastX, focus.lastY));
    }
};

}  // namespace render
}  // namespace talonvireo
