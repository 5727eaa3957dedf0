// Every slanted edge of a chart found and measured against rendered truth: a grid of turned
// squares under illumination falling to half at the corners, 4:1 and 2:1 contrast, noise,
// blur of sigma 3, 10 % barrel and pincushion distortion, squares cut by the frame border,
// clutter, light squares in a dark panel, trapezoids; the SFR against the true blur; a chart
// description registered through the distortion; bad input.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "render/DescriptionRenderer.h"
#include "render/DescriptionTruth.h"
#include "render/GridChart.h"
#include "talonvireo/ChartMeasurement.h"
#include "talonvireo/PixelFormat.h"

namespace {
using namespace talonvireo;
using render::DescriptionEdgeTruth;
using render::DescriptionRenderSettings;

// A measurable edge: long enough for a region, 2 to 43 degrees off the pixel axes, wholly in
// the frame.
bool measurable(const DescriptionEdgeTruth& t) {
    const double off = std::min(t.axisAngleDeg, 90.0 - t.axisAngleDeg);
    return t.inside && t.length >= 40.0 && off >= 2.0 && off <= 43.0;
}

double angleApart(double a, double b) {
    const double d = std::fmod(std::abs(a - b), 180.0);
    return std::min(d, 180.0 - d);
}

struct Score {
    int measurable = 0;
    int measured = 0;       // measurable edges found and measured
    int falseEdges = 0;     // found sides that are no true edge
    double midpoint = 0;    // worst midpoint error of a measured edge, px
    double sfrQuarter = 0;  // worst |SFR - truth| at Nyquist/4 and /2
    double sfrHalf = 0;
};

// Distance from p to the segment a .. b.
double toSegment(ChartPoint p, ChartPoint a, ChartPoint b) {
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double t =
        std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / (dx * dx + dy * dy), 0.0, 1.0);
    return std::hypot(p.x - a.x - t * dx, p.y - a.y - t * dy);
}

// How far a found side is from a true edge: its midpoint from the true one, or for a side the
// frame border cuts (whose midpoint is that of its part inside), from the true side itself.
double apart(const ChartEdgeReport& e, const DescriptionEdgeTruth& t) {
    return e.geometry.cut ? toSegment(e.geometry.midpoint, t.from, t.to)
                          : std::hypot(e.geometry.midpoint.x - t.midpoint.x,
                                       e.geometry.midpoint.y - t.midpoint.y);
}

// Each found side is the true edge whose midpoint is nearest, within 3 px and 2 degrees (a cut
// side: the true side it lies on).
Score score(const ChartReport& report, const std::vector<DescriptionEdgeTruth>& truth) {
    Score s;
    std::vector<int> matchOf(truth.size(), -1);
    for (std::size_t k = 0; k < report.edges.size(); ++k) {
        const ChartEdgeReport& e = report.edges[k];
        int best = -1;
        double nearest = 3.0;
        for (std::size_t t = 0; t < truth.size(); ++t) {
            const double d = apart(e, truth[t]);
            if (d < nearest && angleApart(e.geometry.angleDeg, truth[t].angleDeg) < 2.0) {
                nearest = d;
                best = static_cast<int>(t);
            }
        }
        if (best < 0) {
            ++s.falseEdges;
            ADD_FAILURE() << "false edge " << e.name << " at " << e.geometry.midpoint.x << ", "
                          << e.geometry.midpoint.y;
            continue;
        }
        matchOf[static_cast<std::size_t>(best)] = static_cast<int>(k);
    }
    for (std::size_t t = 0; t < truth.size(); ++t) {
        if (!measurable(truth[t])) {
            continue;
        }
        ++s.measurable;
        const int k = matchOf[t];
        if (k < 0) {
            std::printf("[ missed ] edge not found at %.1f, %.1f\n", truth[t].midpoint.x,
                        truth[t].midpoint.y);
            continue;
        }
        const ChartEdgeReport& e = report.edges[static_cast<std::size_t>(k)];
        if (e.state != ChartEdgeState::kMeasured) {
            ADD_FAILURE() << e.name << ": " << chartEdgeStateName(e.state);
            continue;
        }
        ++s.measured;
        s.midpoint = std::max(s.midpoint, std::hypot(e.geometry.midpoint.x - truth[t].midpoint.x,
                                                     e.geometry.midpoint.y - truth[t].midpoint.y));
        s.sfrQuarter =
            std::max(s.sfrQuarter, std::abs(e.figures.sfrQuarterNyquist - truth[t].sfr(0.125)));
        s.sfrHalf = std::max(s.sfrHalf, std::abs(e.figures.sfrHalfNyquist - truth[t].sfr(0.25)));
    }
    return s;
}

int formatOf(const cv::Mat& frame) {
    return frame.depth() == CV_16U ? PixelFormat::Grey16 : PixelFormat::Grey8;
}

// Renders, measures and scores; asserts recall of at least 99.5 %, no false edge and every
// midpoint within 1 px.
Score expectEveryEdge(const char* name, const ChartDescription& chart,
                      const DescriptionRenderSettings& settings) {
    const cv::Mat frame = render::renderDescription(chart, settings);
    ChartReport report;
    EXPECT_EQ(
        measureChart(frame.data, frame.cols, frame.rows, formatOf(frame), nullptr, {}, report), 0);
    const Score s = score(report, render::descriptionTruth(chart, settings));
    std::printf(
        "[ chart ] %s: %d of %d measurable edges measured, %d false; midpoint within %.3f px; "
        "SFR within %.4f at N/4, %.4f at N/2\n",
        name, s.measured, s.measurable, s.falseEdges, s.midpoint, s.sfrQuarter, s.sfrHalf);
    EXPECT_GT(s.measurable, 0);
    EXPECT_GE(s.measured, 0.995 * s.measurable);
    EXPECT_EQ(s.falseEdges, 0);
    EXPECT_LE(s.midpoint, 1.0);
    return s;
}

DescriptionRenderSettings look() {
    return render::settingsForFrame(4000, 3000);
}

TEST(ChartMeasurement, SfrOfEveryEdgeOfASixteenBitGridIsWithinAHundredthOfTheTruth) {
    DescriptionRenderSettings s = look();
    s.bits = 16;
    s.cornerLight = 0.5;
    const Score score = expectEveryEdge("16-bit, fall-off", render::gridChart(), s);
    EXPECT_EQ(score.measurable, 432);
    EXPECT_LE(score.sfrQuarter, 0.01);
    EXPECT_LE(score.sfrHalf, 0.01);
}

TEST(ChartMeasurement, FindsEveryEdgeWhenIlluminationFallsToHalfAtTheCorners) {
    DescriptionRenderSettings s = look();
    s.cornerLight = 0.5;
    expectEveryEdge("fall-off, 8 bits", render::gridChart(), s);
}

TEST(ChartMeasurement, FindsEveryEdgeAtFourToOneContrast) {
    DescriptionRenderSettings s = look();
    s.dark = 0.2;
    expectEveryEdge("4:1", render::gridChart(), s);
}

TEST(ChartMeasurement, FindsEveryEdgeAtTwoToOneContrast) {
    DescriptionRenderSettings s = look();
    s.dark = 0.4;
    expectEveryEdge("2:1", render::gridChart(), s);
}

TEST(ChartMeasurement, FindsEveryEdgeUnderNoise) {
    DescriptionRenderSettings s = look();
    s.bits = 10;
    s.readNoise = 6.0;
    s.shotNoise = 12.0;
    expectEveryEdge("noise", render::gridChart(), s);
}

TEST(ChartMeasurement, FindsEveryEdgeUnderBlurOfSigmaThree) {
    DescriptionRenderSettings s = look();
    s.sigmaCentre = 3.0;
    s.sigmaCorner = 3.0;
    expectEveryEdge("sigma 3", render::gridChart(), s);
}

TEST(ChartMeasurement, FollowsTenPercentBarrelWithBlurGrowingOutward) {
    DescriptionRenderSettings s = look();
    s.placement.k1 = -0.10;
    s.sigmaCorner = 2.0;
    expectEveryEdge("barrel 10 %", render::gridChart(), s);
}

TEST(ChartMeasurement, FollowsTenPercentPincushion) {
    DescriptionRenderSettings s = look();
    // Scaled about the frame centre so that the stretched corners stay in the frame.
    const double scale = 0.88;
    s.placement.homography[0] = scale;
    s.placement.homography[4] = scale;
    s.placement.homography[2] = (1.0 - scale) * s.placement.centreX;
    s.placement.homography[5] = (1.0 - scale) * s.placement.centreY;
    s.placement.k1 = 0.10;
    s.sigmaCorner = 2.0;
    expectEveryEdge("pincushion 10 %", render::gridChart(), s);
}

TEST(ChartMeasurement, ReportsSquaresCutByTheFrameBorderAsCutNotMeasured) {
    DescriptionRenderSettings s = look();
    s.placement.homography[2] = 150.0;   // the last column runs off the right border
    s.placement.homography[5] = -160.0;  // the first row off the top
    const ChartDescription chart = render::gridChart();
    expectEveryEdge("cut by the border", chart, s);
    const cv::Mat frame = render::renderDescription(chart, s);
    ChartReport report;
    ASSERT_EQ(
        measureChart(frame.data, frame.cols, frame.rows, formatOf(frame), nullptr, {}, report), 0);
    int cut = 0;
    for (const ChartEdgeReport& e : report.edges) {
        if (e.geometry.cut) {
            ++cut;
            EXPECT_EQ(e.state, ChartEdgeState::kCut);
            EXPECT_FALSE(std::isfinite(e.figures.sfrQuarterNyquist));
        }
    }
    EXPECT_GT(cut, 20);
}

TEST(ChartMeasurement, ClutterGivesNoFalseEdge) {
    DescriptionRenderSettings s = look();
    // Between the squares: round marks, letter-like marks, and a light spot bright enough to
    // clip.
    for (int k = 0; k < 8; ++k) {
        s.clutter.discs.push_back({333.3 * (k + 1), 333.3 * (k % 3 + 1), 40.0 + 5.0 * k, 1});
        s.clutter.texts.push_back({333.3 * (k + 1) - 30.0, 333.3 * (k % 4 + 1) + 150.0,
                                   14.0 + 3.0 * k, "TALON-8", 4.0 * k, 1});
    }
    s.clutter.discs.push_back({1500.0, 1666.0, 50.0, -1});
    // A lamp in view, between four squares, clipping over some 80 px.
    s.clutter.spots.push_back({2000.0, 1333.3, 25.0, 4.0});
    const ChartDescription chart = render::gridChart();
    expectEveryEdge("clutter", chart, s);
    // A mark in an edge's region moves its figures; the plateaus it spoils give it away. An
    // edge either reads its truth within what its own SNR allows (three times the scatter,
    // 0.44 / SNR at Nyquist/4 and 0.9 / SNR at Nyquist/2, with 0.01 for the method), or its
    // SNR falls below 20, where the station flags it "noisy".
    const cv::Mat frame = render::renderDescription(chart, s);
    ChartReport report;
    ASSERT_EQ(
        measureChart(frame.data, frame.cols, frame.rows, formatOf(frame), nullptr, {}, report), 0);
    const std::vector<DescriptionEdgeTruth> truth = render::descriptionTruth(chart, s);
    int noisy = 0;
    double worstNoisy = 0.0;
    for (const ChartEdgeReport& e : report.edges) {
        for (const DescriptionEdgeTruth& t : truth) {
            if (e.state != ChartEdgeState::kMeasured || !(apart(e, t) < 3.0)) {
                continue;
            }
            const double quarter = std::abs(e.figures.sfrQuarterNyquist - t.sfr(0.125));
            const double half = std::abs(e.figures.sfrHalfNyquist - t.sfr(0.25));
            if (e.snr < 20.0) {
                ++noisy;
                worstNoisy = std::max({worstNoisy, quarter, half});
                continue;
            }
            EXPECT_LE(quarter, 0.01 + 3.0 * 0.44 / e.snr) << e.name << ", SNR " << e.snr;
            EXPECT_LE(half, 0.01 + 3.0 * 0.9 / e.snr) << e.name << ", SNR " << e.snr;
        }
    }
    std::printf(
        "[ chart ] clutter: %d edges spoiled by a mark read an SNR below 20 (flagged noisy; off "
        "their truth by up to %.3f); every other reads its truth within its SNR's scatter\n",
        noisy, worstNoisy);
    EXPECT_GT(noisy, 0);
}

TEST(ChartMeasurement, FindsLightSquaresInADarkPanel) {
    expectEveryEdge("light on dark", render::lightOnDarkGridChart(), look());
}

TEST(ChartMeasurement, FindsTrapezoidsAndRectangles) {
    expectEveryEdge("trapezoids", render::trapezoidRectangleChart(), look());
}

// Sides long enough for barrel distortion to bow them by a few pixels.
ChartDescription bigSquares() {
    render::GridChartSettings g;
    g.rows = 3;
    g.columns = 4;
    g.pitchX = 1000.0;
    g.pitchY = 1000.0;
    g.side = 700.0;
    return render::gridChart(g);
}

TEST(ChartMeasurement, ABowedEdgeIsFollowedAndMeasuredOnItsStraightPart) {
    DescriptionRenderSettings s = look();
    s.placement.k1 = -0.10;
    const ChartDescription chart = bigSquares();
    const cv::Mat frame = render::renderDescription(chart, s);
    const std::vector<DescriptionEdgeTruth> truth = render::descriptionTruth(chart, s);
    ChartReport report;
    ASSERT_EQ(
        measureChart(frame.data, frame.cols, frame.rows, formatOf(frame), nullptr, {}, report), 0);
    double worstBow = 0.0, largestBow = 0.0;
    int bowed = 0;
    for (const ChartEdgeReport& e : report.edges) {
        if (e.geometry.cut) {
            continue;
        }
        for (const DescriptionEdgeTruth& t : truth) {
            if (std::hypot(e.geometry.midpoint.x - t.midpoint.x,
                           e.geometry.midpoint.y - t.midpoint.y) < 3.0) {
                worstBow = std::max(worstBow, std::abs(e.geometry.bow - t.bow));
                largestBow = std::max(largestBow, std::abs(t.bow));
                // Across the side: along it, the image of the chart's midpoint and the
                // middle of the side as the frame sees it part as the distortion stretches
                // the side unevenly.
                const double dx = t.to.x - t.from.x, dy = t.to.y - t.from.y;
                const double across = std::abs((e.geometry.midpoint.x - t.midpoint.x) * dy -
                                               (e.geometry.midpoint.y - t.midpoint.y) * dx) /
                                      std::hypot(dx, dy);
                EXPECT_LE(across, 0.1) << e.name;
                if (std::abs(t.bow) > 0.5) {
                    ++bowed;
                    // The region holds no more of the edge than stays within 0.1 px of a line.
                    const double along = std::max(e.region.width, e.region.height);
                    EXPECT_LE(along, e.geometry.straightLength + 4.0) << e.name;
                    EXPECT_EQ(e.state, ChartEdgeState::kMeasured) << e.name;
                }
            }
        }
    }
    std::printf(
        "[ chart ] bowed sides: %d bowed over 0.5 px (largest %.2f px), bow within %.3f px\n",
        bowed, largestBow, worstBow);
    EXPECT_GT(bowed, 8);
    EXPECT_LE(worstBow, 0.1);
}

TEST(ChartMeasurement, ADescriptionRegistersThroughBarrelDistortionAndNamesEverySlot) {
    DescriptionRenderSettings s = look();
    s.placement.k1 = -0.08;
    ChartDescription chart = render::gridChart();
    chart.name = "grid";
    for (int k = 0; k < 108; ++k) {
        ChartSlot slot;
        slot.name = "G" + std::to_string(k);
        slot.slot = k;
        slot.shape = k;
        slot.side = k % 4;
        slot.along = 0.4;
        chart.slots.push_back(slot);
    }
    const cv::Mat frame = render::renderDescription(chart, s);
    const std::vector<DescriptionEdgeTruth> truth = render::descriptionTruth(chart, s);
    ChartReport report;
    ASSERT_EQ(measureChart(frame.data, frame.cols, frame.rows, formatOf(frame), &chart, {}, report),
              0);
    EXPECT_TRUE(report.registration.registered);
    EXPECT_NEAR(report.registration.k1, -0.08, 0.002);
    ASSERT_EQ(report.edges.size(), 108u);
    double worst = 0.0;
    for (std::size_t k = 0; k < 108; ++k) {
        const ChartEdgeReport& e = report.edges[k];
        EXPECT_EQ(e.edge, static_cast<int>(k));
        EXPECT_EQ(e.name, "G" + std::to_string(k));
        // The distortion turns a few sides near the corners onto an axis: flagged, not
        // measured.
        const double off = std::min(truth[k].axisAngleDeg, 90.0 - truth[k].axisAngleDeg);
        EXPECT_EQ(e.state, std::abs(off) < 1.0 || std::abs(off - 45.0) < 1.0
                               ? ChartEdgeState::kNearAxis
                               : ChartEdgeState::kMeasured)
            << e.name << " at " << off << " degrees off the axes";
        worst = std::max(worst, std::hypot(e.x - truth[k].centre.x, e.y - truth[k].centre.y));
    }
    std::printf("[ chart ] described grid under 8 %% barrel: every slot within %.3f px\n", worst);
    EXPECT_LE(worst, 0.5);
}

TEST(ChartMeasurement, AFrameWithNoQuadrilateralGivesAnEmptyReport) {
    const cv::Mat flat(600, 800, CV_8UC1, cv::Scalar(128));
    ChartReport report;
    ASSERT_EQ(
        measureChart(flat.data, flat.cols, flat.rows, PixelFormat::Grey8, nullptr, {}, report), 0);
    EXPECT_TRUE(report.quads.empty());
    EXPECT_TRUE(report.edges.empty());
}

TEST(ChartMeasurement, RefusesBadInputAndLeavesTheReportAlone) {
    const cv::Mat grey(100, 100, CV_8UC1, cv::Scalar(0));
    ChartReport report;
    report.chart = "untouched";
    const ChartMeasureOptions plain;
    EXPECT_EQ(measureChart(nullptr, 100, 100, PixelFormat::Grey8, nullptr, plain, report), -1);
    EXPECT_EQ(measureChart(grey.data, 0, 100, PixelFormat::Grey8, nullptr, plain, report), -1);
    EXPECT_EQ(measureChart(grey.data, 100, -3, PixelFormat::Grey8, nullptr, plain, report), -1);
    EXPECT_EQ(measureChart(grey.data, 1 << 16, 1 << 16, PixelFormat::Grey8, nullptr, plain, report),
              -1);
    EXPECT_EQ(measureChart(grey.data, 100, 100, 0x999, nullptr, plain, report), -1);
    EXPECT_EQ(measureChart(grey.data, 100, 100, PixelFormat::Bayer8, nullptr, plain, report),
              -1);  // a mosaic needs its phase
    ChartMeasureOptions deep;
    deep.bits = 12;  // 8-bit samples carry no more than 8 bits
    EXPECT_EQ(measureChart(grey.data, 100, 100, PixelFormat::Grey8, nullptr, deep, report), -1);
    ChartMeasureOptions divisor;
    divisor.nyquistDivisor = -1.0;
    EXPECT_EQ(measureChart(grey.data, 100, 100, PixelFormat::Grey8, nullptr, divisor, report), -1);
    ChartDescription broken;
    broken.name = "broken";
    ChartSlot slot;
    slot.shape = 3;  // no such shape
    broken.slots.push_back(slot);
    EXPECT_EQ(measureChart(grey.data, 100, 100, PixelFormat::Grey8, &broken, plain, report), -1);
    EXPECT_EQ(report.chart, "untouched");
    std::vector<FoundQuad> quads(1);
    std::vector<FoundEdge> edges(2);
    EXPECT_EQ(findChartQuads(nullptr, 100, 100, PixelFormat::Grey8, 0, quads, edges), -1);
    EXPECT_EQ(quads.size(), 1u);
    EXPECT_EQ(edges.size(), 2u);
}

TEST(ChartMeasurement, FindsTheQuadsOfAMosaicThroughTheMalvarRoadAndMeasuresEachPlane) {
    DescriptionRenderSettings s = look();
    s.bits = 10;
    s.bayer = true;
    s.gainRed = 0.6;
    s.gainBlue = 0.8;
    const ChartDescription chart = render::gridChart();
    const cv::Mat frame = render::renderDescription(chart, s);
    ChartMeasureOptions o;
    o.bits = 10;
    o.rawPlanes = true;
    ChartReport report;
    ASSERT_EQ(measureChart(frame.data, frame.cols, frame.rows,
                           PixelFormat::Bayer16 + PixelFormat::PhaseRG, nullptr, o, report),
              0);
    const Score sc = score(report, render::descriptionTruth(chart, s));
    EXPECT_EQ(sc.measured, sc.measurable);
    for (const ChartEdgeReport& e : report.edges) {
        if (e.state != ChartEdgeState::kMeasured) {
            continue;
        }
        ASSERT_EQ(e.planes.size(), 4u);
        for (const CurveFigures& p : e.planes) {
            EXPECT_EQ(p.status, 0) << e.name << " " << p.channel;
            EXPECT_GT(p.sfrQuarterNyquist, 0.5) << e.name << " " << p.channel;
        }
    }
}

}  // namespace
