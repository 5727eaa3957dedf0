// Defocus over the field: a lens at `lensZ` against a best-focus surface over the sensor, split
// into tangential and sagittal foci by astigmatism, and the blur each adds to the in-focus PSF.
//
// The surface: zb = z0 + slopeX X + slopeY Y + curvature (X^2 + Y^2), X right and Y down in mm
// from the frame centre. Tangential focus zT = zb + a rho^2 / 2, sagittal zS = zb - a rho^2 / 2
// (rho of FrameField, a = astigmatism). The PSF is an elliptical Gaussian: variance
// gain^2 (lensZ - zT)^2 more along the radial direction, gain^2 (lensZ - zS)^2 more across it.
// A half-plane of unit normal n sees the variance along n, (n.r)^2 of the one plus (n.t)^2 of
// the other (r radial, t azimuthal), so its edge stays exactly a Gaussian-blurred step.
//
// Past the frame's pixel centres the surface is held at the nearest one's value, so that a
// blur reaching over the border stays bounded, as the field sigma is held past the corners.
#pragma once

#include "render/FrameField.h"

namespace talonvireo {
namespace render {

// The focus model's parameters; `on` false renders without defocus.
struct FocusSettings {
    bool on = false;
    double lensZ = 0.0;         // lens position, um
    double bestFocusZ = 0.0;    // z0: the surface at the frame centre, um
    double slopeX = 0.0;        // um per mm
    double slopeY = 0.0;        // um per mm
    double curvature = 0.0;     // um per mm^2
    double astigmatism = 0.0;   // tangential minus sagittal focus at the corners (rho 1), um
    double defocusGain = 0.1;   // px of sigma per um of defocus
    double pixelPitchUm = 1.4;  // maps pixels to the surface's mm
};

// The focus at a frame point.
struct FieldFocus {
    double xMm = 0.0;  // the point from the frame centre, mm (not held at the border)
    double yMm = 0.0;
    double tangentialZ = 0.0;  // um
    double sagittalZ = 0.0;    // um
    // Unit radial direction from the frame centre; 0, 0 at the centre itself.
    double radialX = 0.0;
    double radialY = 0.0;
};

struct FocusField {
    FrameField field;
    double lastX = 0.0;  // the last pixel centre, width - 1, height - 1
    double lastY = 0.0;
    FocusSettings settings;

    static FocusField of(const FocusSettings& settings, int width, int height);

    FieldFocus at(double x, double y) const;
    // The variance the defocus adds across a unit normal (nx, ny) at (x, y), px^2; the mean of
    // the radial and azimuthal ones where there is no radial direction.
    double defocusVariance(double x, double y, double nx, double ny) const;
    // The mean of the radial and azimuthal variances: an isotropic stand-in for round shapes.
    double meanDefocusVariance(double x, double y) const;
    // The lens position where the blur across (nx, ny) at (x, y) is least:
    // cos^2 phi zT + sin^2 phi zS, phi between the normal and the radial direction.
    double bestFocusZ(double x, double y, double nx, double ny) const;
    // An upper bound on gain |lensZ - zT| and gain |lensZ - zS| over the box
    // [x0, x1] x [y0, y1]: the defocus sigma along any direction there.
    double largestDefocusOver(double x0, double y0, double x1, double y1) const;
};

}  // namespace render
}  // namespace talonvireo
