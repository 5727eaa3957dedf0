// Edge location and line fit on one channel of a region.
#pragma once

#include <opencv2/core.hpp>

#include "sfr/SfrContext.h"

namespace talonvireo {
namespace sfr {

// Loads `channel` into ctx.working as CV_64F, turns it upright, chooses the derivative
// kernels, refuses a low-contrast edge (-2), finds the edge in every row twice (centred
// window, then a window that follows the first line), fits the edge line, refuses a steep
// (-3) or grid-aligned (-4) edge, crops the rows to a whole number of phase cycles and records
// the edge angle. Returns 0 or the refusal.
int locateEdge(SfrContext& ctx, const cv::Mat& channel);

// Rows kept so that the edge crosses a whole number of columns: round(floor(rows |s|) / |s|).
// 0 means "keep all rows".
int phaseCycleRows(int rows, double slope);

}  // namespace sfr
}  // namespace talonvireo
