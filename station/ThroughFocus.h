// Through-focus analysis: each edge's SFR against the focus position z, its best focus, peak
// and depth above a limit; the image surface through the edges' best foci (tilt and field
// curvature); the focus window every edge shares.
//
// Best focus is the peak of a parabola fitted to the logarithm of the SFR over the samples
// around the measured maximum. Defocus widens the line spread about as a Gaussian whose
// variance grows with the square of the distance from focus, sigma^2 = sigma0^2 + g^2 (z - zb)^2,
// and the SFR of a Gaussian is exp(-2 pi^2 sigma^2 f^2): its logarithm is exactly a parabola in
// z. Near focus, where the samples that decide the peak lie, real lenses follow it closely; far
// out the SFR bounces off zero and is left out of the fit.
#pragma once

#include <limits>
#include <string>
#include <vector>

namespace talonvireo {
namespace station {

struct FocusSample {
    double z = 0.0;    // focus position, micrometres
    double sfr = 0.0;  // at the chosen frequency
};

struct FocusCurve {
    static constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    // The parabola's peak; NaN when the maximum sits at either end of the sweep (focus lies
    // outside it) or fewer than three positions read an SFR above zero.
    double bestZ = kNaN;
    double peakSfr = kNaN;
    // Where the measured curve (linear between samples) crosses the limit either side of its
    // maximum; the sweep's end where it stays above the limit to that end (the range is at
    // least that). NaN both when the curve never reaches the limit.
    double fromZ = kNaN;
    double toZ = kNaN;
    bool reachesLimit = false;
    int samplesFitted = 0;
    bool bracketed() const { return bestZ == bestZ; }
};

// `samples` in any order, at distinct positions. The fit takes the maximum and the samples
// either side of it that read at least kFitShareOfPeak of it, at most kFitReach each way.
FocusCurve fitFocusCurve(std::vector<FocusSample> samples, double minSfr);

inline constexpr double kFitShareOfPeak = 0.3;
inline constexpr int kFitReach = 3;

// One edge's best focus at its place on the sensor: x right, y down, millimetres from the
// frame centre.
struct FocusPoint {
    double xMm = 0.0;
    double yMm = 0.0;
    double bestZ = 0.0;
};

// z = z0 + slopeX x + slopeY y + curvature (x^2 + y^2), by least squares.
struct FocusSurface {
    static constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    double z0 = kNaN;      // micrometres, at the frame centre
    double slopeX = kNaN;  // micrometres per millimetre
    double slopeY = kNaN;
    double curvature = kNaN;         // micrometres per square millimetre
    double tiltAboutYArcmin = kNaN;  // atan(slopeX / 1000)
    double tiltAboutXArcmin = kNaN;  // atan(slopeY / 1000)
    double residualRms = kNaN;       // micrometres
    int points = 0;
};

// NaN figures with fewer than four points or points that do not spread over the field enough
// to tell the terms apart.
FocusSurface fitFocusSurface(const std::vector<FocusPoint>& points);

// The overlap of every curve's range above the limit; NaN ends when they share none (or a
// curve never reaches the limit, or there is none).
struct FocusWindow {
    double fromZ = std::numeric_limits<double>::quiet_NaN();
    double toZ = std::numeric_limits<double>::quiet_NaN();
    double centreZ() const { return 0.5 * (fromZ + toZ); }
    bool exists() const { return fromZ <= toZ; }
};

FocusWindow commonFocusWindow(const std::vector<FocusCurve>& curves);

}  // namespace station
}  // namespace talonvireo
