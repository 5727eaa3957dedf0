// A member's chart search: both layouts' locators on one grey frame, their centres in record
// slot order.
#pragma once

#include <opencv2/core.hpp>

#include "talonvireo/MemberEdgeLocate.h"

namespace talonvireo {
namespace api {

// Searches `grey` (CV_8UC1) for `chart` with both layouts, exactly as the members do, and
// writes every slot's centre (NaN, NaN for a slot of a layout whose search failed, or one the
// locator left unwritten) and each layout's status (0 found; -1 when not searched). With
// `stopAtFailure` the second layout is not searched once the first has failed, as a member
// stops there. Returns the slot count, or -1 for an unknown chart or a capacity below the
// count. Exceptions of the locators pass through.
int locateChart(const cv::Mat& grey, MemberChart chart, int markSearchSize, bool stopAtFailure,
                EdgeCentre* centres, int capacity, int layoutStatus[2]);

}  // namespace api
}  // namespace talonvireo
