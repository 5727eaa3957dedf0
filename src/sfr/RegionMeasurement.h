// One prepared region through the classic core, keeping the working state so that figures
// beyond the record's (the edge line, the edge spread) are read off the same pass.
#pragma once

#include <opencv2/core.hpp>

#include "sfr/SfrContext.h"
#include "talonvireo/RegionSfr.h"

namespace talonvireo {
namespace sfr {

// Measures `region` (a deep copy is taken into `ctx`) and, on success only, writes every
// channel's figures into `result` exactly as TalonCalSFR reports them. Returns the core's
// status; OpenCV and shape errors are thrown.
int measurePreparedRegion(const cv::Mat& region, tagSFRResult& result, SfrContext& ctx);

}  // namespace sfr
}  // namespace talonvireo
