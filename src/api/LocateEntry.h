// The body of every project locate function: one layout locator on the caller's frame, run
// at a fixed working scale, its edge centres copied out in the locator's order or through a
// reordering table.
#pragma once

#include <cstdint>
#include <exception>
#include <type_traits>
#include <vector>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "api/LocateOrder.h"
#include "locate/MarkSearchMemo.h"
#include "locate/SFRLocate_LX.h"

namespace talonvireo {
namespace api {

// The grey frame, and the same frame downscaled once for every locator that searches it at
// `scale`; an empty `downscaled` leaves the downscaling to each locator.
struct LocateImages {
    cv::Mat grey;
    cv::Mat downscaled;
    double scale = 1.0;
    // Where locators that search the frame's marks keep what they found for the next one.
    RegularSFR::MarkSearchMemo* marks = nullptr;

    static LocateImages at(const cv::Mat& grey, double scale, RegularSFR::MarkSearchMemo* marks) {
        LocateImages images{grey, cv::Mat(), scale, marks};
        if (scale != 1.0) {
            cv::resize(grey, images.downscaled, cv::Size(), scale, scale, cv::INTER_LINEAR);
        }
        return images;
    }
};

// Runs the locator and copies its centres out; exceptions pass through.
template <class Locator, class Result>
void runLocator(const LocateImages& images, int markSearchSize, double scale,
                const LocateOrder* order, Result& result) {
    const bool shared = !images.downscaled.empty() && images.scale == scale;
    Locator locator = shared ? Locator(images.grey, images.downscaled) : Locator(images.grey);
    locator.setScale(scale);
    locator.markSearchSize = markSearchSize;
    if constexpr (std::is_base_of_v<RegularSFR::SFRLocate_LX, Locator>) {
        locator.memo = images.marks;
    }
    locator.locate();
    // Not looked at: a failure shows as an empty read-out or as centres the caller's bounds
    // test rejects.
    locator.prepare();
    const std::vector<cv::Point> centres = locator.getEdgeCenters();
    constexpr std::size_t capacity = sizeof(result.centres) / sizeof(result.centres[0]);
    for (std::size_t i = 0; i < centres.size() && i < capacity; ++i) {
        const std::size_t slot = order != nullptr ? static_cast<std::size_t>((*order)[i] - 1) : i;
        result.centres[slot].x = static_cast<float>(centres[i].x);
        result.centres[slot].y = static_cast<float>(centres[i].y);
    }
}

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
        runLocator<Locator>(LocateImages{image, cv::Mat(), 1.0, nullptr}, markSearchSize, scale,
                            order, result);
        return 0;
    } catch (const std::exception&) {
        return -1;
    }
}

// The same on images the caller prepared: for the members, which run two locators on one
// frame and downscale it once for both.
template <class Locator, class Result>
int locatePrepared(const LocateImages& images, int markSearchSize, double scale,
                   const LocateOrder* order, Result& result) {
    try {
        runLocator<Locator>(images, markSearchSize, scale, order, result);
        return 0;
    } catch (const std::exception&) {
        return -1;
    }
}

}  // namespace api
}  // namespace talonvireo
