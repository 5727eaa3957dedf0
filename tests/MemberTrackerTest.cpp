// The tracker against the members themselves: on a still chart every frame after the first is
// the member's own record, bit for bit, measured from the regions alone; on a moving chart the
// tracked centres stay within a pixel of where the member locates the edges; a chart that
// jumps is located afresh; bad input is refused.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <vector>

#include "ChartFrames.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;

const MemberInfo& member(const char* name) {
    return *findMember(name);
}

render::ChartProject projectOf(const MemberInfo& m) {
    return talonvireo::testing::chartProjectNamed(m.chartName);
}

cv::Mat frameOf(const MemberInfo& m, double shiftX = 0.0, double shiftY = 0.0) {
    render::ChartTransform t;
    t.shiftX = shiftX;
    t.shiftY = shiftY;
    return talonvireo::testing::renderRawChart(projectOf(m), m.bits, 4000, 3000, t);
}

MemberFrameReport wholeFrame(const MemberInfo& m, const cv::Mat& raw, const SFRParam& param) {
    MemberFrameReport r;
    EXPECT_EQ(measureMemberFrame(m, raw.ptr<std::uint16_t>(), raw.cols, raw.rows, param, {}, r), 0);
    return r;
}

TEST(MemberTracker, OnAStillChartEveryFrameIsTheMembersRecordBitForBit) {
    for (const char* name : {"talonvireoSFR_raw10_HLX6C", "talonvireoSFR/K31R22BX",
                             "talonvireoSFR_raw10_RQ8", "talonvireoSFR_raw16"}) {
        SCOPED_TRACE(name);
        const MemberInfo& m = member(name);
        const SFRParam param{4.0f, 80, 100};
        const cv::Mat raw = frameOf(m);
        const MemberFrameReport truth = wholeFrame(m, raw, param);
        ASSERT_EQ(truth.memberStatus, 0);
        MemberTracker tracker(m, param);
        for (int frame = 0; frame < 3; ++frame) {
            MemberFrameReport r;
            ASSERT_EQ(tracker.measure(raw.ptr<std::uint16_t>(), raw.cols, raw.rows, r), 0);
            EXPECT_EQ(tracker.relocated(), frame == 0);
            EXPECT_EQ(r.memberStatus, 0);
            ASSERT_EQ(r.slots.size(), truth.slots.size());
            for (std::size_t k = 0; k < r.slots.size(); ++k) {
                const SlotReport& a = r.slots[k];
                const SlotReport& b = truth.slots[k];
                EXPECT_EQ(a.x, b.x) << k;
                EXPECT_EQ(a.y, b.y) << k;
                EXPECT_EQ(a.side, b.side) << k;
                EXPECT_EQ(a.sfrQuarterNyquist, b.sfrQuarterNyquist) << k;
                EXPECT_EQ(a.sfrHalfNyquist, b.sfrHalfNyquist) << k;
                EXPECT_EQ(a.sfrCustom, b.sfrCustom) << k;
                EXPECT_EQ(a.mtf50, b.mtf50) << k;
                EXPECT_EQ(a.snr, b.snr) << k;
            }
        }
    }
}

// The member locates its edges to whole pixels, so its centres jump by a pixel as the chart
// moves by fractions of one; the tracker moves its centres by the shift the edges show. Each
// tracked centre moves with the chart within a quarter pixel of the true shift, and lies within
// 2 px of the member's own centre on every frame (the member's whole pixels either side).
TEST(MemberTracker, FollowsAMovingChartByTheShiftItsEdgesShow) {
    const MemberInfo& m = member("talonvireoSFR_raw10_HLX6C");
    const SFRParam param{0.0f, 80, 100};
    MemberTracker tracker(m, param);
    const double path[][2] = {{0.0, 0.0}, {0.4, -0.3}, {1.3, 0.2}, {2.6, 1.1}, {4.2, 2.9}};
    std::vector<EdgeCentre> first;
    double worstShift = 0.0, worstMember = 0.0;
    int relocations = 0;
    for (const auto& p : path) {
        const cv::Mat raw = frameOf(m, p[0], p[1]);
        MemberFrameReport r;
        ASSERT_EQ(tracker.measure(raw.ptr<std::uint16_t>(), raw.cols, raw.rows, r), 0);
        relocations += tracker.relocated() ? 1 : 0;
        ASSERT_EQ(r.memberStatus, 0);
        if (first.empty()) {
            for (const SlotReport& s : r.slots) {
                first.push_back(s.centre);
            }
        }
        const MemberFrameReport truth = wholeFrame(m, raw, param);
        for (std::size_t k = 0; k < r.slots.size(); ++k) {
            const EdgeCentre c = r.slots[k].centre;
            const double moved = std::hypot(c.x - first[k].x - p[0], c.y - first[k].y - p[1]);
            const double apart =
                std::hypot(c.x - truth.slots[k].centre.x, c.y - truth.slots[k].centre.y);
            worstShift = std::max(worstShift, moved);
            worstMember = std::max(worstMember, apart);
            EXPECT_LE(moved, 0.25) << "slot " << k << " at shift " << p[0] << ", " << p[1];
            EXPECT_LE(apart, 2.0) << "slot " << k << " at shift " << p[0] << ", " << p[1];
        }
    }
    std::printf(
        "[ tracker ] moving chart: %d relocation(s) in 5 frames; centres move with the "
        "chart within %.3f px, and lie within %.2f px of the member's whole-pixel "
        "centres\n",
        relocations, worstShift, worstMember);
    EXPECT_EQ(relocations, 1);  // the first frame only
}

TEST(MemberTracker, LocatesAfreshWhenTheChartJumps) {
    const MemberInfo& m = member("talonvireoSFR_raw10_HLX6C");
    const SFRParam param{0.0f, 80, 100};
    MemberTracker tracker(m, param);
    MemberFrameReport r;
    const cv::Mat still = frameOf(m);
    ASSERT_EQ(tracker.measure(still.ptr<std::uint16_t>(), still.cols, still.rows, r), 0);
    const cv::Mat jumped = frameOf(m, 60.0, -45.0);
    ASSERT_EQ(tracker.measure(jumped.ptr<std::uint16_t>(), jumped.cols, jumped.rows, r), 0);
    EXPECT_TRUE(tracker.relocated());
    const MemberFrameReport truth = wholeFrame(m, jumped, param);
    for (std::size_t k = 0; k < r.slots.size(); ++k) {
        EXPECT_EQ(r.slots[k].sfrQuarterNyquist, truth.slots[k].sfrQuarterNyquist) << k;
    }
}

TEST(MemberTracker, RefusesBadInputAndLeavesTheReportAlone) {
    const MemberInfo& m = member("talonvireoSFR_raw10_HLX6C");
    MemberTracker tracker(m, SFRParam{0.0f, 80, 100});
    MemberFrameReport r;
    r.width = 7;
    const std::uint16_t words[4] = {0, 0, 0, 0};
    EXPECT_EQ(tracker.measure(nullptr, 4000, 3000, r), -1);
    EXPECT_EQ(tracker.measure(words, 0, 2, r), -1);
    EXPECT_EQ(tracker.measure(words, 2, -2, r), -1);
    EXPECT_EQ(tracker.measure(words, 1 << 16, 1 << 16, r), -1);
    EXPECT_EQ(r.width, 7);
    EXPECT_TRUE(tracker.centres().empty());
    // A frame with no chart: the member's own answer, and nothing to follow.
    const cv::Mat flat(300, 400, CV_16UC1, cv::Scalar(300));
    ASSERT_EQ(tracker.measure(flat.ptr<std::uint16_t>(), flat.cols, flat.rows, r), 0);
    EXPECT_NE(r.memberStatus, 0);
    EXPECT_TRUE(tracker.centres().empty());
}

}  // namespace
