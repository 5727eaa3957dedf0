// Renders any chart description into a frame: its lone edges, shapes and marks seen through a
// placement (homography and radial distortion), blurred by a Gaussian whose sigma varies over
// the field (elliptical with the focus model on: FieldBlur.h, FocusField.h), then clutter, the
// illumination's fall-off, light spots, gains and noise.
//
// The ground is at the light level. Lone edges are painted first, each darkening its dark side
// (right of from -> to for polarity +1, left for -1); then the shapes in order, dark (+1) or
// light (-1), each over what lies below it (level = level (1 - cov) + shape cov, so a dark
// panel holding light squares works); then the marks; then clutter discs and texts. Coverage
// is exact for a Gaussian-blurred half-plane away from shape corners (BlurredCoverage.h,
// FrameLine.h for the frame distance to a distorted side); DescriptionTruth gives what each
// edge should measure.
#pragma once

#include <opencv2/core.hpp>

#include "render/DescriptionRenderSettings.h"
#include "talonvireo/ChartDescription.h"

namespace talonvireo {
namespace render {

// The frame: CV_8U for 8 bits, else CV_16U (a mosaic when settings.bayer). Throws
// std::invalid_argument for bad settings (checkRenderSettings) or a description the renderer
// cannot draw (a shape not convex, a side or lone edge of no length, a polarity other than
// +-1, a mark of no size, a point behind the camera), naming it.
cv::Mat renderDescription(const ChartDescription& description,
                          const DescriptionRenderSettings& settings);

// The levels before the sensor (CV_64F, fractions of full scale): the chart and the clutter
// discs and texts, no fall-off, spots, gains or noise.
cv::Mat renderDescriptionLevels(const ChartDescription& description,
                                const DescriptionRenderSettings& settings);

}  // namespace render
}  // namespace talonvireo
