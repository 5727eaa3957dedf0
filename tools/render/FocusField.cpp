#include "render/FocusField.h"

#include <algorithm>
#include <cmath>

namespace talonvireo {
namespace render {

namespace {

// cos^2 of the angle between the normal (nx, ny) and the radial direction: the share of the
// tangential blur across it. A half share at the centre, which has no radial direction.
double radialShare(const FieldFocus& f, double nx, double ny) {
    if (f.radialX == 0.0 && f.radialY == 0.0) {
        return 0.5;
    }
    const double c = nx * f.radialX + ny * f.radialY;
    return std::min(c * c / (nx * nx + ny * ny), 1.0);
}

}  // namespace

FocusField FocusField::of(const FocusSettings& settings, int width, int height) {
    FocusField f;
    f.field = FrameField::of(width, height);
    f.lastX = std::max(width - 1, 0);
    f.lastY = std::max(height - 1, 0);
    f.settings = settings;
    return f;
}

FieldFocus FocusField::at(double x, double y) const {
    const FocusSettings& s = settings;
    const double mm = s.pixelPitchUm / 1000.0;
    FieldFocus f;
    f.xMm = (x - field.centreX) * mm;
    f.yMm = (y - field.centreY) * mm;
    const double hx = std::clamp(x, 0.0, lastX), hy = std::clamp(y, 0.0, lastY);
    const double dx = hx - field.centreX, dy = hy - field.centreY;
    const double bx = dx * mm, by = dy * mm;
    const double surface =
        s.bestFocusZ + s.slopeX * bx + s.slopeY * by + s.curvature * (bx * bx + by * by);
    const double half = 0.5 * s.astigmatism * field.rho2(hx, hy);
    f.tangentialZ = surface + half;
    f.sagittalZ = surface - half;
    const double r = std::hypot(dx, dy);
    if (r > 0.0) {
        f.radialX = dx / r;
        f.radialY = dy / r;
    }
    return f;
}

double FocusField::defocusVariance(double x, double y, double nx, double ny) const {
    const FieldFocus f = at(x, y);
    const double g2 = settings.defocusGain * settings.defocusGain;
    const double t = settings.lensZ - f.tangentialZ, s = settings.lensZ - f.sagittalZ;
    const double c2 = radialShare(f, nx, ny);
    return g2 * (c2 * t * t + (1.0 - c2) * s * s);
}

double FocusField::meanDefocusVariance(double x, double y) const {
    const FieldFocus f = at(x, y);
    const double g2 = settings.defocusGain * settings.defocusGain;
    const double t = settings.lensZ - f.tangentialZ, s = settings.lensZ - f.sagittalZ;
    return 0.5 * g2 * (t * t + s * s);
}

double FocusField::bestFocusZ(double x, double y, double nx, double ny) const {
    const FieldFocus f = at(x, y);
    const double c2 = radialShare(f, nx, ny);
    return c2 * f.tangentialZ + (1.0 - c2) * f.sagittalZ;
}

double FocusField::largestDefocusOver(double x0, double y0, double x1, double y1) const {
    // Held past the pixel centres, so the box's values are those of its part clamped in.
    x0 = std::clamp(x0, 0.0, lastX);
    x1 = std::clamp(x1, 0.0, lastX);
    y0 = std::clamp(y0, 0.0, lastY);
    y1 = std::clamp(y1, 0.0, lastY);
    const FocusSettings& s = settings;
    // zT and zS are quadratics of isotropic curvature in (x, y): each is c |p - p*|^2 plus a
    // constant, so over a box its extremes lie at the corners and at p* clamped into the box.
    double worst = 0.0;
    auto consider = [&](double x, double y) {
        const FieldFocus f = at(x, y);
        worst =
            std::max({worst, std::abs(s.lensZ - f.tangentialZ), std::abs(s.lensZ - f.sagittalZ)});
    };
    consider(x0, y0);
    consider(x1, y0);
    consider(x0, y1);
    consider(x1, y1);
    const double mm = s.pixelPitchUm / 1000.0;
    for (const double sign : {1.0, -1.0}) {
        // Curvature in pixels^-2 of zT (+) and zS (-).
        const double c = s.curvature * mm * mm + sign * 0.5 * s.astigmatism * field.inverseRadius2;
        if (c != 0.0) {
            const double px = field.centreX - s.slopeX * mm / (2.0 * c);
            const double py = field.centreY - s.slopeY * mm / (2.0 * c);
            consider(std::clamp(px, x0, x1), std::clamp(py, y0, y1));
        }
    }
    // A hair more, so that rounding between the points never beats the bound.
    return s.defocusGain * worst * (1.0 + 1e-9);
}

}  // namespace render
}  // namespace talonvireo
