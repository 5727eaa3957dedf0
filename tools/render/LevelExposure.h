// A level map (fractions of full scale) as the sensor gives it: the illumination's fall-off,
// light spots, the mosaic's gains, noise, rounding and clipping at full scale.
#pragma once

#include <opencv2/core.hpp>

#include "render/DescriptionRenderSettings.h"

namespace talonvireo {
namespace render {

// CV_8U for 8 bits, else CV_16U. Each row draws its noise from its own generator seeded by
// the settings' seed and the row, so the frame is the same whatever the thread count.
cv::Mat exposeLevels(const cv::Mat& levels, const DescriptionRenderSettings& settings);

}  // namespace render
}  // namespace talonvireo
