// The curve-level region measurement against rendered truth and against TalonCalSFR.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include <opencv2/core.hpp>

#include "TestRegions.h"
#include "render/SfrTruth.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;
using talonvireo::testing::edgeScene;
using talonvireo::testing::measureScene;
using talonvireo::testing::renderGrey8;

struct Measured {
    int status;
    SfrCurve curve;
};

Measured measureCurve(const cv::Mat& grey, const SfrCurveOptions& options) {
    Measured m{};
    m.status =
        measureSfrCurve(grey.data, grey.cols, grey.rows, PixelFormat::Grey8, options, m.curve);
    return m;
}

SfrCurveOptions normalAxis() {
    SfrCurveOptions o;
    o.normalFrequencyAxis = true;
    return o;
}

// Steep edges: the option's axis reads the true MTF50 within 3 %.
class SteepEdgeCurve : public ::testing::TestWithParam<std::tuple<double, double>> {};

TEST_P(SteepEdgeCurve, Mtf50OnTheNormalAxisWithinThreePercentOfTruth) {
    const auto [angle, sigma] = GetParam();
    const Measured m = measureCurve(renderGrey8(edgeScene(sigma, angle)), normalAxis());
    ASSERT_EQ(m.status, 0);
    ASSERT_EQ(m.curve.channels.size(), 1u);
    const double truth = render::trueMtf50(sigma, angle);
    EXPECT_NEAR(m.curve.channels[0].mtf50 / truth, 1.0, 0.03)
        << "angle " << angle << " sigma " << sigma << " truth " << truth;
}

INSTANTIATE_TEST_SUITE_P(AnglesAndBlurs, SteepEdgeCurve,
                         ::testing::Combine(::testing::Values(20.0, 30.0, 40.0),
                                            ::testing::Values(0.5, 0.8, 1.0, 1.2)));

TEST(SfrCurve, TheClassicAxisReadsLowByTheCosineAtSteepAngles) {
    const double sigma = 0.8;
    const double angle = 40.0;
    const cv::Mat grey = renderGrey8(edgeScene(sigma, angle));
    const Measured classic = measureCurve(grey, SfrCurveOptions{});
    const Measured normal = measureCurve(grey, normalAxis());
    ASSERT_EQ(classic.status, 0);
    ASSERT_EQ(normal.status, 0);
    EXPECT_FALSE(classic.curve.normalFrequencyAxis);
    EXPECT_TRUE(normal.curve.normalFrequencyAxis);
    const double truth = render::trueMtf50(sigma, angle);
    const double cosA = std::cos(normal.curve.channels[0].edgeAngle * M_PI / 180.0);
    EXPECT_NEAR(classic.curve.channels[0].mtf50 * cosA, normal.curve.channels[0].mtf50, 1e-9);
    EXPECT_GT(classic.curve.channels[0].mtf50 / truth, 1.15);
}

TEST(SfrCurve, TheClassicAxisGivesTalonCalSfrsFigures) {
    const render::SlantedEdgeScene scene = edgeScene(0.9, 7.0);
    SfrCurveOptions options;
    options.frequencies = {0.125, 0.25, 0.5 / 3.0};
    const Measured m = measureCurve(renderGrey8(scene), options);
    const talonvireo::testing::Measurement figures = measureScene(scene, 3.0);
    ASSERT_EQ(m.status, 0);
    ASSERT_EQ(figures.status, 0);
    const SfrChannelCurve& c = m.curve.channels[0];
    ASSERT_EQ(c.sfrAt.size(), 3u);
    EXPECT_NEAR(c.sfrAt[0], figures.result.sfrQuarterNyquist[0], 1e-12);
    EXPECT_NEAR(c.sfrAt[1], figures.result.sfrHalfNyquist[0], 1e-12);
    EXPECT_NEAR(c.sfrAt[2], figures.result.sfrCustom[0], 1e-12);
    EXPECT_NEAR(c.mtf50, figures.result.mtf50[0], 1e-12);
    EXPECT_NEAR(c.edgeAngle, figures.result.edgeAngle, 1e-12);
}

TEST(SfrCurve, TablesProfilesAndLevelsAreConsistent) {
    const Measured m = measureCurve(renderGrey8(edgeScene(0.8, 5.0)), normalAxis());
    ASSERT_EQ(m.status, 0);
    const SfrChannelCurve& c = m.curve.channels[0];
    ASSERT_EQ(c.frequency.size(), c.sfr.size());
    ASSERT_GT(c.frequency.size(), 100u);
    EXPECT_EQ(c.frequency[0], 0.0);
    EXPECT_EQ(c.sfr[0], 1.0);
    for (size_t k = 1; k < c.frequency.size(); ++k) {
        ASSERT_GT(c.frequency[k], c.frequency[k - 1]);
    }
    // Twice as many profile samples as table entries, a quarter pixel apart.
    EXPECT_EQ(c.esf.size(), 2 * c.frequency.size());
    EXPECT_EQ(c.lsf.size(), c.esf.size());
    EXPECT_EQ(c.esfBinWidth, 0.25);
    EXPECT_LT(c.esf.front() + 100.0, c.esf.back());  // dark to light, 40 -> 200
    EXPECT_GT(c.mtf10, c.mtf30);
    EXPECT_GT(c.mtf30, c.mtf50);
    EXPECT_NEAR(c.mtf10, render::trueMtf50(0.8, 5.0) * std::sqrt(std::log(10.0) / std::log(2.0)),
                0.05);  // a Gaussian's MTF10 sits sqrt(ln 10 / ln 2) times its MTF50
}

TEST(SfrCurve, FrequenciesOutsideTheTableReadNaN) {
    SfrCurveOptions options;
    options.frequencies = {-0.1, 0.0, 5.0};
    const Measured m = measureCurve(renderGrey8(edgeScene(0.8, 5.0)), options);
    ASSERT_EQ(m.status, 0);
    const std::vector<double>& at = m.curve.channels[0].sfrAt;
    EXPECT_TRUE(std::isnan(at[0]));
    EXPECT_EQ(at[1], 1.0);
    EXPECT_TRUE(std::isnan(at[2]));
}

TEST(SfrCurve, AColourRegionGivesOneCurvePerChannel) {
    const cv::Mat grey = renderGrey8(edgeScene(0.8, 5.0));
    cv::Mat bgr;
    cv::merge(std::vector<cv::Mat>{grey, grey, grey}, bgr);
    SfrCurve curve;
    ASSERT_EQ(measureSfrCurve(bgr.data, bgr.cols, bgr.rows, PixelFormat::Bgr8, {}, curve), 0);
    ASSERT_EQ(curve.channels.size(), 3u);
    EXPECT_EQ(curve.channels[0].sfr, curve.channels[2].sfr);
}

// A failed call leaves the caller's curve as it was.
SfrCurve sentinelCurve() {
    SfrCurve c;
    c.channels.resize(2);
    c.channels[1].mtf50 = 123.0;
    return c;
}

void expectSentinel(const SfrCurve& c) {
    ASSERT_EQ(c.channels.size(), 2u);
    EXPECT_EQ(c.channels[1].mtf50, 123.0);
}

TEST(SfrCurve, FailuresReturnTheRegionStatusAndLeaveTheCurveAlone) {
    cv::Mat flat(100, 100, CV_8UC1, cv::Scalar(120));
    SfrCurve curve = sentinelCurve();
    EXPECT_EQ(measureSfrCurve(flat.data, 100, 100, PixelFormat::Grey8, {}, curve), -2);
    expectSentinel(curve);
    EXPECT_EQ(measureSfrCurve(nullptr, 100, 100, PixelFormat::Grey8, {}, curve), -1);
    EXPECT_EQ(measureSfrCurve(flat.data, 0, 100, PixelFormat::Grey8, {}, curve), -1);
    EXPECT_EQ(measureSfrCurve(flat.data, 100, 100, 0x123, {}, curve), -1);
    EXPECT_EQ(measureSfrCurve(flat.data, 3, 3, PixelFormat::Grey8, {}, curve), -1);
    expectSentinel(curve);
}

}  // namespace
