// The square window the locator cuts round a point, clipped to the image the way it always
// has been: an edge at or below 0 becomes 0, one at or beyond the image's size becomes that
// size, and each is then truncated toward zero.
#pragma once

#include <opencv2/core.hpp>

#include "locate/IntConversion.h"

namespace RegularSFR {

// The window of half side `reach` round (cx, cy), in float, clipped to `image`. A window
// wholly outside the image comes back with a negative origin or extent, which OpenCV's
// sub-region check then refuses.
inline cv::Rect clippedWindow(float cx, float cy, float reach, cv::Size image) {
    const auto low = [](float v) { return v <= 0.0f ? 0 : truncateToInt(v); };
    const auto high = [](float v, int limit) {
        return v >= static_cast<float>(limit) ? limit : truncateToInt(v);
    };
    return cv::Rect(cv::Point(low(cx - reach), low(cy - reach)),
                    cv::Point(high(cx + reach, image.width), high(cy + reach, image.height)));
}

}  // namespace RegularSFR
