// The body of every project locate function: one layout locator on the caller's frame, run
// at a fixed working scale, its edge centres copied out in the locator's order or through a
// reordering table.
#pragma once

#include <cstdint>
#include <exception>
#include <vector>

#include <opencv2/core.hpp>

#include "api/LocateOrder.h"

namespace talonvireo {
namespace api {

// 0 when the locator ran, whatever it found (an unlocated chart writes nothing); -1 for a
// null image, an empty size, or an exception. `centres` has room for 34 float pairs.
template <class Locator, class Result>
int locateEntry(unsigned char* img, int width, int height, int markSearchSize, double scale,
                const LocateOrder* order, Result& result) {
    try {
        if (img == nullptr || static_cast<std::int64_t>(width) * height == 0) {
            return -1;
        }
        // Borrowed, not copied; a negative size throws here.
        const cv::Mat image(height, width, CV_8UC1, img);
        Locator locator(image);
        locator.setScale(scale);
        locator.markSearchSize = markSearchSize;
        locator.locate();
        // Not looked at: a failure shows as an empty read-out or as centres the caller's
        // bounds test rejects.
        locator.prepare();
        const std::vector<cv::Point> centres = locator.getEdgeCenters();
        constexpr std::size_t capacity = sizeof(result.centres) / sizeof(result.centres[0]);
        for (std::size_t i = 0; i < centres.size() && i < capacity; ++i) {
            const std::size_t slot =
                order != nullptr ? static_cast<std::size_t>((*order)[i] - 1) : i;
            result.centres[slot].x = static_cast<float>(centres[i].x);
            result.centres[slot].y = static_cast<float>(centres[i].y);
        }
        return 0;
    } catch (const std::exception&) {
        return -1;
    }
}

}  // namespace api
}  // namespace talonvireo
