// Exported locate stage of the members: the same pair, scale and images as a measurement,
// stopping before the regions are cut.
#include "talonvireo/MemberEdgeLocate.h"

#include <cstdint>
#include <exception>
#include <limits>

#include <opencv2/core.hpp>

#include "api/MemberLocatePairs.h"

namespace talonvireo {

namespace {
// Each layout's locator on its own: one that fails leaves its slots NaN (its edges were not
// found, as a member reads it) and the other layout is still searched.
template <class Pair>
int locateInto(const cv::Mat& grey, const Pair& pair, int markSearchSize, EdgeCentre* centres,
               int capacity) {
    constexpr int n = Pair::kEdges;
    if (capacity < 2 * n) {
        return -1;
    }
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    const typename Pair::Param param{markSearchSize};
    RegularSFR::MarkSearchMemo marks;
    const api::LocateImages images = api::LocateImages::at(grey, pair.scale, &marks);
    for (int set = 0; set < 2; ++set) {
        // A slot the locator leaves unwritten keeps NaN: that edge was not found.
        typename Pair::Result located;
        for (auto& centre : located.centres) {
            centre = {nan, nan};
        }
        const int status = (set == 0 ? pair.first : pair.second)(images, param, located);
        for (int k = 0; k < n; ++k) {
            centres[set * n + k] = status == 0
                                       ? EdgeCentre{located.centres[k].x, located.centres[k].y}
                                       : EdgeCentre{nan, nan};
        }
    }
    return 2 * n;
}
}  // namespace

int locateMemberEdges(const unsigned char* grey, int width, int height, MemberChart chart,
                      int markSearchSize, EdgeCentre* centres, int capacity) {
    try {
        if (grey == nullptr || centres == nullptr || width <= 0 || height <= 0 ||
            static_cast<std::int64_t>(width) * height > INT32_MAX || markSearchSize < 1 ||
            markSearchSize > width / 2) {
            return -1;
        }
        // Borrowed and only read: the locators never write the frame.
        const cv::Mat image(height, width, CV_8UC1, const_cast<unsigned char*>(grey));
        switch (chart) {
            case MemberChart::kK31R22BX:
                return locateInto(image, api::kK31R22BXPair, markSearchSize, centres, capacity);
            case MemberChart::kK74T16BX:
                return locateInto(image, api::kK74T16BXPair, markSearchSize, centres, capacity);
            case MemberChart::kK74T16BX8K:
                return locateInto(image, api::kMap8kPair, markSearchSize, centres, capacity);
            case MemberChart::kHLX6C:
                return locateInto(image, api::kHlx6cPair, markSearchSize, centres, capacity);
            case MemberChart::kHLX6C8K:
                return locateInto(image, api::kHlx6c8kPair, markSearchSize, centres, capacity);
            case MemberChart::kK83P09BQ:
                return locateInto(image, api::kK83P09BQPair, markSearchSize, centres, capacity);
        }
        return -1;
    } catch (const std::exception&) {
        return -1;
    }
}

}  // namespace talonvireo
