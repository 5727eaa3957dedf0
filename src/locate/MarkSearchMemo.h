// What one mark search found, kept for the next locator on the same frame: both locators of
// the LX pair look for the same two marks, with the same size, round the same reference.
// The caller owns it and hands it to each locator; nothing else shares it.
#pragma once

#include <opencv2/core.hpp>

namespace RegularSFR {

struct MarkSearchMemo {
    bool found = false;
    cv::Point2f reference;
    int markSearchSize = 0;
    cv::Mat perspective;  // the translation the search made
};

}  // namespace RegularSFR
