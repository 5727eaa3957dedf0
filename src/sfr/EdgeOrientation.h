// Turning a region so that its edge runs from top to bottom.
#pragma once

#include <opencv2/core.hpp>

namespace talonvireo {
namespace sfr {

// Compares the mean of the first and last three rows with that of the first and last three
// columns. When the rows differ strictly more, the edge runs across the image: the image is
// transposed and its rows reversed (a quarter turn) and the function returns true.
// `working` is CV_64F, one channel. Throws std::invalid_argument below 3 x 3.
bool turnEdgeUpright(cv::Mat& working);

}  // namespace sfr
}  // namespace talonvireo
