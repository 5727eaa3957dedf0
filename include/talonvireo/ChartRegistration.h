// How a chart lies in a frame: a homography from chart units to undistorted frame pixels, then
// radial lens distortion about the frame centre.
//
//   u = H (x, y, 1)                              (undistorted frame pixel)
//   rho = |u - c| / r0,  r0 = half the frame diagonal, c = the frame centre
//   p = c + (u - c) (1 + k1 rho^2 + k2 rho^4)    (the pixel where the frame sees the point)
//
// k1 = -0.10 is 10 % barrel at the frame corners (with k2 = 0), +0.10 10 % pincushion.
// Pixel coordinates follow OpenCV: integer coordinates are pixel centres.
#pragma once

#include "talonvireo/ChartDescription.h"
#include "talonvireo/Export.h"

namespace talonvireo {

struct ChartRegistration {
    bool registered = false;
    double homography[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};  ///< row-major, chart -> pixels
    double centreX = 0.0;                                ///< c
    double centreY = 0.0;
    double normRadius = 1.0;  ///< r0
    double k1 = 0.0;
    double k2 = 0.0;
    int matchedShapes = 0;  ///< shapes of the description matched to found quadrilaterals
    /// Distance between the matched corners and the registration's image of the description's
    /// corners, pixels: root mean square and largest. NaN when not registered.
    double residualRms = 0.0;
    double residualMax = 0.0;
};

/// The registration of a frame `width` x `height` with no distortion yet: c the frame centre
/// ((width - 1) / 2, (height - 1) / 2), r0 half the frame diagonal, H the identity.
TALONVIREO_API ChartRegistration undistortedRegistration(int width, int height);

/// Where the frame sees chart point `p`.
TALONVIREO_API ChartPoint chartToFrame(const ChartRegistration& registration, ChartPoint p);

/// The chart point the frame sees at pixel `p` (the distortion inverted by Newton steps, then
/// H). False when H is singular or the distortion folds over at p.
TALONVIREO_API bool frameToChart(const ChartRegistration& registration, ChartPoint p,
                                 ChartPoint& chart);

}  // namespace talonvireo
