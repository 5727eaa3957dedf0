// The batch summary picture: its size, that it shows the data, and one comparison against a
// golden image with a tolerance (fonts and anti-aliasing may differ by a few levels).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "station/BatchSummaryPlot.h"

namespace {
using namespace talonvireo::station;

// Five frames of 40 edges: height 0-95 %, alternating orientation, SFR falling with height
// and a little from frame to frame.
std::vector<FrameReport> syntheticBatch() {
    std::vector<FrameReport> reports(5);
    for (int f = 0; f < 5; ++f) {
        for (int e = 0; e < 40; ++e) {
            EdgeRow row;
            row.index = e;
            row.field.heightPercent = e * 2.4;
            row.field.orientation = e % 2 == 0 ? "tangential" : "sagittal";
            row.measured.sfrQuarterNyquist =
                static_cast<float>(0.85 - 0.003 * e - 0.02 * f - (e % 2) * 0.05);
            reports[f].rows.push_back(row);
        }
    }
    return reports;
}

Limits threeZones() {
    Limits limits;
    limits.path = "limits.toml";
    limits.zones = {
        {"centre", 20, {}, {}, {}}, {"0.7F", 70, {}, {}, {}}, {"corner", 100, {}, {}, {}}};
    limits.zones[0].figures.sfrQuarterNyquist = 0.7;
    limits.zones[1].figures.sfrQuarterNyquist = 0.6;
    limits.zones[2].figures.sfrQuarterNyquist = 0.5;
    limits.zones[2].sagittal.sfrQuarterNyquist = 0.45;
    return limits;
}

BatchTally tallyOf(int frames) {
    BatchTally tally;
    tally.listed = frames;
    tally.done = frames;
    tally.measured = frames;
    tally.passed = frames - 1;
    return tally;
}

TEST(BatchSummaryPlot, IsAThousandPixelsWideAndShowsEveryZone) {
    const Limits limits = threeZones();
    const cv::Mat img = plotBatchSummary(syntheticBatch(), &limits, "member", tallyOf(5));
    ASSERT_EQ(img.size(), cv::Size(1000, 600));
    ASSERT_EQ(img.type(), CV_8UC3);
    // Both orientations' colours appear in each zone's third of the plot.
    for (int zone = 0; zone < 3; ++zone) {
        const cv::Mat third = img(cv::Rect(70 + zone * 303, 70, 303, 460));
        cv::Mat blue, vermilion;
        cv::inRange(third, cv::Scalar(170, 105, 0), cv::Scalar(185, 120, 10), blue);
        cv::inRange(third, cv::Scalar(0, 88, 205), cv::Scalar(10, 100, 220), vermilion);
        EXPECT_GT(cv::countNonZero(blue), 50) << "zone " << zone;
        EXPECT_GT(cv::countNonZero(vermilion), 50) << "zone " << zone;
    }
}

TEST(BatchSummaryPlot, WithoutFramesItStillDrawsTheAxesAndLimits) {
    const Limits limits = threeZones();
    const cv::Mat img = plotBatchSummary({}, &limits, "member", tallyOf(0));
    ASSERT_EQ(img.size(), cv::Size(1000, 600));
    cv::Mat grey;
    cv::cvtColor(img, grey, cv::COLOR_BGR2GRAY);
    EXPECT_GT(cv::countNonZero(grey < 100), 500);  // text, grid labels, dashed limits
}

TEST(BatchSummaryPlot, DrawsEveryLimitedFigureWithZoneBoundariesAndStepLines) {
    // Three zones to 80 %: the edges above it (to 93.6 %) make a fourth, unzoned band.
    Limits limits = threeZones();
    limits.zones[2].maxHeight = 80;
    limits.zones[1].figures.mtf50LpPerMm = 150.0;
    std::vector<FrameReport> reports = syntheticBatch();
    for (FrameReport& r : reports) {
        r.pixelPitchUm = 1.12;
        r.hasMtf50 = true;
        r.height = 3000;
        for (EdgeRow& row : r.rows) {
            row.mtf50 = 0.2;  // 178.6 lp/mm
        }
    }
    const cv::Mat img = plotBatchSummary(reports, &limits, "member", tallyOf(5));
    // SFR at Nyquist/4, then MTF50: a panel each.
    ASSERT_EQ(img.size(), cv::Size(1000, 1200));
    // Four bands across x 70 .. 980: a grey boundary at each zone's max_height.
    cv::Mat grey;
    for (int k = 1; k <= 3; ++k) {
        const int x = static_cast<int>(std::lround(70 + 910.0 / 4 * k));
        cv::inRange(img(cv::Rect(x - 1, 80, 3, 440)), cv::Scalar::all(145), cv::Scalar::all(155),
                    grey);
        EXPECT_GT(cv::countNonZero(grey), 300) << "boundary " << k;
    }
    const auto black = [&](cv::Rect r) {
        cv::Mat mask;
        cv::inRange(img(r), cv::Scalar::all(0), cv::Scalar::all(10), mask);
        return cv::countNonZero(mask);
    };
    // The centre's minimum 0.7 as a dashed step over its band (y 70 .. 530 for 0 .. 1).
    EXPECT_GT(black(cv::Rect(75, 530 - static_cast<int>(0.7 * 460) - 1, 215, 3)), 150);
    // MTF50 in lp/mm on an axis to 200: the 0.7F zone's 150 lp/mm minimum over its band.
    const int y150 = 600 + 530 - static_cast<int>(std::lround(150.0 / 200.0 * 460));
    EXPECT_GT(black(cv::Rect(305, y150 - 1, 215, 3)), 150);
}

TEST(BatchSummaryPlot, MatchesTheGoldenImage) {
    const std::string golden = std::string(TALONVIREO_GOLDEN_DIR) + "/batch_summary.png";
    const Limits limits = threeZones();
    const cv::Mat img = plotBatchSummary(syntheticBatch(), &limits, "member", tallyOf(5));
    if (std::getenv("TALONVIREO_UPDATE_GOLDEN") != nullptr) {
        cv::imwrite(golden, img);
    }
    const cv::Mat expected = cv::imread(golden, cv::IMREAD_COLOR);
    ASSERT_FALSE(expected.empty()) << "no golden image at " << golden;
    ASSERT_EQ(expected.size(), img.size());
    cv::Mat diff;
    cv::absdiff(img, expected, diff);
    cv::Mat greyDiff;
    cv::cvtColor(diff, greyDiff, cv::COLOR_BGR2GRAY);
    EXPECT_LT(cv::mean(greyDiff)[0], 1.0);
    EXPECT_LT(cv::countNonZero(greyDiff > 60), static_cast<int>(0.005 * img.total()));
}

}  // namespace
