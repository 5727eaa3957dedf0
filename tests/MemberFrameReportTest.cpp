// The frame report against the members themselves: every member's record reproduced bit for
// bit, its status on frames it fails, and the figures beyond the record read off the same
// regions.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "ChartFrames.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;

// Calls the exported member of `row` and returns its status and entries.
int callMember(const MemberInfo& row, const cv::Mat& raw, SFRParam param,
               std::vector<SFREdgeResult>& entries) {
    const std::uint16_t* w = raw.ptr<std::uint16_t>();
    const int c = raw.cols, r = raw.rows;
    const std::string name = row.name;
    SFRResult full{};
    SFRResult_HLX5 hlx5{};
    int status = -99;
    if (name == "talonvireoSFR/K31R22BX")
        status = talonvireoSFR(w, c, r, param, full);
    if (name == "talonvireoSFR/K74T16BX")
        status = talonvireoSFR(w, c, r, param, hlx5);
    if (name == "talonvireoSFR_raw14/K31R22BX")
        status = talonvireoSFR_raw14(w, c, r, param, full);
    if (name == "talonvireoSFR_raw14/K74T16BX")
        status = talonvireoSFR_raw14(w, c, r, param, hlx5);
    if (name == "talonvireoSFR_raw16")
        status = talonvireoSFR_raw16(w, c, r, param, hlx5);
    if (name == "talonvireoSFR_raw16_HLX5_8K")
        status = talonvireoSFR_raw16_HLX5_8K(w, c, r, param, hlx5);
    if (name == "talonvireoSFR_raw10_HLX6C")
        status = talonvireoSFR_raw10_HLX6C(w, c, r, param, hlx5);
    if (name == "talonvireoSFR_raw14_HLX6C")
        status = talonvireoSFR_raw14_HLX6C(w, c, r, param, hlx5);
    if (name == "talonvireoSFR_raw16_HLX6C")
        status = talonvireoSFR_raw16_HLX6C(w, c, r, param, hlx5);
    if (name == "talonvireoSFR_raw16_HLX6C_8K")
        status = talonvireoSFR_raw16_HLX6C_8K(w, c, r, param, hlx5);
    if (name == "talonvireoSFR_raw10_RQ8")
        status = talonvireoSFR_raw10_RQ8(w, c, r, param, hlx5);
    if (name == "talonvireoSFR_raw14_RQ8")
        status = talonvireoSFR_raw14_RQ8(w, c, r, param, hlx5);
    if (name == "talonvireoSFR_raw16_RQ8")
        status = talonvireoSFR_raw16_RQ8(w, c, r, param, hlx5);
    if (row.record == MemberRecord::kSFRResult) {
        entries.assign(std::begin(full.edges), std::end(full.edges));
    } else {
        entries.assign(std::begin(hlx5.edges), std::end(hlx5.edges));
    }
    return status;
}

cv::Mat frameFor(const MemberInfo& row, int width = 0) {
    const int w = width > 0 ? width : row.eightK ? 7680 : 4000;
    const int h = row.eightK ? 4320 : 3000;
    return talonvireo::testing::renderRawChart(
        talonvireo::testing::chartProjectNamed(row.chartName), row.bits, w, h, {}, 0.9, 2.0);
}

bool sameBits(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

class MemberFrameReportOf : public ::testing::TestWithParam<int> {};

TEST_P(MemberFrameReportOf, EveryMembersRecordBitForBit) {
    const MemberInfo& row = memberTable().rows[GetParam()];
    const cv::Mat raw = frameFor(row);
    const SFRParam param{6.0f, 80, 100};
    std::vector<SFREdgeResult> record;
    ASSERT_EQ(callMember(row, raw, param, record), 0) << row.name;
    MemberFrameReport report;
    ASSERT_EQ(
        measureMemberFrame(row, raw.ptr<std::uint16_t>(), raw.cols, raw.rows, param, {}, report),
        0);
    EXPECT_EQ(report.memberStatus, 0);
    ASSERT_EQ(report.slots.size(), static_cast<std::size_t>(row.slots));
    for (int i = 0; i < row.slots; ++i) {
        const SlotReport& s = report.slots[static_cast<std::size_t>(i)];
        const SFREdgeResult& e = record[static_cast<std::size_t>(i)];
        EXPECT_EQ(s.state, SlotState::kMeasured) << i;
        EXPECT_EQ(s.x, e.x) << i;
        EXPECT_EQ(s.y, e.y) << i;
        EXPECT_EQ(s.side, row.regionSide(i, 80)) << i;
        EXPECT_TRUE(sameBits(s.sfrQuarterNyquist, e.sfrQuarterNyquist)) << i;
        EXPECT_TRUE(sameBits(s.sfrHalfNyquist, e.sfrHalfNyquist)) << i;
        EXPECT_TRUE(sameBits(s.sfrCustom, e.sfrCustom)) << i;
        EXPECT_LT(s.designDistance, 3.0) << i;
        EXPECT_EQ(s.clippedShare, 0.0) << i;
    }
    EXPECT_LT(report.fitResidual, 2.0);
}

INSTANTIATE_TEST_SUITE_P(EveryMember, MemberFrameReportOf, ::testing::Range(0, 13),
                         [](const ::testing::TestParamInfo<int>& info) {
                             std::string name = memberTable().rows[info.param].name;
                             for (char& c : name) {
                                 c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
                             }
                             return name;
                         });

// A frame cut short on the right: the member fails with its status, the report says which
// edges left the frame and measures every other.
TEST(MemberFrameReport, GivesTheMembersStatusAndMeasuresTheRestOnAFrameItFails) {
    const MemberInfo& row = *findMember("talonvireoSFR_raw10_HLX6C");
    const cv::Mat raw = frameFor(row, 3490);
    const SFRParam param{0.0f, 80, 100};
    std::vector<SFREdgeResult> record;
    const int status = callMember(row, raw, param, record);
    EXPECT_NE(status, 0);
    MemberFrameReport report;
    ASSERT_EQ(
        measureMemberFrame(row, raw.ptr<std::uint16_t>(), raw.cols, raw.rows, param, {}, report),
        0);
    EXPECT_EQ(report.memberStatus, status);
    int off = 0, measured = 0;
    for (const SlotReport& s : report.slots) {
        off += s.state == SlotState::kOffFrame ? 1 : 0;
        measured += s.state == SlotState::kMeasured ? 1 : 0;
        if (s.state == SlotState::kOffFrame) {
            EXPECT_GT(s.x + s.side / 2, 3490) << "only regions past the right border";
            EXPECT_TRUE(std::isnan(s.sfrQuarterNyquist));
        }
    }
    EXPECT_GE(off, 1);
    EXPECT_GE(measured, 40);
}

// MTF50 and the edge angle are the classic curve's, read off the very region the member cut.
TEST(MemberFrameReport, Mtf50AndAngleAreTheClassicCurvesOfTheSameRegion) {
    const MemberInfo& row = *findMember("talonvireoSFR_raw10_HLX6C");
    const cv::Mat raw = frameFor(row);
    MemberFrameReport report;
    ASSERT_EQ(measureMemberFrame(row, raw.ptr<std::uint16_t>(), raw.cols, raw.rows,
                                 SFRParam{0.0f, 80, 100}, {}, report),
              0);
    cv::Mat grey(raw.rows, raw.cols, CV_8UC1);
    ASSERT_EQ(rawFrameToGrey(raw.ptr<std::uint16_t>(), raw.cols, raw.rows, 10, row.road, grey.data),
              0);
    for (int i : {0, 13, 40}) {
        const SlotReport& s = report.slots[static_cast<std::size_t>(i)];
        const cv::Mat region =
            grey(cv::Rect(s.x - s.side / 2, s.y - s.side / 2, s.side, s.side)).clone();
        SfrCurve curve;
        ASSERT_EQ(
            measureSfrCurve(region.data, region.cols, region.rows, PixelFormat::Grey8, {}, curve),
            0);
        EXPECT_EQ(s.mtf50, curve.channels[0].mtf50) << i;
        EXPECT_EQ(s.edgeAngle, curve.channels[0].edgeAngle) << i;
    }
}

// The precise figures of every measured slot are measureSfrCurve's precise method on the same
// grey region, bit for bit, though they start from the member's own pass over it.
TEST(MemberFrameReport, PreciseFiguresAreTheRegionsOwnPreciseCurve) {
    const MemberInfo& row = *findMember("talonvireoSFR_raw10_HLX6C");
    const cv::Mat raw = frameFor(row);
    MemberFrameOptions options;
    options.precise = true;
    MemberFrameReport report;
    ASSERT_EQ(measureMemberFrame(row, raw.ptr<std::uint16_t>(), raw.cols, raw.rows,
                                 SFRParam{6.0f, 80, 100}, options, report),
              0);
    cv::Mat grey(raw.rows, raw.cols, CV_8UC1);
    ASSERT_EQ(rawFrameToGrey(raw.ptr<std::uint16_t>(), raw.cols, raw.rows, 10, row.road, grey.data),
              0);
    SfrCurveOptions precise;
    precise.method = SfrMethod::kPrecise;
    precise.frequencies = {0.125, 0.25, 0.5 / 6.0};
    int measured = 0;
    for (const SlotReport& s : report.slots) {
        ASSERT_EQ(s.state, SlotState::kMeasured);
        const cv::Mat region =
            grey(cv::Rect(s.x - s.side / 2, s.y - s.side / 2, s.side, s.side)).clone();
        SfrCurve curve;
        ASSERT_EQ(measureSfrCurve(region.data, region.cols, region.rows, PixelFormat::Grey8,
                                  precise, curve),
                  0);
        const SfrChannelCurve& c = curve.channels.at(0);
        EXPECT_EQ(s.precise.status, 0);
        EXPECT_EQ(s.precise.channel, "grey");
        EXPECT_EQ(s.precise.sfrQuarterNyquist, c.sfrAt[0]);
        EXPECT_EQ(s.precise.sfrHalfNyquist, c.sfrAt[1]);
        EXPECT_EQ(s.precise.sfrCustom, c.sfrAt[2]);
        EXPECT_EQ(s.precise.mtf50, c.mtf50);
        ++measured;
    }
    EXPECT_EQ(measured, 52);
}

// The plateaus and noise of rendered edges: the chart's levels, and an SNR that falls as the
// read noise grows.
TEST(MemberFrameReport, ContrastAndSnrFollowTheRenderedLevelsAndNoise) {
    const MemberInfo& row = *findMember("talonvireoSFR_raw10_HLX6C");
    double snr[2];
    for (int k = 0; k < 2; ++k) {
        const cv::Mat raw = talonvireo::testing::renderRawChart(
            render::ChartProject::HLX6C, 10, 4000, 3000, {}, 0.9, k == 0 ? 1.0 : 12.0);
        MemberFrameReport report;
        ASSERT_EQ(measureMemberFrame(row, raw.ptr<std::uint16_t>(), raw.cols, raw.rows,
                                     SFRParam{0.0f, 80, 100}, {}, report),
                  0);
        const SlotReport& s = report.slots[3];
        ASSERT_EQ(s.state, SlotState::kMeasured);
        EXPECT_GT(s.contrast, 3.0);
        EXPECT_LT(s.darkLevel, s.lightLevel);
        snr[k] = s.snr;
    }
    EXPECT_GT(snr[0], 3.0 * snr[1]);
}

TEST(MemberFrameReport, RefusesBadInputAndLeavesTheReportAlone) {
    const MemberInfo& row = *findMember("talonvireoSFR_raw10_HLX6C");
    std::vector<std::uint16_t> words(400 * 300, 100);
    MemberFrameReport report;
    report.width = -5;
    const SFRParam good{0.0f, 80, 100};
    EXPECT_EQ(measureMemberFrame(row, nullptr, 400, 300, good, {}, report), -1);
    EXPECT_EQ(measureMemberFrame(row, words.data(), 0, 300, good, {}, report), -1);
    EXPECT_EQ(measureMemberFrame(row, words.data(), 400, -3, good, {}, report), -1);
    EXPECT_EQ(measureMemberFrame(row, words.data(), 100000, 100000, good, {}, report), -1);
    EXPECT_EQ(measureMemberFrame(row, words.data(), 400, 300, SFRParam{0.0f, 120, 100}, {}, report),
              -1);
    EXPECT_EQ(measureMemberFrame(row, words.data(), 400, 300, SFRParam{0.0f, 80, 201}, {}, report),
              -1);
    MemberInfo stranger = row;  // not a row of the table
    EXPECT_EQ(measureMemberFrame(stranger, words.data(), 400, 300, good, {}, report), -1);
    EXPECT_EQ(report.width, -5);
    EXPECT_EQ(findMember("talonvireoSFR_raw12"), nullptr);
    EXPECT_EQ(findMember(nullptr), nullptr);
}

TEST(MemberFrameReport, OnAFlatFrameEverySlotIsNotLocated) {
    const MemberInfo& row = *findMember("talonvireoSFR_raw10_RQ8");
    std::vector<std::uint16_t> words(1000 * 800, 300);
    MemberFrameReport report;
    ASSERT_EQ(measureMemberFrame(row, words.data(), 1000, 800, SFRParam{0.0f, 80, 100}, {}, report),
              0);
    EXPECT_EQ(report.memberStatus, -2);
    EXPECT_EQ(report.roiSize, 90);
    for (const SlotReport& s : report.slots) {
        EXPECT_EQ(s.state, SlotState::kNotLocated);
    }
    EXPECT_TRUE(std::isnan(report.fitResidual));
}

TEST(MemberTable, HoldsTheThirteenMembersWithTheirRecordsAndRules) {
    const MemberTable table = memberTable();
    ASSERT_EQ(table.count, 13);
    int forced = 0, fixedSecond = 0, full = 0;
    for (int i = 0; i < table.count; ++i) {
        const MemberInfo& m = table.rows[i];
        EXPECT_EQ(findMember(m.name), &m);
        EXPECT_EQ(m.slots, m.record == MemberRecord::kSFRResult ? 68 : 52);
        forced += m.regionRule == RegionRule::kForced90 ? 1 : 0;
        fixedSecond += m.regionRule == RegionRule::kFixedSecondLayout ? 1 : 0;
        full += m.record == MemberRecord::kSFRResult ? 1 : 0;
    }
    EXPECT_EQ(forced, 3);
    EXPECT_EQ(fixedSecond, 4);
    EXPECT_EQ(full, 2);
}

}  // namespace
