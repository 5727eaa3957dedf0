// The field plot: its size, its markers' colours and the failing edges' marks.
#include <gtest/gtest.h>

#include <cmath>

#include <opencv2/imgproc.hpp>

#include "station/FieldCurve.h"
#include "station/FieldPlot.h"
#include "station/PlotFigures.h"

namespace {
using namespace talonvireo::station;

TEST(FieldPlot, IsAThousandPixelsWideWithAMarkerPerEdge) {
    const cv::Mat grey(3000, 4000, CV_8UC1, cv::Scalar(120));
    FrameReport report;
    report.width = 4000;
    report.height = 3000;
    report.member = "talonvireoSFR_raw10_HLX6C";
    report.hasLimit = true;
    report.minSfr = 0.5;
    EdgeRow good, bad;
    good.measured.x = 1000;
    good.measured.y = 1000;
    good.measured.sfrQuarterNyquist = 0.9f;
    bad.measured.x = 3000;
    bad.measured.y = 2000;
    bad.measured.sfrQuarterNyquist = 0.3f;
    report.rows = {good, bad};
    const cv::Mat plot = plotField(grey, report);
    ASSERT_EQ(plot.type(), CV_8UC3);
    EXPECT_EQ(plot.cols, 1000);
    EXPECT_EQ(plot.rows, 56 + 750 + 64);
    // The good edge is the scale's top: viridis yellow (high red and green, low blue).
    const cv::Vec3b top = plot.at<cv::Vec3b>(56 + 250, 250);
    EXPECT_GT(top[2], 200);
    EXPECT_GT(top[1], 200);
    EXPECT_LT(top[0], 100);
    // The failing edge is ringed in black 11 px out.
    const cv::Vec3b ring = plot.at<cv::Vec3b>(56 + 500, 750 + 11);
    EXPECT_LT(ring[0] + ring[1] + ring[2], 100);
    // The background is a faint copy of the frame: light, not white.
    const cv::Vec3b background = plot.at<cv::Vec3b>(56 + 10, 10);
    EXPECT_GT(background[0], 180);
    EXPECT_LT(background[0], 250);
}

TEST(FieldPlot, APartialReportOpensWithABannerNamingTheMembersFailure) {
    const cv::Mat grey(3000, 4000, CV_8UC1, cv::Scalar(120));
    FrameReport report;
    report.width = 4000;
    report.height = 3000;
    report.member = "talonvireoSFR_raw10_HLX6C";
    report.memberFailure = "region out of bounds: an edge centre lies within a half region";
    report.memberCause = Cause::RegionOutOfBounds;
    EdgeRow measured, lost;
    measured.measured.x = 1000;
    measured.measured.y = 1000;
    measured.measured.sfrQuarterNyquist = 0.8f;
    lost.state = EdgeState::kNotLocated;  // no place on the frame: no marker at (0, 0)
    report.rows = {measured, lost};
    const cv::Mat plot = plotField(grey, report);
    const int banner = plot.rows - (56 + 750 + 64);
    ASSERT_GE(banner, 24);
    // A vermilion strip across the top, with white text on it.
    cv::Mat strip, vermilion, white;
    strip = plot(cv::Rect(0, 0, plot.cols, banner));
    cv::inRange(strip, cv::Scalar(0, 90, 208), cv::Scalar(4, 98, 218), vermilion);
    cv::inRange(strip, cv::Scalar(240, 240, 240), cv::Scalar(255, 255, 255), white);
    EXPECT_GT(cv::countNonZero(vermilion), strip.total() / 2);
    EXPECT_GT(cv::countNonZero(white), 300);  // "PARTIAL: region out of bounds ..."
    // The frame and its markers move down below it; the corner stays faint background.
    // The only edge is the scale's bottom: viridis purple (little green).
    const cv::Vec3b marker = plot.at<cv::Vec3b>(banner + 56 + 250, 250);
    EXPECT_LT(marker[1], 60);
    const cv::Vec3b corner = plot.at<cv::Vec3b>(banner + 56 + 2, 2);
    EXPECT_EQ(corner[0], corner[2]);
    EXPECT_GT(corner[0], 180);
}

TEST(FieldCurve, PlotsTangentialAndSagittalEdgesApart) {
    FrameReport report;
    EdgeRow t, s;
    t.field.heightPercent = 50.0;
    t.field.orientation = "tangential";
    t.measured.sfrQuarterNyquist = 0.6f;
    s.field.heightPercent = 50.0;
    s.field.orientation = "sagittal";
    s.measured.sfrQuarterNyquist = 0.3f;
    report.rows = {t, s};
    const cv::Mat plot = plotFieldCurve(report, false);
    ASSERT_EQ(plot.size(), cv::Size(1000, 560));
    // Plot area x 70 .. 980, y 40 .. 510 for 0 .. 100 % and 0 .. 1.
    const auto at = [&](double h, double v) {
        return plot.at<cv::Vec3b>(static_cast<int>(std::lround(510 - v * 470)),
                                  static_cast<int>(std::lround(70 + h / 100.0 * 910)));
    };
    const cv::Vec3b blue = at(50.0, 0.6), vermilion = at(50.0, 0.3);
    EXPECT_GT(blue[0], 150);  // tangential: blue
    EXPECT_LT(blue[2], 50);
    EXPECT_GT(vermilion[2], 150);  // sagittal: vermilion
    EXPECT_LT(vermilion[0], 50);
}

// Dark pixels (the ink of lines and text) in a rectangle of the plot.
int inkIn(const cv::Mat& plot, cv::Rect r) {
    cv::Mat mask;
    cv::inRange(plot(r), cv::Scalar(0, 0, 0), cv::Scalar(60, 60, 60), mask);
    return cv::countNonZero(mask);
}

int colourIn(const cv::Mat& plot, cv::Rect r, const cv::Scalar& c) {
    cv::Mat mask;
    cv::inRange(plot(r), c - cv::Scalar::all(3), c + cv::Scalar::all(3), mask);
    return cv::countNonZero(mask);
}

// Edges at 10 to 80 % height; limits on SFR at Nyquist/4 in two zones (the outer one with a
// sagittal override) and on MTF50 in lp/mm; a 1.12 um pitch.
FrameReport limitedReport(Limits& limits) {
    FrameReport report;
    report.height = 3000;
    report.pixelPitchUm = 1.12;
    report.hasMtf50 = true;
    report.hasLimit = true;
    report.limitsPath = "zones.toml";
    int index = 0;
    for (const double h : {10.0, 15.0, 40.0, 45.0, 80.0}) {
        EdgeRow row;
        row.index = index++;
        row.field.heightPercent = h;
        row.field.orientation = index % 2 == 0 ? "sagittal" : "tangential";
        row.measured.sfrQuarterNyquist = 0.6f;
        row.measured.sfrHalfNyquist = 0.4f;
        row.mtf50 = 0.25;
        report.rows.push_back(row);
    }
    limits.path = "zones.toml";
    limits.zones = {{"centre", 30, {}, {}, {}}, {"outer", 60, {}, {}, {}}};
    limits.zones[0].figures.sfrQuarterNyquist = 0.5;
    limits.zones[1].figures.sfrQuarterNyquist = 0.4;
    limits.zones[1].sagittal.sfrQuarterNyquist = 0.3;
    limits.zones[1].figures.mtf50LpPerMm = 100.0;
    return report;
}

TEST(FieldCurve, DrawsEveryLimitedFigureWithItsZonesAndMinimums) {
    Limits limits;
    const FrameReport report = limitedReport(limits);
    const cv::Mat plot = plotFieldCurve(report, false, &limits);
    // SFR at Nyquist/4 first, then MTF50: the other figure the limits set.
    ASSERT_EQ(plot.size(), cv::Size(1000, 2 * 560));
    // Plot area x 70 .. 980 for 0 .. 100 %, y 40 .. 510 for 0 .. 1.
    const auto x = [](double h) { return static_cast<int>(std::lround(70 + h / 100.0 * 910)); };
    const auto y = [](double v) { return static_cast<int>(std::lround(510 - v * 470)); };
    // Each zone's max_height: a dashed vertical boundary.
    EXPECT_GT(inkIn(plot, cv::Rect(x(30) - 1, 60, 3, 440)), 150);
    EXPECT_GT(inkIn(plot, cv::Rect(x(60) - 1, 60, 3, 440)), 150);
    // The centre's minimum (both orientations): a solid ink step across it.
    EXPECT_GT(inkIn(plot, cv::Rect(x(2), y(0.5) - 1, x(28) - x(2), 3)), 300);
    // The outer zone's differ by orientation: dashed, blue for tangential, vermilion sagittal.
    const cv::Rect outerT(x(32), y(0.4) - 1, x(58) - x(32), 3);
    const cv::Rect outerS(x(32), y(0.3) - 1, x(58) - x(32), 3);
    EXPECT_GT(colourIn(plot, outerT, cv::Scalar(178, 114, 0)), 100);
    EXPECT_GT(colourIn(plot, outerS, cv::Scalar(0, 94, 213)), 100);
    // Beyond the last zone: shaded, unzoned.
    EXPECT_EQ(plot.at<cv::Vec3b>(y(0.3), 850), cv::Vec3b(224, 224, 224));
    // The MTF50 panel runs in lp/mm: 0.25 cycles per pixel is 223 lp/mm on an axis to 250,
    // and the outer zone's 100 lp/mm minimum is an ink step there.
    const auto yMtf = [](double lpPerMm) {
        return 560 + static_cast<int>(std::lround(510 - lpPerMm / 250.0 * 470));
    };
    EXPECT_GT(inkIn(plot, cv::Rect(x(32), yMtf(100) - 1, x(58) - x(32), 3)), 300);
    EXPECT_GT(colourIn(plot, cv::Rect(x(10) - 6, yMtf(223.2) - 6, 12, 12), cv::Scalar(178, 114, 0)),
              30);
}

TEST(FieldCurve, Mtf50IsInLinePairsPerMmWithAPixelPitch) {
    const FigureAxis axis{PlotFigure::kMtf50, 1.12, 3000};
    EXPECT_NE(axis.title().find("lp/mm"), std::string::npos);
    EdgeRow row;
    row.mtf50 = 0.25;
    EXPECT_NEAR(axis.valueOf(row), 223.214, 1e-3);
    FigureLimits f;
    f.mtf50 = 0.2;
    f.mtf50LwPerPh = 1380;  // 0.23 cycles per pixel on 3000 rows: the stricter
    EXPECT_NEAR(*axis.minimumOf(f), 0.23 * 1000 / 1.12, 1e-9);
    const AxisRange range = axis.range(223.2);
    EXPECT_DOUBLE_EQ(range.to, 250.0);
    EXPECT_DOUBLE_EQ(range.tick, 50.0);
    // Without a pitch, cycles per pixel.
    const FigureAxis cycles{PlotFigure::kMtf50, std::nan(""), 3000};
    EXPECT_EQ(cycles.title(), "MTF50 (cycles per pixel)");
    EXPECT_DOUBLE_EQ(cycles.valueOf(row), 0.25);
}

}  // namespace
