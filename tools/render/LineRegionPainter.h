// Paints a region bounded by the images of straight chart lines, the positive side of each
// (a convex shape's four sides, or a lone edge's half-plane), into a level map.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "render/BlurredCoverage.h"
#include "render/FrameLine.h"

namespace talonvireo {
namespace render {

struct LineRegion {
    std::vector<FrameLine> lines;  // one to four
    cv::Rect box;                  // every pixel the region and its blur reach
    double paint = 0.0;            // its level
    // First-order distances beyond which a side covers a pixel's (a tile's) nodes wholly or
    // not at all.
    double pixelLimit = 0.0;
    double tileLimit = 0.0;
};

// The region of `lines` within `box`, painted at `paint`. Throws std::invalid_argument for
// other than one to four lines.
LineRegion lineRegion(std::vector<FrameLine> lines, cv::Rect box, double paint,
                      const PaintContext& context);

// levels (CV_64F) = levels (1 - cov) + paint cov over the pixels of the region's box within
// `clip`, cov the blurred coverage of the region. Sigma is taken where each pixel's normal
// meets the side, across the side, so each profile across a side is a Gaussian-blurred step of
// the sigma there.
void paintLineRegion(cv::Mat& levels, const LineRegion& region, cv::Rect clip,
                     const PaintContext& context);

}  // namespace render
}  // namespace talonvireo
