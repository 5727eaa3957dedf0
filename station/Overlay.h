// The overlay picture: the frame with every region outlined, numbered and labelled, under a
// header band that says what was measured and how the frame fared.
#pragma once

#include <opencv2/core.hpp>

#include "station/EdgeReport.h"

namespace talonvireo {
namespace station {

// The frame (8-bit grey) under a header band naming the file, the member, the limits (file or
// minimum SFR) and the yield (edges passing of all, frame PASS or FAIL). Every region is
// outlined, numbered and labelled with its SFR at Nyquist/4: blue when it passes, vermilion when
// it fails (with the figure that failed it beside the number), yellow without a limit, magenta
// when it was not measured; the colours stay apart for every colour vision. A picture that will
// be shown `outputWidth` pixels across (0: as drawn) gets labels and lines large enough to read
// there.
cv::Mat drawOverlay(const cv::Mat& grey, const FrameReport& report, int outputWidth = 0);

}  // namespace station
}  // namespace talonvireo
