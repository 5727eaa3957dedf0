// Paints discs into a level map: the chart's round marks (discs in chart units, seen through
// the placement) and clutter discs (in frame pixels).
//
// Coverage is Phi(frame distance to the disc's rim / sigma), sigma taken at the disc's centre:
// the blur of a disc of radius R puts its half level about sigma^2 / (2 R) inside the rim,
// which this leaves out (0.02 px for sigma 1.5 and R 50 px).
#pragma once

#include <opencv2/core.hpp>

#include "render/BlurredCoverage.h"
#include "render/FrameLine.h"
#include "render/RenderClutter.h"
#include "talonvireo/ChartDescription.h"

namespace talonvireo {
namespace render {

struct RoundMark {
    bool onChart = false;  // centre and radius in chart units, else in frame pixels
    ChartPoint centre;
    double radius = 0.0;
    double scale = 1.0;  // frame pixels per chart unit about the mark (on the chart)
    double sigma = 1.0;
    double paint = 0.0;
    cv::Rect box;  // every pixel the disc and its blur reach
};

RoundMark chartMark(const ChartMark& mark, double paint, const PaintContext& context);
RoundMark clutterDisc(const ClutterDisc& disc, double paint, const PaintContext& context);

// levels (CV_64F) = levels (1 - cov) + paint cov over the mark's box within `clip`.
void paintRoundMark(cv::Mat& levels, const RoundMark& mark, cv::Rect clip,
                    const PaintContext& context);

}  // namespace render
}  // namespace talonvireo
