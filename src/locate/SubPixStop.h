// When every sub-pixel corner refinement of the locator stops: after 40 iterations or once
// a step moves the corner by less than 0.01 pixel.
#pragma once

#include <opencv2/core.hpp>

namespace RegularSFR {

inline cv::TermCriteria subPixStop() {
    return {cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 40, 0.01};
}

}  // namespace RegularSFR
