// Measuring one raw frame with one member, turning every failure into its own exit status
// and a one-line reason.
#pragma once

#include <opencv2/core.hpp>

#include "EdgeReport.h"
#include "Members.h"

namespace talonvireo {
namespace cli {

// Checks the parameters the way the member will (so a refusal names its reason), measures
// `raw` (CV_16UC1) and returns the report with one row per entry. Throws CliError: bad
// arguments, chart not located, region out of bounds, SFR calculation failed.
FrameReport measureRawFrame(const Member& member, cv::Mat& raw, SFRParam param);

}  // namespace cli
}  // namespace talonvireo
