// The similarity fit of located centres onto a chart design, and the design data it reads.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "locate/ChartFit.h"
#include "render/RecordTruth.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;
using locate::ChartFit;
using locate::fitChart;
using locate::fitChartRobustly;

TEST(ChartFit, ASimilarityTransformFitsExactly) {
    const std::vector<cv::Point2d> nominal = {{0, 0}, {100, 0}, {0, 50}, {70, 80}};
    const double a = 1.02 * std::cos(0.05), b = 1.02 * std::sin(0.05);
    std::vector<cv::Point2d> located;
    for (const cv::Point2d& p : nominal) {
        located.emplace_back(a * p.x - b * p.y + 30.0, b * p.x + a * p.y - 12.0);
    }
    const ChartFit fit = fitChart(nominal, located);
    EXPECT_NEAR(fit.scale, 1.02, 1e-9);
    EXPECT_NEAR(fit.rotationDeg, 0.05 * 180.0 / M_PI, 1e-9);
    EXPECT_NEAR(fit.shift.x, 30.0, 1e-9);
    EXPECT_NEAR(fit.rmsResidual, 0.0, 1e-9);
    located[3].x += 10.0;  // one point off by 10 px
    EXPECT_GT(fitChart(nominal, located).maxResidual, 5.0);
}

// One centre 40 px off among a dozen: the plain fit leans toward it and spreads the error over
// the others; the robust fit leaves it out, so the others sit on the design and it stands out.
TEST(ChartFit, ARobustFitIsNotDraggedByOneMisplacedCentre) {
    std::vector<cv::Point2d> nominal, located;
    for (int i = 0; i < 12; ++i) {
        const cv::Point2d p(300.0 * (i % 4), 250.0 * (i / 4));
        nominal.push_back(p);
        located.push_back(p + cv::Point2d(5.0, -3.0));
    }
    located[7] += cv::Point2d(40.0, 0.0);
    const ChartFit plain = fitChart(nominal, located);
    const ChartFit robust = fitChartRobustly(nominal, located);
    EXPECT_GT(plain.residuals[0], 1.0);
    for (std::size_t i = 0; i < located.size(); ++i) {
        if (i == 7) {
            EXPECT_NEAR(robust.residuals[i], 40.0, 1e-6);
        } else {
            EXPECT_LT(robust.residuals[i], 1e-6) << i;
        }
    }
}

// The library's design rows against the renderer's drawing of every chart, at several search
// radii: the same place for every slot.
TEST(ChartDesign, MatchesTheRenderedChartsAtEveryRadius) {
    const std::pair<MemberChart, render::ChartProject> charts[] = {
        {MemberChart::kK31R22BX, render::ChartProject::K31R22BX},
        {MemberChart::kK74T16BX, render::ChartProject::K74T16BX},
        {MemberChart::kHLX6C, render::ChartProject::HLX6C},
        {MemberChart::kK83P09BQ, render::ChartProject::K83P09BQ}};
    for (const auto& [chart, project] : charts) {
        for (double radius : {60.0, 100.0, 180.0}) {
            const std::vector<render::EntryTruth> truth =
                render::recordTruth(project, {}, 1.0, radius);
            EdgeCentre nominal[68];
            ASSERT_EQ(chartDesign(chart, radius, nominal, 68), static_cast<int>(truth.size()));
            for (std::size_t i = 0; i < truth.size(); ++i) {
                EXPECT_NEAR(nominal[i].x, truth[i].centre.x, 0.01) << i;
                EXPECT_NEAR(nominal[i].y, truth[i].centre.y, 0.01) << i;
            }
        }
    }
}

TEST(ChartDesign, RefusesAShortBufferAndAnUnknownChart) {
    EdgeCentre nominal[68];
    nominal[0] = {-1.0f, -1.0f};
    EXPECT_EQ(chartDesign(MemberChart::kK31R22BX, 100.0, nominal, 52), -1);
    EXPECT_EQ(chartDesign(static_cast<MemberChart>(17), 100.0, nominal, 68), -1);
    EXPECT_EQ(chartDesign(MemberChart::kHLX6C, 100.0, nullptr, 68), -1);
    EXPECT_EQ(nominal[0].x, -1.0f);
    EXPECT_EQ(chartDesign(MemberChart::kHLX6C8K, 100.0, nominal, 68), 52);
}

}  // namespace
