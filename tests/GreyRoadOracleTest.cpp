// The fast roads from raw words to grey against their plain per-pixel renditions, sample for
// sample: random words over the whole 16-bit range (saturation and wrap included) on frames
// from 1 x 1 up, widths on both sides of every vector length, every Bayer phase and word
// depth, and rendered chart frames.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <hwy/targets.h>
#include <opencv2/core.hpp>

#include "ChartFrames.h"
#include "HighwayTargets.h"
#include "OracleRoads.h"
#include "convert/EdgeDirectedDemosaic.h"
#include "convert/GreyRoads.h"
#include "convert/WordUnpack.h"
#include "talonvireo/RawFrameToGrey.h"

namespace {
using namespace talonvireo;
using convert::WordDepth;

constexpr int kDepths[] = {10, 14, 16};

WordDepth depthOf(int bits) {
    return bits == 10 ? WordDepth::k10 : bits == 14 ? WordDepth::k14 : WordDepth::k16;
}

// Words below 2^bits mostly, some anywhere in 16 bits.
cv::Mat randomWords(int width, int height, int bits, std::mt19937& rng) {
    cv::Mat words(height, width, CV_16UC1);
    std::uniform_int_distribution<int> inRange(0, (1 << bits) - 1);
    std::uniform_int_distribution<int> any(0, 65535);
    std::uniform_int_distribution<int> pick(0, 9);
    for (int r = 0; r < height; ++r) {
        for (int c = 0; c < width; ++c) {
            words.at<std::uint16_t>(r, c) =
                static_cast<std::uint16_t>(pick(rng) == 0 ? any(rng) : inRange(rng));
        }
    }
    return words;
}

// Sizes from 1 x 1 up; widths round 16, 32 and 64 samples, the vector lengths of the targets.
std::vector<std::pair<int, int>> frameSizes() {
    std::vector<std::pair<int, int>> sizes;
    for (int w :
         {1, 2, 3, 4, 5, 7, 8, 15, 16, 17, 31, 32, 33, 34, 35, 63, 64, 65, 66, 67, 100, 131}) {
        for (int h : {1, 2, 3, 4, 5, 6, 33, 34, 35, 70}) {
            sizes.emplace_back(w, h);
        }
    }
    return sizes;
}

cv::Mat fastMalvar(const cv::Mat& words, int bits, int phaseIdx) {
    cv::Mat grey(words.size(), CV_8UC1, cv::Scalar(0xCD));
    EXPECT_TRUE(convert::malvarRoadToGrey(words.ptr<std::uint16_t>(), words.cols, words.rows,
                                          depthOf(bits), phaseIdx, grey.data));
    return grey;
}

cv::Mat fastEdgeDirected(const cv::Mat& words, int bits, convert::MosaicPhase phase) {
    cv::Mat grey(words.size(), CV_8UC1, cv::Scalar(0xCD));
    EXPECT_TRUE(convert::edgeDirectedRoadToGrey(words.ptr<std::uint16_t>(), words.cols, words.rows,
                                                depthOf(bits), phase, grey.data));
    return grey;
}

// Runs `check` once per instruction set compiled in and supported here (SSSE3 to AVX-512 and
// the portable fallbacks), each in turn the one the roads dispatch to.
template <class Check>
void forEachTarget(Check check) {
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        hwy::SetSupportedTargetsForTest(target);
        SCOPED_TRACE(hwy::TargetName(target));
        check();
    }
    hwy::SetSupportedTargetsForTest(0);
}

bool same(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && cv::norm(a, b, cv::NORM_INF) == 0.0;
}

TEST(GreyRoadOracle, UnpackingMatchesThePlainRuleForEveryWordAndLength) {
    std::vector<std::uint16_t> all(65536 + 77);
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = static_cast<std::uint16_t>(i * 40503u);
    }
    forEachTarget([&] {
        for (int bits : kDepths) {
            for (std::size_t count : {std::size_t{1}, std::size_t{7}, std::size_t{31},
                                      std::size_t{33}, std::size_t{65}, all.size()}) {
                std::vector<std::uint8_t> out(count + 1, 0xCD);
                convert::unpackWords(all.data(), out.data(), count, depthOf(bits));
                for (std::size_t i = 0; i < count; ++i) {
                    ASSERT_EQ(out[i], talonvireo::testing::oracleUnpack(all[i], bits))
                        << bits << " bits, word " << all[i];
                }
                EXPECT_EQ(out[count], 0xCD) << "wrote past the run";
            }
        }
    });
}

// The random-frame comparisons once per instruction set, each its own test: the sets run
// side by side under ctest, which keeps the slow sanitizer builds' run short.
class GreyRoadOracleOnTarget : public talonvireo::testing::OnEachHighwayTarget {};

TEST_P(GreyRoadOracleOnTarget, MalvarRoadMatchesThePlainRenditionOnRandomFrames) {
    std::mt19937 rng(11);
    for (const auto& [w, h] : frameSizes()) {
        for (int bits : kDepths) {
            const cv::Mat words = randomWords(w, h, bits, rng);
            for (int phase = 0; phase < 4; ++phase) {
                ASSERT_TRUE(same(fastMalvar(words, bits, phase),
                                 talonvireo::testing::oracleMalvarGrey(words, bits, phase)))
                    << w << " x " << h << ", " << bits << " bits, phase " << phase;
            }
        }
    }
}

TEST_P(GreyRoadOracleOnTarget, EdgeDirectedRoadMatchesThePlainRenditionOnRandomFrames) {
    std::mt19937 rng(12);
    const convert::MosaicPhase phases[] = {convert::kPhaseRggb, convert::kPhaseGrbg,
                                           convert::kPhaseGbrg, convert::kPhaseBggr};
    for (const auto& [w, h] : frameSizes()) {
        for (int bits : kDepths) {
            const cv::Mat words = randomWords(w, h, bits, rng);
            for (const convert::MosaicPhase& phase : phases) {
                ASSERT_TRUE(same(fastEdgeDirected(words, bits, phase),
                                 talonvireo::testing::oracleEdgeDirectedGrey(
                                     words, bits, phase.rowShift, phase.colShift)))
                    << w << " x " << h << ", " << bits << " bits, shifts " << phase.rowShift
                    << phase.colShift;
            }
        }
    }
}

TALONVIREO_ON_EVERY_HIGHWAY_TARGET(GreyRoadOracleOnTarget);

TEST(GreyRoadOracle, BothRoadsMatchThePlainRenditionsOnRenderedChartFrames) {
    render::ChartTransform placement;
    placement.rotationDeg = 0.7;
    const cv::Mat hlx6c = talonvireo::testing::renderRawChart(render::ChartProject::HLX6C, 10, 4000,
                                                              3000, placement, 0.9, 8.0, 3);
    EXPECT_TRUE(
        same(fastMalvar(hlx6c, 10, 2), talonvireo::testing::oracleMalvarGrey(hlx6c, 10, 2)));
    const cv::Mat k31 = talonvireo::testing::renderRawChart(render::ChartProject::K31R22BX, 14,
                                                            4000, 3000, placement, 0.9, 32.0, 4);
    EXPECT_TRUE(same(fastEdgeDirected(k31, 14, convert::kPhaseRggb),
                     talonvireo::testing::oracleEdgeDirectedGrey(k31, 14, 0, 0)));
}

TEST(GreyRoadOracle, TheExportedRoadIsTheMembersRoad) {
    std::mt19937 rng(13);
    const cv::Mat words = randomWords(203, 61, 16, rng);
    cv::Mat grey(words.size(), CV_8UC1);
    ASSERT_EQ(rawFrameToGrey(words.ptr<std::uint16_t>(), words.cols, words.rows, 16,
                             GreyRoad::kMalvar, grey.data),
              0);
    EXPECT_TRUE(same(grey, talonvireo::testing::oracleMalvarGrey(words, 16, 2)));
    ASSERT_EQ(rawFrameToGrey(words.ptr<std::uint16_t>(), words.cols, words.rows, 16,
                             GreyRoad::kEdgeDirected, grey.data),
              0);
    EXPECT_TRUE(same(grey, talonvireo::testing::oracleEdgeDirectedGrey(words, 16, 0, 0)));
}

TEST(GreyRoadOracle, RoadsRefuseNullBuffersAndEmptySizesWritingNothing) {
    std::vector<std::uint16_t> words(16, 100);
    std::vector<std::uint8_t> grey(16, 0xCD);
    EXPECT_FALSE(convert::malvarRoadToGrey(nullptr, 4, 4, WordDepth::k10, 2, grey.data()));
    EXPECT_FALSE(convert::malvarRoadToGrey(words.data(), 4, 4, WordDepth::k10, 2, nullptr));
    EXPECT_FALSE(convert::malvarRoadToGrey(words.data(), 0, 4, WordDepth::k10, 2, grey.data()));
    EXPECT_FALSE(convert::malvarRoadToGrey(words.data(), 4, -1, WordDepth::k10, 2, grey.data()));
    EXPECT_FALSE(convert::malvarRoadToGrey(words.data(), 4, 4, WordDepth::k10, 4, grey.data()));
    EXPECT_FALSE(convert::edgeDirectedRoadToGrey(nullptr, 4, 4, WordDepth::k10, convert::kPhaseRggb,
                                                 grey.data()));
    EXPECT_FALSE(convert::edgeDirectedRoadToGrey(words.data(), 4, 0, WordDepth::k10,
                                                 convert::kPhaseRggb, grey.data()));
    for (std::uint8_t g : grey) {
        EXPECT_EQ(g, 0xCD);
    }
}

}  // namespace
