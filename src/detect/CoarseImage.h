// The frame reduced for the search: whole-pixel blocks averaged, as 32-bit float.
#pragma once

#include <opencv2/core.hpp>

namespace talonvireo {
namespace detect {

struct CoarseImage {
    cv::Mat values;  // CV_32F
    int factor = 1;  // frame pixels per coarse pixel along each axis

    // Frame coordinates of a coarse position: coarse pixel 0 spans frame pixels
    // 0 .. factor - 1, whose centre is (factor - 1) / 2.
    cv::Point2d toFrame(cv::Point2d p) const {
        return {(p.x + 0.5) * factor - 0.5, (p.y + 0.5) * factor - 0.5};
    }
};

// Reduces a frame longer than 2000 px by 2, 4 or 8, to at most 2000 px: a 4000 x 3000 frame
// keeps quads of 16 px as 8 coarse pixels a side, for a quarter of the work.
// Throws std::invalid_argument unless grey is non-empty, one channel, CV_8U or CV_16U.
CoarseImage reduceFrame(const cv::Mat& grey);

}  // namespace detect
}  // namespace talonvireo
