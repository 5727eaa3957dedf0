// Standard deviation of the noise of an image, from the differences of neighbouring pixels.
#pragma once

#include <opencv2/core.hpp>

namespace talonvireo {
namespace detect {

// Median absolute difference of horizontal neighbours on a sample of rows, scaled to a
// standard deviation: edges are too few to move the median. CV_32F input; 0 for an image
// narrower than 2 px.
double noiseSigma(const cv::Mat& values);

}  // namespace detect
}  // namespace talonvireo
