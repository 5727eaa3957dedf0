// The members' locate stage on its own: the same centres as every member's record, NaN where
// nothing was found, and refusals that write nothing.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "ChartFrames.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;

constexpr int kCapacity = 68;

class MemberEdgeLocate : public ::testing::TestWithParam<std::string> {};

// One member of each chart and scale: its record's centres are the located ones truncated.
TEST_P(MemberEdgeLocate, GivesTheCentresOfTheMembersRecord) {
    const MemberInfo* member = findMember(GetParam().c_str());
    ASSERT_NE(member, nullptr);
    const int width = member->eightK ? 7680 : 4000;
    const int height = member->eightK ? 4320 : 3000;
    cv::Mat raw = talonvireo::testing::renderRawChart(
        talonvireo::testing::chartProjectNamed(member->chartName), member->bits, width, height);
    const SFRParam param{0.0f, 80, 100};
    MemberFrameReport report;
    ASSERT_EQ(
        measureMemberFrame(*member, raw.ptr<std::uint16_t>(), width, height, param, {}, report), 0);
    ASSERT_EQ(report.memberStatus, 0);

    cv::Mat grey(height, width, CV_8UC1);
    ASSERT_EQ(rawFrameToGrey(raw.ptr<std::uint16_t>(), width, height, member->bits, member->road,
                             grey.data),
              0);
    std::vector<EdgeCentre> centres(kCapacity, EdgeCentre{-7.0f, -7.0f});
    const int count = locateMemberEdges(grey.data, width, height, member->chart,
                                        param.markSearchSize, centres.data(), kCapacity);
    ASSERT_EQ(count, static_cast<int>(report.slots.size()));
    EXPECT_EQ(count, member->slots);
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(static_cast<int>(centres[i].x), report.slots[i].x) << i;
        EXPECT_EQ(static_cast<int>(centres[i].y), report.slots[i].y) << i;
    }
    // Beyond the count nothing is written.
    for (int i = count; i < kCapacity; ++i) {
        EXPECT_EQ(centres[i].x, -7.0f) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(EveryChart, MemberEdgeLocate,
                         ::testing::Values("talonvireoSFR/K31R22BX", "talonvireoSFR/K74T16BX",
                                           "talonvireoSFR_raw16_HLX5_8K",
                                           "talonvireoSFR_raw10_HLX6C",
                                           "talonvireoSFR_raw16_HLX6C_8K",
                                           "talonvireoSFR_raw10_RQ8"),
                         [](const ::testing::TestParamInfo<std::string>& info) {
                             std::string name = info.param;
                             for (char& c : name) {
                                 c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
                             }
                             return name;
                         });

TEST(MemberEdgeLocateOnAFrameWithoutTheChart, ReadsNanInEverySlot) {
    const cv::Mat grey(3000, 4000, CV_8UC1, cv::Scalar(120));
    std::vector<EdgeCentre> centres(kCapacity, EdgeCentre{1.0f, 1.0f});
    ASSERT_EQ(locateMemberEdges(grey.data, grey.cols, grey.rows, MemberChart::kHLX6C, 100,
                                centres.data(), kCapacity),
              52);
    for (int i = 0; i < 52; ++i) {
        EXPECT_TRUE(std::isnan(centres[i].x) && std::isnan(centres[i].y)) << i;
    }
}

TEST(MemberEdgeLocateRefusals, WriteNothing) {
    const cv::Mat grey(300, 400, CV_8UC1, cv::Scalar(120));
    std::vector<EdgeCentre> centres(kCapacity, EdgeCentre{3.0f, 4.0f});
    unsigned char* g = grey.data;
    EdgeCentre* c = centres.data();
    const MemberChart hlx = MemberChart::kHLX6C;
    EXPECT_EQ(locateMemberEdges(nullptr, 400, 300, hlx, 100, c, kCapacity), -1);
    EXPECT_EQ(locateMemberEdges(g, 400, 300, hlx, 100, nullptr, kCapacity), -1);
    EXPECT_EQ(locateMemberEdges(g, 0, 300, hlx, 100, c, kCapacity), -1);
    EXPECT_EQ(locateMemberEdges(g, 400, -1, hlx, 100, c, kCapacity), -1);
    // A size past 2^31 - 1 pixels is refused before anything is read.
    EXPECT_EQ(locateMemberEdges(g, 65536, 65536, hlx, 100, c, kCapacity), -1);
    EXPECT_EQ(locateMemberEdges(g, 400, 300, static_cast<MemberChart>(6), 100, c, kCapacity), -1);
    EXPECT_EQ(locateMemberEdges(g, 400, 300, static_cast<MemberChart>(-1), 100, c, kCapacity), -1);
    EXPECT_EQ(locateMemberEdges(g, 400, 300, hlx, 0, c, kCapacity), -1);
    EXPECT_EQ(locateMemberEdges(g, 400, 300, hlx, 201, c, kCapacity), -1);
    EXPECT_EQ(locateMemberEdges(g, 400, 300, hlx, 100, c, 51), -1);
    EXPECT_EQ(locateMemberEdges(g, 400, 300, MemberChart::kK31R22BX, 100, c, 67), -1);
    for (const EdgeCentre& centre : centres) {
        EXPECT_EQ(centre.x, 3.0f);
        EXPECT_EQ(centre.y, 4.0f);
    }
    // The smallest frames run and find nothing.
    const cv::Mat tiny(2, 2, CV_8UC1, cv::Scalar(0));
    EXPECT_EQ(locateMemberEdges(tiny.data, 2, 2, MemberChart::kK83P09BQ, 1, c, kCapacity), 52);
}

}  // namespace
