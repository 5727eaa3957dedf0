// The figures beyond a member's own, from the same pass over a whole frame: the member's own
// figures stay as they were, the precise and raw-plane figures read the rendered chart's truth.
#include <gtest/gtest.h>

#include <cmath>

#include "ChartFrames.h"
#include "render/RecordTruth.h"
#include "station/FrameJob.h"
#include "station/Members.h"

namespace {
using namespace talonvireo;

TEST(RegionFigures, LeaveTheMembersFiguresAndReadTheChartsTruth) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member* member = station::findMember(members, "talonvireoSFR_raw10_HLX6C");
    ASSERT_NE(member, nullptr);
    const double sigma = 0.8;
    cv::Mat raw =
        talonvireo::testing::renderRawChart(render::ChartProject::HLX6C, 10, 4000, 3000, {}, sigma);
    const SFRParam param{0.0f, 80, 100};
    const station::FrameReport plain = station::measureRawFrame(*member, raw, param);
    station::MeasureOptions more;
    more.precise = true;
    more.planes = true;
    const station::FrameReport report = station::measureRawFrame(*member, raw, param, more);
    ASSERT_TRUE(report.hasPrecise);
    ASSERT_TRUE(report.hasPlanes);
    const std::vector<render::EntryTruth> truth =
        render::recordTruth(render::ChartProject::HLX6C, {}, sigma, 100);
    ASSERT_EQ(report.rows.size(), plain.rows.size());
    for (std::size_t i = 0; i < report.rows.size(); ++i) {
        const station::EdgeRow& row = report.rows[i];
        const SFREdgeResult& before = plain.rows[i].measured;
        // Bit for bit the member's record.
        EXPECT_EQ(row.measured.x, before.x);
        EXPECT_EQ(row.measured.y, before.y);
        EXPECT_EQ(row.measured.sfrQuarterNyquist, before.sfrQuarterNyquist);
        EXPECT_EQ(row.measured.sfrHalfNyquist, before.sfrHalfNyquist);
        EXPECT_EQ(row.precise.status, 0) << i;
        EXPECT_TRUE(std::isfinite(row.mtf50)) << i;
        // The raw planes see the optics without any demosaic: the true SFR within 0.01.
        ASSERT_EQ(row.planes.size(), 4u);
        for (const CurveFigures& plane : row.planes) {
            ASSERT_EQ(plane.status, 0) << i << " " << plane.channel;
            EXPECT_NEAR(plane.sfrQuarterNyquist, truth[i].sfrQuarter, 0.01)
                << i << " " << plane.channel;
            EXPECT_NEAR(plane.sfrHalfNyquist, truth[i].sfrHalf, 0.01) << i << " " << plane.channel;
        }
    }
}

}  // namespace
