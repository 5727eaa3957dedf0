// A frame measured as a chart: the built-in descriptions put every member slot where the member
// finds it, auto mode finds every edge of every built-in chart, and the frames that hold no
// chart or another chart say so.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "ChartFrames.h"
#include "station/BuiltinCharts.h"
#include "station/ChartJob.h"
#include "station/Failure.h"
#include "station/FrameJob.h"
#include "station/Members.h"
#include "talonvireo/PixelFormat.h"

namespace {
using namespace talonvireo;
using station::EdgeState;

// The first member of each built-in chart, at its own depth.
const char* const kMembers[] = {"talonvireoSFR/K74T16BX", "talonvireoSFR_raw10_RQ8",
                                "talonvireoSFR_raw10_HLX6C", "talonvireoSFR/K31R22BX"};

// HLX6C's slots lie within 2 px of its member's centres. The other members' own centres
// stray a little further along their edges from where their charts' designs put them (the
// farthest: K74T16BX's slot 12, 2.06 px), and the descriptions hold the designs.
double slotTolerance(const std::string& chart) {
    return chart == "HLX6C" ? 2.0 : 2.5;
}

station::ChartFrame mosaicFrame(const cv::Mat& raw, int bits) {
    station::ChartFrame f;
    f.image = raw;
    f.format = PixelFormat::Bayer16 + PixelFormat::PhaseRG;
    f.bits = bits;
    return f;
}

station::ChartChoice described(const std::string& name) {
    return station::chooseChart(name);
}

TEST(ChartJob, EveryBuiltInChartsSlotsLieWithinTwoPixelsOfTheMembersCentres) {
    const std::vector<station::Member> members = station::allMembers();
    for (const char* name : kMembers) {
        const station::Member& member = *station::findMember(members, name);
        SCOPED_TRACE(member.name);
        const cv::Mat raw = talonvireo::testing::renderRawChart(
            talonvireo::testing::chartProjectNamed(member.chartName), member.bits);
        const SFRParam param{0.0f, 80, 100};
        const station::FrameReport byMember = station::measureRawFrame(member, raw, param);
        ASSERT_FALSE(byMember.partial());
        station::FrameOptions options;
        const station::GradedFrame byChart = station::gradeChartFrame(
            described(member.chartName), mosaicFrame(raw, member.bits), options, "");
        ASSERT_EQ(byChart.report.rows.size(), byMember.rows.size());
        double worst = 0.0;
        for (std::size_t k = 0; k < byMember.rows.size(); ++k) {
            const station::EdgeRow& slot = byChart.report.rows[k];
            const EdgeCentre located = byMember.rows[k].centre;
            EXPECT_EQ(slot.index, static_cast<int>(k));
            EXPECT_EQ(slot.state, EdgeState::kMeasured) << k << ": " << slot.stateText();
            const double d = std::hypot(slot.chart->x - located.x, slot.chart->y - located.y);
            worst = std::max(worst, d);
            EXPECT_LE(d, slotTolerance(member.chartName))
                << "slot " << k << " (" << slot.chart->name << ")";
        }
        std::printf("[ slots ] %s: %zu slots, farthest %.2f px from the member's centre\n",
                    member.chartName.c_str(), byMember.rows.size(), worst);
        // Squares the frame border cuts take no part in the registration.
        EXPECT_GE(byChart.report.registeredShapes,
                  static_cast<int>(described(member.chartName).description->shapes.size()) - 2);
    }
}

TEST(ChartJob, AutoFindsAndMeasuresEveryEdgeOfTheBuiltInCharts) {
    for (const std::string& name : station::builtinChartNames()) {
        SCOPED_TRACE(name);
        const cv::Mat raw =
            talonvireo::testing::renderRawChart(talonvireo::testing::chartProjectNamed(name), 16);
        station::FrameOptions options;
        const station::GradedFrame graded = station::gradeChartFrame(
            station::chooseChart("auto"), mosaicFrame(raw, 16), options, "");
        const std::size_t shapes = described(name).description->shapes.size();
        // Every side of every square, but where the frame border stands in for a side of a
        // square that runs out of the frame (K74T16BX's two lowest, one of K31R22BX).
        EXPECT_LE(graded.report.rows.size(), 4 * shapes);
        EXPECT_GE(graded.report.rows.size(), 4 * shapes - 2);
        // Every side is measured, except those of a square the frame border cuts that run out
        // of the frame, and those whose region would: each of those lies near the border.
        int measured = 0;
        for (const station::EdgeRow& row : graded.report.rows) {
            if (row.state == EdgeState::kMeasured) {
                ++measured;
                EXPECT_TRUE(row.flags.empty()) << row.chart->name << ": " << row.flags.front();
                continue;
            }
            ASSERT_TRUE(row.chart->state == ChartEdgeState::kCut ||
                        row.chart->state == ChartEdgeState::kOffFrame)
                << row.chart->name << ": " << row.stateText();
            const double border = std::min(
                {row.chart->x, row.chart->y, 3999.0 - row.chart->x, 2999.0 - row.chart->y});
            EXPECT_LT(border, 0.5 * row.chart->lengthPx) << row.chart->name;
        }
        std::printf("[ auto ] %s: %zu sides of %zu squares found, %d measured\n", name.c_str(),
                    graded.report.rows.size(), shapes, measured);
        EXPECT_GE(measured, static_cast<int>(0.9 * 4 * shapes));
    }
}

TEST(ChartJob, AFrameWithNoQuadrilateralIsAFailureOfItsOwn) {
    station::ChartFrame flat;
    flat.image = cv::Mat(600, 800, CV_8UC1, cv::Scalar(128));
    flat.format = PixelFormat::Grey8;
    station::FrameOptions options;
    try {
        station::gradeChartFrame(station::chooseChart("auto"), flat, options, "");
        FAIL() << "a flat frame was measured";
    } catch (const station::Failure& e) {
        EXPECT_EQ(e.cause(), station::Cause::NoQuadrilateral);
        EXPECT_NE(std::string(e.what()).find("no dark-on-light or light-on-dark quadrilateral"),
                  std::string::npos);
    }
}

TEST(ChartJob, AnotherChartsFrameDoesNotRegisterToADescription) {
    const cv::Mat raw = talonvireo::testing::renderRawChart(render::ChartProject::K31R22BX, 10);
    station::FrameOptions options;
    try {
        station::gradeChartFrame(described("HLX6C"), mosaicFrame(raw, 10), options, "");
        FAIL() << "a K31R22BX frame registered as HLX6C";
    } catch (const station::Failure& e) {
        EXPECT_EQ(e.cause(), station::Cause::WrongChart);
        EXPECT_NE(std::string(e.what()).find("HLX6C"), std::string::npos);
    }
}

TEST(ChartJob, ReadsGreyColourAndMosaicImageFiles) {
    const cv::Mat raw = talonvireo::testing::renderRawChart(render::ChartProject::HLX6C, 16);
    const std::string dir = ::testing::TempDir();
    cv::Mat grey8;
    raw.convertTo(grey8, CV_8U, 1.0 / 257.0);
    cv::Mat colour;
    cv::merge(std::vector<cv::Mat>{grey8, grey8, grey8}, colour);
    ASSERT_TRUE(cv::imwrite(dir + "chart-grey16.png", raw));
    ASSERT_TRUE(cv::imwrite(dir + "chart-grey8.png", grey8));
    ASSERT_TRUE(cv::imwrite(dir + "chart-colour.png", colour));
    const station::RawLayout layout;
    const station::ChartSamples samples;
    EXPECT_EQ(station::readChartFrame(dir + "chart-grey16.png", layout, samples, false).format,
              PixelFormat::Grey16);
    EXPECT_EQ(station::readChartFrame(dir + "chart-grey8.png", layout, samples, false).format,
              PixelFormat::Grey8);
    EXPECT_EQ(station::readChartFrame(dir + "chart-colour.png", layout, samples, false).format,
              PixelFormat::Bgr8);
    station::ChartSamples mosaic;
    mosaic.bayer = "RG";
    EXPECT_EQ(station::readChartFrame(dir + "chart-grey16.png", layout, mosaic, true).format,
              PixelFormat::Bayer16 + PixelFormat::PhaseRG);
    station::ChartSamples tenBits;
    tenBits.bits = 10;
    try {
        station::readChartFrame(dir + "chart-grey16.png", layout, tenBits, true);
        FAIL() << "16-bit samples were read as 10-bit";
    } catch (const station::Failure& e) {
        EXPECT_EQ(e.cause(), station::Cause::SampleDepth);
    }
    station::ChartSamples badPhase;
    badPhase.bayer = "RB";
    EXPECT_THROW(station::readChartFrame(dir + "chart-grey16.png", layout, badPhase, true),
                 station::Failure);
}

}  // namespace
