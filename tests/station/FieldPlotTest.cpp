// The field plot: its size, its markers' colours and the failing edges' marks.
#include <gtest/gtest.h>

#include <cmath>

#include <opencv2/imgproc.hpp>

#include "station/FieldCurve.h"
#include "station/FieldPlot.h"

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

}  // namespace
