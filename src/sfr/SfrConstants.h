// Numeric constants of the slanted-edge method.
#pragma once

namespace talonvireo {
namespace sfr {

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;

constexpr int kOversampling = 4;               // ESF bins per pixel along the edge normal
constexpr int kOrientationStrip = 3;           // rows/columns averaged by the orientation test
constexpr int kContrastStrip = 5;              // columns summed by the contrast test
constexpr double kMinContrast = 0.2;           // |(left - right) / (left + right)|
constexpr double kMaxSlope = 1.25;             // columns per row, about 51 degrees
constexpr double kMinCentroidWeight = 0.0001;  // smaller windowed sums give a centroid of 0
constexpr double kMaxDerivativeCorrection = 10.0;

}  // namespace sfr
}  // namespace talonvireo
