// A failed frame measured region by region: the member's own figures where the member would
// have measured, the chart's truth on the edges that remain, and each missing edge named.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "ChartFrames.h"
#include "render/RecordTruth.h"
#include "station/Failure.h"
#include "station/FrameJob.h"
#include "station/Members.h"
#include "station/RegionByRegion.h"
#include "station/RegionFigures.h"

namespace {
using namespace talonvireo;
using station::EdgeState;

const station::Member& hlx6c(const std::vector<station::Member>& members) {
    return *station::findMember(members, "talonvireoSFR_raw10_HLX6C");
}

int countState(const station::FrameReport& report, EdgeState state) {
    int n = 0;
    for (const station::EdgeRow& row : report.rows) {
        n += row.state == state ? 1 : 0;
    }
    return n;
}

TEST(RegionByRegion, GivesTheMembersOwnFiguresOnAFrameItMeasures) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member& member = hlx6c(members);
    cv::Mat raw = talonvireo::testing::renderRawChart(member.project, 10);
    const SFRParam param{4.0f, 80, 100};
    const station::FrameReport whole = station::measureRawFrame(member, raw, param);
    const station::FrameReport parts =
        station::measureRegionByRegion(member, station::memberGrey(member, raw), param);
    ASSERT_EQ(parts.rows.size(), whole.rows.size());
    for (std::size_t i = 0; i < parts.rows.size(); ++i) {
        const station::EdgeRow& row = parts.rows[i];
        const SFREdgeResult& m = whole.rows[i].measured;
        EXPECT_EQ(row.state, EdgeState::kMeasured) << i;
        EXPECT_EQ(row.side, whole.rows[i].side) << i;
        EXPECT_EQ(row.measured.x, m.x) << i;
        EXPECT_EQ(row.measured.y, m.y) << i;
        EXPECT_EQ(row.measured.sfrQuarterNyquist, m.sfrQuarterNyquist) << i;
        EXPECT_EQ(row.measured.sfrHalfNyquist, m.sfrHalfNyquist) << i;
        EXPECT_EQ(row.measured.sfrCustom, m.sfrCustom) << i;
    }
}

// The chart's right-hand edges cut off by a narrower frame: the member fails as a whole, the
// edges left are measured and read the rendered blur's truth.
TEST(RegionByRegion, NamesTheEdgesOffTheFrameAndMeasuresTheRest) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member& member = hlx6c(members);
    const double sigma = 0.8;
    cv::Mat raw = talonvireo::testing::renderRawChart(member.project, 10, 3490, 3000, {}, sigma);
    const SFRParam param{0.0f, 80, 100};
    EXPECT_THROW(station::measureRawFrame(member, raw, param), station::Failure);
    const station::FrameReport report =
        station::measureRegionByRegion(member, station::memberGrey(member, raw), param);
    ASSERT_EQ(report.rows.size(), 52u);
    EXPECT_GE(countState(report, EdgeState::kOffFrame), 1);
    EXPECT_GE(countState(report, EdgeState::kMeasured), 40);
    const std::vector<render::EntryTruth> truth =
        render::recordTruth(member.project, {}, sigma, param.markSearchSize);
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

// The neighbourhood of one edge flattened to a twentieth of its contrast: the SFR refuses that
// edge's region and says why, and every other edge is still measured.
TEST(RegionByRegion, NamesARegionTheSfrRefuses) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member& member = hlx6c(members);
    cv::Mat raw = talonvireo::testing::renderRawChart(member.project, 10);
    const SFRParam param{0.0f, 80, 100};
    cv::Mat grey = station::memberGrey(member, raw);
    const station::FrameReport before = station::measureRegionByRegion(member, grey, param);
    const cv::Point target(before.rows[5].measured.x, before.rows[5].measured.y);
    cv::Mat patch = grey(cv::Rect(target.x - 100, target.y - 100, 200, 200));
    const double mean = cv::mean(patch)[0];
    patch.convertTo(patch, CV_8U, 0.05, mean * 0.95);
    const station::FrameReport after = station::measureRegionByRegion(member, grey, param);
    ASSERT_EQ(after.rows.size(), before.rows.size());
    // The locator places the faded edge elsewhere in the faded patch (at 25 px or more), where
    // the region API refuses what it finds.
    for (const station::EdgeRow& row : after.rows) {
        if (row.index == 5) {
            EXPECT_EQ(row.state, EdgeState::kRefused);
            EXPECT_TRUE(row.sfrStatus == -2 || row.sfrStatus == -3 || row.sfrStatus == -4)
                << row.sfrStatus;
            EXPECT_EQ(row.stateText().rfind("refused by the SFR: edge ", 0), 0u) << row.stateText();
            EXPECT_TRUE(std::isnan(row.measured.sfrQuarterNyquist));
        } else {
            EXPECT_EQ(row.state, EdgeState::kMeasured) << row.index;
        }
    }
}

TEST(RegionByRegion, StateTextNamesEachReason) {
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
TEST(RegionByRegion, GivesTheRegionApisStatusForEachRefusal) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member& member = hlx6c(members);
    cv::Mat raw = talonvireo::testing::renderRawChart(member.project, 10);
    const station::FrameReport report = station::measureRegionByRegion(
        member, station::memberGrey(member, raw), SFRParam{0.0f, 3, 100});
    ASSERT_EQ(report.rows.size(), 52u);
    for (const station::EdgeRow& row : report.rows) {
        if (row.side == 3) {
            EXPECT_EQ(row.state, EdgeState::kRefused) << row.index;
            EXPECT_EQ(row.sfrStatus, -1) << row.index;
            EXPECT_EQ(row.stateText(), "refused by the SFR: region not measurable (status -1)");
        } else {
            EXPECT_EQ(row.side, 90) << "the second set's fixed regions";
            EXPECT_EQ(row.state, EdgeState::kMeasured) << row.index;
        }
    }
}

TEST(RegionByRegion, ReportsEveryEdgeNotLocatedOnAFrameWithoutTheChart) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member& member = hlx6c(members);
    const cv::Mat grey(800, 1000, CV_8UC1, cv::Scalar(90));
    const station::FrameReport report =
        station::measureRegionByRegion(member, grey, SFRParam{0.0f, 80, 100});
    ASSERT_EQ(report.rows.size(), 52u);
    EXPECT_EQ(countState(report, EdgeState::kNotLocated), 52);
    EXPECT_TRUE(std::isnan(station::chartFitResidual(member, report)));
}

}  // namespace
