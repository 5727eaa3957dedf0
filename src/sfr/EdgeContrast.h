// Edge polarity and contrast test.
#pragma once

#include <opencv2/core.hpp>

#include "sfr/SfrContext.h"

namespace talonvireo {
namespace sfr {

// Sums of the first and last five columns of the upright working image.
struct EdgeStrips {
    double left = 0.0;
    double right = 0.0;
};

// Throws std::invalid_argument for fewer than five columns.
EdgeStrips edgeStrips(const cv::Mat& working);

// Kernels that make the derivative across the edge positive: (-0.5, +0.5) and (-0.5, 0, +0.5)
// when the right strip is brighter, the mirrored pair otherwise.
DerivativeKernels kernelsFor(const EdgeStrips& strips);

// True when |(left - right) / (left + right)| reaches 0.2.
bool hasEnoughContrast(const EdgeStrips& strips);

}  // namespace sfr
}  // namespace talonvireo
