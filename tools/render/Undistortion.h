// The frame seen back through the lens: the undistorted pixel u under a frame pixel p, and the
// derivative du/dp there. A side's image is the distorted image of a straight line, so its
// frame distance follows from the straight line's distance in u and this derivative.
#pragma once

#include "talonvireo/ChartRegistration.h"

namespace talonvireo {
namespace render {

struct UndistortedPoint {
    double x = 0.0;  // u
    double y = 0.0;
    // du/dp, symmetric because the distortion is radial.
    double dxx = 1.0;
    double dxy = 0.0;
    double dyy = 1.0;
};

// u and du/dp under frame pixel (px, py). False where the distortion folds over there.
bool undistort(const ChartRegistration& placement, double px, double py, UndistortedPoint& out);

// The homography alone: the undistorted pixel of a chart point; `w` its projective weight
// (negative behind the camera).
ChartPoint chartToUndistorted(const ChartRegistration& placement, ChartPoint chart, double& w);

// How the distortion behaves over a width x height frame: whether it stays one-to-one there,
// and a bound on how fast its local scale changes, relative, per pixel (0 without distortion).
// The first-order frame distance f / |grad f| of a point d pixels from a side errs by less
// than d^2 times this bound (FrameLine.h).
struct DistortionBounds {
    bool oneToOne = true;
    double bend = 0.0;  // 1 / px
};
DistortionBounds distortionBounds(const ChartRegistration& placement, int width, int height);

}  // namespace render
}  // namespace talonvireo
