// Chart location fails cleanly on frames without a usable chart: prepare returns -1, the
// read-out is empty, or an OpenCV exception leaves the locator, for every layout. The
// sanitizer build checks that nothing is read outside the image on the way.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "ChartFrames.h"
#include "LayoutRuns.h"

namespace {
using namespace talonvireo::testing;
using talonvireo::render::ChartProject;

double workingScale(const LayoutInfo& info) {
    return info.cornerSearchSize == 1200 ? 0.25 : 0.5;
}

// The outcome the entry points turn into "chart not located".
bool failedCleanly(const LocateRun& run) {
    return run.threw || run.prepareStatus == -1 || run.centres.empty();
}

void expectEveryLayoutFails(const cv::Mat& frame, const char* what) {
    for (const LayoutInfo& info : allLayouts()) {
        const LocateRun run = runLocate(info.layout, frame, workingScale(info), 100);
        EXPECT_TRUE(failedCleanly(run)) << info.name << " on " << what;
    }
}

TEST(LocateFailure, ABlankFrameLocatesNothing) {
    expectEveryLayoutFails(cv::Mat(3000, 4000, CV_8UC1, cv::Scalar(kChartLight)), "blank");
}

TEST(LocateFailure, AFrameOfNoiseLocatesNothing) {
    cv::Mat noise(3000, 4000, CV_8UC1);
    cv::RNG rng(5);
    rng.fill(noise, cv::RNG::UNIFORM, 0, 256);
    expectEveryLayoutFails(noise, "noise");
}

TEST(LocateFailure, AOnePixelFrameFailsWithoutReadingOutside) {
    expectEveryLayoutFails(cv::Mat(1, 1, CV_8UC1, cv::Scalar(kChartDark)), "1x1");
    expectEveryLayoutFails(cv::Mat(30, 40, CV_8UC1, cv::Scalar(kChartLight)), "40x30");
}

TEST(LocateFailure, AChartCutOffByTheFrameBorderFails) {
    // Each project's chart, rendered in full and cut to its top-left 2400 x 1800: the corners
    // beyond the cut are projected outside the frame.
    for (const ChartProject project : {ChartProject::K74T16BX, ChartProject::K83P09BQ,
                                       ChartProject::HLX6C, ChartProject::K31R22BX}) {
        ChartFrame frame;
        frame.project = project;
        const cv::Mat cut = renderGreyChart(frame)(cv::Rect(0, 0, 2400, 1800)).clone();
        for (const LayoutInfo& info : allLayouts()) {
            if (info.project == project) {
                const LocateRun run = runLocate(info.layout, cut, workingScale(info), 100);
                EXPECT_TRUE(failedCleanly(run)) << info.name;
            }
        }
    }
}

TEST(LocateFailure, ARingRunningOffTheFrameFallsBackOnTheOtherCrossing) {
    // The K74T16BX chart 60 px lower: the rings round the (500, 2850) and (3500, 2850)
    // corners of the second layout reach row 3010 of a 3000-row frame, so the crossing on
    // the side running down is missing. A ring crossing a side covers two or three pixels,
    // so the crossing on the other side alone still counts as found, and the bottommost
    // edge takes the topmost edge's point. The corners themselves are still placed.
    ChartFrame frame;
    frame.project = ChartProject::K74T16BX;
    frame.transform.shiftY = 60.0;
    const LocateRun run = runLocate(Layout::LxMap2, renderGreyChart(frame), 0.5, 100);
    ASSERT_FALSE(run.threw);
    EXPECT_EQ(run.prepareStatus, 0);
    for (const auto& c : run.corners) {
        EXPECT_TRUE(c.found);
    }
    ASSERT_EQ(run.edges.size(), 26u);
    // Edges 22/23 and 24/25 belong to those two corners.
    for (const auto& [a, b] : {std::pair<int, int>{22, 23}, std::pair<int, int>{24, 25}}) {
        EXPECT_LE(std::hypot(run.edges[a].x - run.edges[b].x, run.edges[a].y - run.edges[b].y),
                  3.0);
        EXPECT_LT(std::max(run.edges[a].y, run.edges[b].y), 3000.0f);
    }
}

}  // namespace
