#include "api/ChartLocate.h"

#include <limits>

#include "api/MemberLocatePairs.h"

namespace talonvireo {
namespace api {

namespace {
template <class Pair>
int locateInto(const cv::Mat& grey, const Pair& pair, int markSearchSize, bool stopAtFailure,
               EdgeCentre* centres, int capacity, int layoutStatus[2]) {
    constexpr int n = Pair::kEdges;
    if (capacity < 2 * n) {
        return -1;
    }
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    const typename Pair::Param param{markSearchSize};
    RegularSFR::MarkSearchMemo marks;
    const LocateImages images = LocateImages::at(grey, pair.scale, &marks);
    for (int set = 0; set < 2; ++set) {
        layoutStatus[set] = -1;
        if (set == 1 && stopAtFailure && layoutStatus[0] != 0) {
            for (int k = 0; k < n; ++k) {
                centres[n + k] = {nan, nan};
            }
            continue;
        }
        // A slot the locator leaves unwritten keeps NaN: that edge was not found.
        typename Pair::Result located;
        for (auto& centre : located.centres) {
            centre = {nan, nan};
        }
        layoutStatus[set] = (set == 0 ? pair.first : pair.second)(images, param, located);
        for (int k = 0; k < n; ++k) {
            centres[set * n + k] = layoutStatus[set] == 0
                                       ? EdgeCentre{located.centres[k].x, located.centres[k].y}
                                       : EdgeCentre{nan, nan};
        }
    }
    return 2 * n;
}
}  // namespace

int locateChart(const cv::Mat& grey, MemberChart chart, int markSearchSize, bool stopAtFailure,
                EdgeCentre* centres, int capacity, int layoutStatus[2]) {
    const auto run = [&](const auto& pair) {
        return locateInto(grey, pair, markSearchSize, stopAtFailure, centres, capacity,
                          layoutStatus);
    };
    switch (chart) {
        case MemberChart::kK31R22BX:
            return run(kK31R22BXPair);
        case MemberChart::kK74T16BX:
            return run(kK74T16BXPair);
        case MemberChart::kK74T16BX8K:
            return run(kMap8kPair);
        case MemberChart::kHLX6C:
            return run(kHlx6cPair);
        case MemberChart::kHLX6C8K:
            return run(kHlx6c8kPair);
        case MemberChart::kK83P09BQ:
            return run(kK83P09BQPair);
    }
    return -1;
}

}  // namespace api
}  // namespace talonvireo
