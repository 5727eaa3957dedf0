// The members' road to grey for a few regions of a frame instead of the whole of it: each
// region's raw words with the demosaic's margin, reduced on their own. The roads are local
// (a 5 x 5 neighbourhood at most) and their frame-border handling sees the same border where
// a window reaches it, so every pixel of a region comes out as the whole-frame road gives it.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "convert/WordDepth.h"
#include "talonvireo/RawFrameToGrey.h"

namespace talonvireo {
namespace api {

// Pixels a window reaches past its region: the demosaics' 5 x 5 support, rounded up to keep
// the window's origin on the mosaic's phase.
inline constexpr int kRoadMargin = 2;

// Writes the grey of every region (clipped to the frame) into `grey`, a CV_8UC1 image of the
// frame's size (allocated here when it is not); pixels outside the regions are left as they
// are. `raw`: CV_16UC1 Bayer R G words. Throws std::bad_alloc when memory runs out.
void reduceRegionsToGrey(convert::WordDepth depth, GreyRoad road, const cv::Mat& raw,
                         const std::vector<cv::Rect>& regions, cv::Mat& grey);

}  // namespace api
}  // namespace talonvireo
