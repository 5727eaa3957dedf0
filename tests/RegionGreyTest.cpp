// The road to grey of a few regions, against the whole frame's road: every region pixel the
// same, for both roads and every depth, regions anywhere in the frame and against its borders.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "api/GreyReduction.h"
#include "api/RegionGrey.h"

namespace {
using namespace talonvireo;

TEST(RegionGrey, EveryRegionPixelIsTheWholeFrameRoads) {
    std::mt19937 rng(7);
    for (const auto& [depth, bits] :
         {std::pair{convert::WordDepth::k10, 10}, std::pair{convert::WordDepth::k14, 14},
          std::pair{convert::WordDepth::k16, 16}}) {
        cv::Mat raw(301, 403, CV_16UC1);  // odd sizes: the last row and column are borders too
        for (int r = 0; r < raw.rows; ++r) {
            for (int c = 0; c < raw.cols; ++c) {
                raw.at<std::uint16_t>(r, c) = static_cast<std::uint16_t>(rng() % (1u << bits));
            }
        }
        for (const GreyRoad road : {GreyRoad::kMalvar, GreyRoad::kEdgeDirected}) {
            SCOPED_TRACE(::testing::Message() << bits << " bits, road " << static_cast<int>(road));
            const cv::Mat whole = api::reduceToGrey(depth, road, raw);
            std::vector<cv::Rect> regions = {
                {0, 0, 40, 40},   {363, 261, 40, 40}, {1, 1, 31, 17},    {0, 150, 90, 90},
                {370, 0, 90, 60}, {200, 280, 50, 50}, {-10, -10, 30, 30}};
            for (int k = 0; k < 20; ++k) {
                regions.emplace_back(static_cast<int>(rng() % 380), static_cast<int>(rng() % 280),
                                     8 + static_cast<int>(rng() % 90),
                                     8 + static_cast<int>(rng() % 90));
            }
            cv::Mat grey;
            api::reduceRegionsToGrey(depth, road, raw, regions, grey);
            const cv::Rect frame(0, 0, raw.cols, raw.rows);
            for (const cv::Rect& r : regions) {
                const cv::Rect in = r & frame;
                EXPECT_EQ(cv::norm(grey(in), whole(in), cv::NORM_INF), 0.0)
                    << in.x << ", " << in.y << ", " << in.width << " x " << in.height;
            }
        }
    }
}

}  // namespace
