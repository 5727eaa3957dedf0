// Dark and light masks of the coarse image against its local mean.
//
// A mean over a window several quads wide lies between the dark and the light level wherever
// both are near, and follows illumination that falls off slowly across the frame. A dead band
// about it keeps flat ground and the inside of quads larger than the window out of both
// masks, so noise does not break them into countless specks; the outline of every quad still
// falls in one mask, which is all the contour search needs.
#pragma once

#include <opencv2/core.hpp>

namespace talonvireo {
namespace detect {

struct PolarityMasks {
    cv::Mat dark;   // CV_8U, 255 where clearly below the local mean
    cv::Mat light;  // CV_8U, 255 where clearly above it
};

// The dead band is 8 % of the local mean, or three noise deviations where that is more.
PolarityMasks splitByLocalMean(const cv::Mat& values, double noiseSigma);

}  // namespace detect
}  // namespace talonvireo
