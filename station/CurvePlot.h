// A picture of a measured SFR curve: every channel in its own colour (by its name),
// Nyquist/4, Nyquist/2 and MTF50 marked, and a legend naming each curve with its MTF50.
#pragma once

#include <opencv2/core.hpp>

#include "talonvireo/SfrCurve.h"

namespace talonvireo {
namespace station {

// An 8-bit BGR plot, 0 .. 0.5 cycles per pixel across and 0 .. 1.2 up.
cv::Mat plotCurve(const SfrCurve& curve);

}  // namespace station
}  // namespace talonvireo
