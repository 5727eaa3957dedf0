// The field plot: its size, its markers' colours and the failing edges' marks.
#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "FieldPlot.h"

namespace {
using namespace talonvireo::cli;

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

}  // namespace
