// Rendered test regions and one-call measurement helpers.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "render/SlantedEdgeRenderer.h"
#include "talonvireo/talonVireoSFR.h"

namespace talonvireo {
namespace testing {

struct Measurement {
    int status = 0;
    tagSFRResult result{};
};

// A rendered scene quantised to 8 bits (round to nearest).
cv::Mat renderGrey8(const render::SlantedEdgeScene& scene);

// The same samples times 256 in 16-bit words: exactly proportional to the 8-bit image.
cv::Mat widen16(const cv::Mat& grey8);

// Measures a quantised grey image laid out in `format` (8-bit image for 8-bit layouts,
// 16-bit for 16-bit ones) with TalonCalSFR.
Measurement measure(const cv::Mat& grey, int format, double divisor = 0.0);

// Renders, quantises to 8 bits and measures as 8-bit grey.
Measurement measureScene(const render::SlantedEdgeScene& scene, double divisor = 0.0);

// OpenCV's Bayer-to-grey conversion code for a talonvireo::PixelFormat phase (RG, GR, GB, BG).
int expectedBayerToGreyCode(int phase);

// A near-vertical scene with the given blur and angle, 100 x 100, levels 40 -> 200.
render::SlantedEdgeScene edgeScene(double sigma, double angleDeg);

}  // namespace testing
}  // namespace talonvireo
