// One pass of a member over a frame: the member's own figures where it measures, and on a frame
// it fails, the chart's truth on the edges that remain with each missing edge named.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "ChartFrames.h"
#include "render/RecordTruth.h"
#include "station/EdgePlausibility.h"
#include "station/Failure.h"
#include "station/FrameJob.h"
#include "station/Members.h"

namespace {
using namespace talonvireo;
using station::EdgeState;

const station::Member& hlx6c(const std::vector<station::Member>& members) {
    return *station::findMember(members, "talonvireoSFR_raw10_HLX6C");
}

render::ChartProject project(const station::Member& member) {
    return talonvireo::testing::chartProjectNamed(member.chartName);
}

int countState(const station::FrameReport& report, EdgeState state) {
    int n = 0;
    for (const station::EdgeRow& row : report.rows) {
        n += row.state == state ? 1 : 0;
    }
    return n;
}

TEST(FrameJob, GivesTheMembersOwnFiguresOnAFrameItMeasures) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member& member = hlx6c(members);
    cv::Mat raw = talonvireo::testing::renderRawChart(project(member), 10);
    const SFRParam param{4.0f, 80, 100};
    SFRResult_HLX5 record{};
    ASSERT_EQ(
        talonvireoSFR_raw10_HLX6C(raw.ptr<std::uint16_t>(), raw.cols, raw.rows, param, record), 0);
    const station::FrameReport parts = station::measureRawFrame(member, raw, param);
    EXPECT_FALSE(parts.partial());
    ASSERT_EQ(parts.rows.size(), 52u);
    for (std::size_t i = 0; i < parts.rows.size(); ++i) {
        const station::EdgeRow& row = parts.rows[i];
        const SFREdgeResult& m = record.edges[i];
        EXPECT_EQ(row.state, EdgeState::kMeasured) << i;
        EXPECT_EQ(row.side, i < 26 ? 80 : 90) << i;
        EXPECT_EQ(row.measured.x, m.x) << i;
        EXPECT_EQ(row.measured.y, m.y) << i;
        EXPECT_EQ(row.measured.sfrQuarterNyquist, m.sfrQuarterNyquist) << i;
        EXPECT_EQ(row.measured.sfrHalfNyquist, m.sfrHalfNyquist) << i;
        EXPECT_EQ(row.measured.sfrCustom, m.sfrCustom) << i;
    }
}

// The chart's right-hand edges cut off by a narrower frame: the member fails as a whole, the
// edges left are measured and read the rendered blur's truth.
TEST(FrameJob, NamesTheEdgesOffTheFrameAndMeasuresTheRest) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member& member = hlx6c(members);
    const double sigma = 0.8;
    cv::Mat raw = talonvireo::testing::renderRawChart(project(member), 10, 3490, 3000, {}, sigma);
    const SFRParam param{0.0f, 80, 100};
    const station::FrameReport report = station::measureRawFrame(member, raw, param);
    EXPECT_TRUE(report.partial());
    EXPECT_EQ(report.memberCause, station::Cause::RegionOutOfBounds);
    EXPECT_THROW(station::requireMemberSuccess(report), station::Failure);
    ASSERT_EQ(report.rows.size(), 52u);
    EXPECT_GE(countState(report, EdgeState::kOffFrame), 1);
    EXPECT_GE(countState(report, EdgeState::kMeasured), 40);
    const std::vector<render::EntryTruth> truth =
        render::recordTruth(project(member), {}, sigma, param.markSearchSize);
    for (const station::EdgeRow& row : report.rows) {
        const render::EntryTruth& t = truth[static_cast<std::size_t>(row.index)];
        if (row.state == EdgeState::kOffFrame) {
            // Only edges whose region truly reaches past the right border.
            EXPECT_GT(t.centre.x + row.side / 2.0, 3490.0 - 2.0) << row.index;
            EXPECT_TRUE(std::isnan(row.measured.sfrQuarterNyquist)) << row.index;
            continue;
        }
        ASSERT_EQ(row.state, EdgeState::kMeasured) << row.index;
        EXPECT_NEAR(row.measured.x, t.centre.x, 2.0) << row.index;
        EXPECT_NEAR(row.measured.y, t.centre.y, 2.0) << row.index;
        EXPECT_NEAR(row.measured.sfrQuarterNyquist, t.sfrQuarter, 0.05) << row.index;
    }
}

// A flat patch painted over one edge: the search takes the patch's own border for the edge,
// 100 px from the chart's, and the hard border reads an SFR above 1. Both show.
TEST(FrameJob, APatchedEdgeIsFoundOffTheDesignAndReadsAboveOne) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member& member = hlx6c(members);
    cv::Mat raw = talonvireo::testing::renderRawChart(project(member), 10);
    const SFRParam param{0.0f, 80, 100};
    const station::FrameReport before = station::measureRawFrame(member, raw, param);
    EXPECT_LT(before.rows[5].designDistance, 3.0);
    const cv::Point target(before.rows[5].measured.x, before.rows[5].measured.y);
    const cv::Rect painted(target.x - 100, target.y - 100, 200, 200);
    cv::Mat patch = raw(painted);
    patch.setTo(cv::mean(patch));
    station::FrameReport after = station::measureRawFrame(member, raw, param);
    ASSERT_FALSE(after.partial()) << "the member itself measures the patched frame";
    const station::EdgeRow& row = after.rows[5];
    EXPECT_GT(row.designDistance, station::kDesignDistanceLimitPx);
    EXPECT_GT(row.measured.sfrQuarterNyquist, 1.0f);
    EXPECT_LT(after.fitResidual, station::kChartFitLimitPx) << "the whole chart still fits";
    station::flagImplausibleEdges(after, {});
    // The patch's mean is half-way between the chart's levels: the border is washed out too.
    EXPECT_EQ(after.rows[5].flags,
              (std::vector<std::string>{"off the design", "SFR above 1", "low contrast"}));
    // Every edge whose region the patch does not touch is found in place and unflagged.
    for (const station::EdgeRow& other : after.rows) {
        const station::EdgeRow& was = before.rows[static_cast<std::size_t>(other.index)];
        if ((was.region() & painted).empty()) {
            EXPECT_TRUE(other.flags.empty()) << other.index << ": " << other.flags.front();
        }
    }
}

TEST(FrameJob, StateTextNamesEachReason) {
    station::EdgeRow row;
    EXPECT_EQ(row.stateText(), "measured");
    row.state = EdgeState::kNotLocated;
    EXPECT_EQ(row.stateText(), "not located");
    row.state = EdgeState::kOffFrame;
    EXPECT_EQ(row.stateText(), "off the frame");
    row.state = EdgeState::kRefused;
    const std::pair<int, const char*> reasons[] = {
        {-1, "refused by the SFR: region not measurable (status -1)"},
        {-2, "refused by the SFR: edge contrast below 20 %"},
        {-3, "refused by the SFR: edge steeper than about 51 degrees"},
        {-4, "refused by the SFR: edge aligned with the pixel grid"}};
    for (const auto& [status, text] : reasons) {
        row.sfrStatus = status;
        EXPECT_EQ(row.stateText(), text);
    }
}

// Regions too small for the method: each is refused, with the region API's status.
TEST(FrameJob, GivesTheRegionApisStatusForEachRefusal) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member& member = hlx6c(members);
    cv::Mat raw = talonvireo::testing::renderRawChart(project(member), 10);
    const station::FrameReport report =
        station::measureRawFrame(member, raw, SFRParam{0.0f, 3, 100});
    ASSERT_EQ(report.rows.size(), 52u);
    for (const station::EdgeRow& row : report.rows) {
        if (row.side == 3) {
            EXPECT_EQ(row.state, EdgeState::kRefused) << row.index;
            EXPECT_EQ(row.sfrStatus, -1) << row.index;
            EXPECT_EQ(row.stateText(), "refused by the SFR: region not measurable (status -1)");
            EXPECT_EQ(report.memberFailure,
                      "SFR calculation failed on edge 0: refused by the SFR: region not "
                      "measurable (status -1)");
        } else {
            EXPECT_EQ(row.side, 90) << "the second set's fixed regions";
            EXPECT_EQ(row.state, EdgeState::kMeasured) << row.index;
        }
    }
}

TEST(FrameJob, ReportsEveryEdgeNotLocatedOnAFrameWithoutTheChart) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member& member = hlx6c(members);
    const cv::Mat raw(800, 1000, CV_16UC1, cv::Scalar(360));
    const station::FrameReport report =
        station::measureRawFrame(member, raw, SFRParam{0.0f, 80, 100});
    ASSERT_EQ(report.rows.size(), 52u);
    EXPECT_EQ(countState(report, EdgeState::kNotLocated), 52);
    EXPECT_EQ(report.memberCause, station::Cause::NotLocated);
    EXPECT_EQ(report.memberFailure, "chart not located");
    EXPECT_TRUE(std::isnan(report.fitResidual));
}

}  // namespace
