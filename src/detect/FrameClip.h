// The part of a segment inside the frame, whose pixels span [-0.5, size - 0.5) on each axis.
#pragma once

#include <opencv2/core.hpp>

namespace talonvireo {
namespace detect {

// Clips a .. b to the frame in place; false when nothing of it is inside.
bool clipToFrame(cv::Point2d& a, cv::Point2d& b, cv::Size frame);

}  // namespace detect
}  // namespace talonvireo
