// What `roi` cuts from a frame: the Bayer phase follows the cut, the members' roads give the
// member's own region, and the chart fit tells the right chart from a wrong one.
#include <gtest/gtest.h>

#include <cmath>

#include "ChartFrames.h"
#include "station/Failure.h"
#include "station/FrameJob.h"
#include "station/Members.h"
#include "station/RegionCut.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;
using namespace talonvireo::station;
namespace pf = talonvireo::PixelFormat;

TEST(RegionCut, ThePhaseCodeFollowsTheCutOffset) {
    EXPECT_EQ(shiftedPhase(pf::PhaseRG, 0, 0), pf::PhaseRG);
    EXPECT_EQ(shiftedPhase(pf::PhaseRG, 1, 0), pf::PhaseGR);
    EXPECT_EQ(shiftedPhase(pf::PhaseRG, 0, 1), pf::PhaseGB);
    EXPECT_EQ(shiftedPhase(pf::PhaseRG, 1, 1), pf::PhaseBG);
    EXPECT_EQ(shiftedPhase(pf::PhaseBG, 3, 5), pf::PhaseRG);
    EXPECT_EQ(shiftedPhase(pf::PhaseGR, 2, 1), pf::PhaseBG);
    EXPECT_EQ(shiftedPhase(pf::PhaseGB, 1, 2), pf::PhaseBG);
}

double quarterNyquist(const Region& region) {
    SfrCurveOptions options;
    options.frequencies = {0.125};
    SfrCurve curve;
    EXPECT_EQ(measureSfrCurve(region.pixels.data, region.pixels.cols, region.pixels.rows,
                              region.format, options, curve),
              0);
    return curve.channels.empty() ? NAN : curve.channels[0].sfrAt[0];
}

// Before the phase followed the cut, one pixel to the right read 0.705 instead of 0.726.
TEST(RegionCut, AnOddRectOffsetKeepsTheBayerPhase) {
    const cv::Mat raw = talonvireo::testing::renderRawChart(render::ChartProject::HLX6C, 10);
    const int format = pf::Bayer16 | pf::PhaseRG;
    const double even =
        quarterNyquist(cutRegion(raw, format, cv::Rect(1840, 1576, 80, 80), RoiRoad::kOpenCv, 0));
    for (const cv::Rect& r : {cv::Rect(1841, 1576, 80, 80), cv::Rect(1840, 1577, 80, 80),
                              cv::Rect(1841, 1577, 80, 80)}) {
        const Region region = cutRegion(raw, format, r, RoiRoad::kOpenCv, 0);
        EXPECT_EQ(region.format & pf::PhaseMask, shiftedPhase(pf::PhaseRG, r.x, r.y));
        EXPECT_NEAR(quarterNyquist(region), even, 0.006) << r;
    }
}

// roi on the member's road and the member's own region gives the member's figures exactly.
TEST(RegionCut, TheMembersRoadsGiveTheMembersFigures) {
    const std::vector<Member> members = allMembers();
    for (const char* name : {"talonvireoSFR_raw10_HLX6C", "talonvireoSFR/K74T16BX"}) {
        const Member& member = *findMember(members, name);
        cv::Mat raw = talonvireo::testing::renderRawChart(
            talonvireo::testing::chartProjectNamed(member.chartName), 10);
        const FrameReport report = measureRawFrame(member, raw, SFRParam{0.0f, 80, 100});
        const RoiRoad road =
            member.road == GreyRoad::kMalvar ? RoiRoad::kMalvar : RoiRoad::kEdgeDirected;
        for (int index : {0, 7, 30}) {
            const EdgeRow& row = report.rows.at(static_cast<std::size_t>(index));
            const cv::Rect r(row.measured.x - row.side / 2, row.measured.y - row.side / 2, row.side,
                             row.side);
            const Region region = cutRegion(raw, pf::Bayer16 | pf::PhaseRG, r, road, 10);
            ASSERT_EQ(region.format, pf::Grey8);
            tagSFRResult figures{};
            ASSERT_EQ(TalonCalSFR(region.pixels.data, r.width, r.height, pf::Grey8, figures), 0);
            EXPECT_EQ(static_cast<float>(figures.sfrQuarterNyquist[0]),
                      row.measured.sfrQuarterNyquist)
                << name << " edge " << index;
            EXPECT_EQ(static_cast<float>(figures.sfrHalfNyquist[0]), row.measured.sfrHalfNyquist);
        }
    }
}

TEST(RegionCut, RoadsRefuseWhatTheMembersDoNotTake) {
    const cv::Mat grey(64, 64, CV_8UC1, cv::Scalar(0));
    const cv::Mat words(64, 64, CV_16UC1, cv::Scalar(0));
    EXPECT_THROW(cutRegion(grey, pf::Grey8, std::nullopt, RoiRoad::kMalvar, 10), Failure);
    EXPECT_THROW(cutRegion(words, pf::Bayer16 | pf::PhaseGB, std::nullopt, RoiRoad::kMalvar, 10),
                 Failure);
    EXPECT_THROW(cutRegion(words, pf::Bayer16 | pf::PhaseRG, std::nullopt, RoiRoad::kMalvar, 12),
                 Failure);
    EXPECT_THROW(cutRegion(words, pf::Grey16, cv::Rect(60, 0, 8, 8), RoiRoad::kOpenCv, 0), Failure);
}

TEST(RawFrameToGrey, RefusesWhatItCannotConvertAndWritesNothing) {
    std::vector<std::uint16_t> raw(16, 100);
    std::vector<unsigned char> grey(16, 7);
    EXPECT_EQ(rawFrameToGrey(nullptr, 4, 4, 10, GreyRoad::kMalvar, grey.data()), -1);
    EXPECT_EQ(rawFrameToGrey(raw.data(), 4, 4, 10, GreyRoad::kMalvar, nullptr), -1);
    EXPECT_EQ(rawFrameToGrey(raw.data(), 0, 4, 10, GreyRoad::kMalvar, grey.data()), -1);
    EXPECT_EQ(rawFrameToGrey(raw.data(), 4, 4, 12, GreyRoad::kMalvar, grey.data()), -1);
    EXPECT_EQ(rawFrameToGrey(raw.data(), 4, 4, 10, static_cast<GreyRoad>(7), grey.data()), -1);
    EXPECT_EQ(grey, std::vector<unsigned char>(16, 7));
    EXPECT_EQ(rawFrameToGrey(raw.data(), 4, 4, 10, GreyRoad::kEdgeDirected, grey.data()), 0);
}

TEST(ChartFit, TheRightChartFitsAndAWrongOneIsRefused) {
    const std::vector<Member> members = allMembers();
    const Member& hlx6c = *findMember(members, "talonvireoSFR_raw10_HLX6C");
    const Member& rq8 = *findMember(members, "talonvireoSFR_raw10_RQ8");
    render::ChartTransform moved;
    moved.shiftX = 50.0;
    moved.rotationDeg = 0.8;
    cv::Mat right =
        talonvireo::testing::renderRawChart(render::ChartProject::HLX6C, 10, 4000, 3000, moved);
    const FrameReport fits = measureRawFrame(hlx6c, right, SFRParam{0.0f, 80, 100});
    EXPECT_LT(fits.fitResidual, 3.0);
    EXPECT_NO_THROW(requireChartFit(fits));
    // The RQ8 member still "locates" 52 edges in an HLX6C frame, numbered its own way.
    const FrameReport wrong = measureRawFrame(rq8, right, SFRParam{0.0f, 80, 100});
    EXPECT_GT(wrong.fitResidual, 2 * kChartFitLimitPx - 20);
    try {
        requireChartFit(wrong);
        ADD_FAILURE() << "a K83P09BQ reading of an HLX6C frame passed";
    } catch (const Failure& e) {
        EXPECT_EQ(e.cause(), Cause::WrongChart);
    }
}

TEST(SfrCurveChannels, AreNamedGreyOrBlueGreenRed) {
    cv::Mat grey(60, 60, CV_8UC1);
    for (int r = 0; r < 60; ++r)
        for (int c = 0; c < 60; ++c)
            grey.at<unsigned char>(r, c) = c * 10 + r < 300 ? 40 : 200;
    cv::Mat bgr;
    cv::merge(std::vector<cv::Mat>{grey, grey, grey}, bgr);
    SfrCurve curve;
    ASSERT_EQ(measureSfrCurve(bgr.data, 60, 60, pf::Bgr8, {}, curve), 0);
    ASSERT_EQ(curve.channels.size(), 3u);
    EXPECT_EQ(curve.channels[0].name, "B");
    EXPECT_EQ(curve.channels[1].name, "G");
    EXPECT_EQ(curve.channels[2].name, "R");
    ASSERT_EQ(measureSfrCurve(grey.data, 60, 60, pf::Grey8, {}, curve), 0);
    EXPECT_EQ(curve.channels.at(0).name, "grey");
}

}  // namespace
