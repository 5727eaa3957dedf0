// A stream of frames graded with one measurand: a member's chart followed from frame to frame
// gives, on still frames, exactly what grading each frame alone gives.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "ChartFrames.h"
#include "station/Failure.h"
#include "station/FrameStream.h"

namespace {
using namespace talonvireo;

station::FrameOptions quarterNyquist() {
    station::FrameOptions options;
    options.param = {0.0f, 80, 100};
    return options;
}

// A still chart under fresh noise: the stream keeps the first frame's centres; wherever the
// member locates a frame's edge at the same centre, the stream's figures are the member's bit
// for bit, and elsewhere the member's own locate moved by at most a pixel.
TEST(FrameStream, StillFramesAreTrackedAndGradeAsEachFrameAlone) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member& member = *station::findMember(members, "talonvireoSFR_raw10_HLX6C");
    const station::FrameOptions options = quarterNyquist();
    station::FrameStream stream(station::memberMeasurand(member), options);
    int same = 0;
    for (const std::uint32_t seed : {7u, 8u, 9u}) {
        const cv::Mat raw = talonvireo::testing::renderRawChart(render::ChartProject::HLX6C, 10,
                                                                4000, 3000, {}, 0.8, 1.0, seed);
        const station::GradedFrame tracked = stream.gradeWords(raw, "frame");
        EXPECT_EQ(stream.relocated(), seed == 7u) << seed;
        const station::GradedFrame alone =
            station::gradeFrameWords(member, raw, 0, options, "frame");
        ASSERT_EQ(tracked.report.rows.size(), alone.report.rows.size());
        for (std::size_t i = 0; i < alone.report.rows.size(); ++i) {
            const station::EdgeRow& a = alone.report.rows[i];
            const station::EdgeRow& t = tracked.report.rows[i];
            EXPECT_EQ(t.state, a.state) << i;
            EXPECT_LE(std::abs(t.measured.x - a.measured.x), 1) << i;
            EXPECT_LE(std::abs(t.measured.y - a.measured.y), 1) << i;
            if (t.measured.x != a.measured.x || t.measured.y != a.measured.y) {
                continue;
            }
            ++same;
            EXPECT_EQ(t.measured.sfrQuarterNyquist, a.measured.sfrQuarterNyquist) << i;
            EXPECT_EQ(t.measured.sfrHalfNyquist, a.measured.sfrHalfNyquist) << i;
            EXPECT_EQ(t.field.orientation, a.field.orientation) << i;
            EXPECT_EQ(t.flags, a.flags) << i;
        }
    }
    EXPECT_GE(same, 3 * 52 * 3 / 4);
}

TEST(FrameStream, RefusesWordsOfTheWrongTypeForAMember) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member& member = *station::findMember(members, "talonvireoSFR_raw10_HLX6C");
    station::FrameStream stream(station::memberMeasurand(member), quarterNyquist());
    const cv::Mat bytes(3000, 4000, CV_8UC1, cv::Scalar(40));
    EXPECT_THROW(stream.gradeWords(bytes, "frame"), station::Failure);
}

TEST(FrameStream, AFrameTheMemberCannotLocateFailsAndTheNextIsLocatedAfresh) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member& member = *station::findMember(members, "talonvireoSFR_raw10_HLX6C");
    station::FrameStream stream(station::memberMeasurand(member), quarterNyquist());
    const cv::Mat raw = talonvireo::testing::renderRawChart(render::ChartProject::HLX6C, 10);
    stream.gradeWords(raw, "first");
    const cv::Mat blank(3000, 4000, CV_16UC1, cv::Scalar(300));
    EXPECT_THROW(stream.gradeWords(blank, "blank"), station::Failure);
    const station::GradedFrame again = stream.gradeWords(raw, "again");
    EXPECT_TRUE(stream.relocated());
    EXPECT_EQ(again.report.rows.size(), 52u);
}

}  // namespace
