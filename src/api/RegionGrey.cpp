#include "api/RegionGrey.h"

#include <new>

#include "api/GreyReduction.h"

namespace talonvireo {
namespace api {

void reduceRegionsToGrey(convert::WordDepth depth, GreyRoad road, const cv::Mat& raw,
                         const std::vector<cv::Rect>& regions, cv::Mat& grey) {
    grey.create(raw.size(), CV_8UC1);
    const cv::Rect frame(0, 0, raw.cols, raw.rows);
    const int count = static_cast<int>(regions.size());
    bool failed = false;
#pragma omp parallel for schedule(dynamic)
    for (int k = 0; k < count; ++k) {
        const cv::Rect region = regions[static_cast<std::size_t>(k)] & frame;
        if (region.empty()) {
            continue;
        }
        // Even origin: the window's mosaic keeps the frame's phase R G.
        const int x0 = std::max(0, (region.x - kRoadMargin) & ~1);
        const int y0 = std::max(0, (region.y - kRoadMargin) & ~1);
        const int x1 = std::min(raw.cols, region.x + region.width + kRoadMargin);
        const int y1 = std::min(raw.rows, region.y + region.height + kRoadMargin);
        const cv::Rect window(x0, y0, x1 - x0, y1 - y0);
        const cv::Mat words = raw(window).clone();
        cv::Mat part(window.size(), CV_8UC1);
        if (!reduceToGrey(depth, road, words.ptr<std::uint16_t>(), words.cols, words.rows,
                          part.data)) {
#pragma omp atomic write
            failed = true;
            continue;
        }
        part(cv::Rect(region.x - x0, region.y - y0, region.width, region.height))
            .copyTo(grey(region));
    }
    if (failed) {
        throw std::bad_alloc();
    }
}

}  // namespace api
}  // namespace talonvireo
