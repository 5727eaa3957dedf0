// Paints text-like clutter (TextBars) into a level map: each bar's coverage exact for a
// Gaussian blur of the sigma at the text's corner, the bars' coverages added.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "render/BlurredCoverage.h"
#include "render/RenderClutter.h"
#include "render/TextBars.h"

namespace talonvireo {
namespace render {

struct TextMark {
    std::vector<FrameBar> bars;
    std::vector<cv::Rect2d> reach;  // of each bar's blur
    cv::Rect box;                   // of them all
    double sigma = 1.0;
    double paint = 0.0;
};

TextMark textMark(const ClutterText& text, double paint, const PaintContext& context);

// levels (CV_64F) = levels (1 - cov) + paint cov over the text's box within `clip`.
void paintTextMark(cv::Mat& levels, const TextMark& text, cv::Rect clip,
                   const PaintContext& context);

}  // namespace render
}  // namespace talonvireo
