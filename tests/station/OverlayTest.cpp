// The overlay picture: its header band, its colours and the labels of failing edges.
#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "station/Overlay.h"

namespace {
using namespace talonvireo::station;

// Two edges on a plain grey frame, graded against a limits file: one passes, one fails on
// MTF50.
FrameReport gradedReport() {
    FrameReport report;
    report.input = "frame.raw";
    report.member = "talonvireoSFR_raw10_HLX6C";
    report.width = 4000;
    report.height = 3000;
    report.hasLimit = true;
    report.limitsPath = "limits.toml";
    EdgeRow good, bad;
    good.index = 3;
    good.side = 80;
    good.measured.x = 1000;
    good.measured.y = 1000;
    good.measured.sfrQuarterNyquist = 0.9f;
    bad = good;
    bad.index = 7;
    bad.measured.x = 3000;
    bad.measured.y = 2000;
    bad.pass = false;
    bad.failedFigure = "mtf50";
    bad.failedLimit = "mtf50 0.1000 < 0.25 (zone centre, tangential)";
    report.rows = {good, bad};
    return report;
}

int pixelsOf(const cv::Mat& img, const cv::Scalar& colour) {
    cv::Mat mask;
    cv::inRange(img, colour - cv::Scalar::all(2), colour + cv::Scalar::all(2), mask);
    return cv::countNonZero(mask);
}

const cv::Scalar kBlue(233, 180, 86), kVermilion(0, 94, 213);

TEST(Overlay, OpensWithAHeaderBandAboveTheFrame) {
    const cv::Mat grey(3000, 4000, CV_8UC1, cv::Scalar(120));
    const cv::Mat img = drawOverlay(grey, gradedReport());
    ASSERT_EQ(img.type(), CV_8UC3);
    ASSERT_EQ(img.cols, 4000);
    const int band = img.rows - grey.rows;
    ASSERT_GT(band, 100);
    const cv::Mat header = img(cv::Rect(0, 0, img.cols, band));
    // White, with dark text (file, member, limits, yield) and "frame FAIL" in vermilion.
    EXPECT_GT(pixelsOf(header, cv::Scalar(255, 255, 255)), header.total() / 2);
    EXPECT_GT(pixelsOf(header, cv::Scalar(30, 30, 30)), 2000);
    EXPECT_GT(pixelsOf(header, kVermilion), 200);
    // The frame follows the band unchanged where nothing is drawn.
    EXPECT_EQ(img.at<cv::Vec3b>(band + 10, 10), cv::Vec3b(120, 120, 120));
}

TEST(Overlay, PassIsBlueAndFailIsVermilionNotGreenAndRed) {
    const cv::Mat grey(3000, 4000, CV_8UC1, cv::Scalar(120));
    const cv::Mat img = drawOverlay(grey, gradedReport());
    const int band = img.rows - grey.rows;
    // The passing box's left side (x 960) and the failing box's (x 2960).
    const cv::Mat good = img(cv::Rect(955, band + 960, 10, 80));
    const cv::Mat bad = img(cv::Rect(2955, band + 1960, 10, 80));
    EXPECT_GT(pixelsOf(good, kBlue), 100);
    EXPECT_EQ(pixelsOf(good, kVermilion), 0);
    EXPECT_GT(pixelsOf(bad, kVermilion), 100);
    EXPECT_EQ(pixelsOf(bad, kBlue), 0);
    EXPECT_EQ(pixelsOf(img, cv::Scalar(0, 200, 0)), 0);  // no green
    EXPECT_EQ(pixelsOf(img, cv::Scalar(0, 0, 255)), 0);  // no red
}

TEST(Overlay, AFailingEdgeNamesTheFigureThatFailedItBesideItsNumber) {
    const cv::Mat grey(3000, 4000, CV_8UC1, cv::Scalar(120));
    const cv::Mat img = drawOverlay(grey, gradedReport());
    const int band = img.rows - grey.rows;
    // "7: 0.900" alone ends well before x 2960 + its width; "MTF50" follows it.
    int baseline = 0;
    const int alone =
        cv::getTextSize("7: 0.900", cv::FONT_HERSHEY_SIMPLEX, 0.8, 2, &baseline).width;
    const cv::Mat after = img(cv::Rect(2960 + alone + 10, band + 1900, 300, 60));
    EXPECT_GT(pixelsOf(after, kVermilion), 100);
    // The passing edge's label ends with its SFR: nothing blue after it.
    const int passing =
        cv::getTextSize("3: 0.900", cv::FONT_HERSHEY_SIMPLEX, 0.8, 2, &baseline).width;
    const cv::Mat afterGood = img(cv::Rect(960 + passing + 10, band + 900, 300, 60));
    EXPECT_EQ(pixelsOf(afterGood, kBlue), 0);
}

}  // namespace
