// The figures a report keeps of a measured region: one channel's curve read at its
// frequencies, and the precise method on each raw colour plane of a mosaic cut from a frame.
#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "talonvireo/MemberFrameReport.h"
#include "talonvireo/SfrCurve.h"

namespace talonvireo {
namespace api {

// SFR at the curve's first two (and a third, custom) frequencies, and MTF50; status 0.
CurveFigures curveFigures(const SfrChannelCurve& channel, const std::string& name);

// The phase (PixelFormat) of a region cut at (dx, dy) from a mosaic of phase `phase`: an odd
// column swaps the two samples of each row, an odd row swaps the rows.
int phaseAfterCut(int phase, int dx, int dy);

// The precise method on the R, Gr, Gb and B planes of `frame`'s region `cut` (a mosaic of
// `layout` and `phase`, PixelFormat), read at `options`' frequencies: four figures, each
// carrying the call's status.
std::vector<CurveFigures> rawPlaneFigures(const cv::Mat& frame, int layout, int phase,
                                          const cv::Rect& cut, SfrCurveOptions options);

}  // namespace api
}  // namespace talonvireo
