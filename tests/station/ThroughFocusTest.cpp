// Through-focus analysis against curves and surfaces of known truth: a Gaussian defocus whose
// best focus the log-parabola recovers exactly, the same under noise, focus outside the sweep,
// the range above a limit, the image surface's tilt and curvature, the common window.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "station/Failure.h"
#include "station/FocusStudy.h"
#include "station/ThroughFocus.h"

namespace {
using namespace talonvireo::station;

constexpr double kPi = 3.141592653589793;

// The SFR at f cycles per pixel of a pixel-integrated Gaussian whose variance grows with the
// square of the defocus: sigma^2 = sigma0^2 + (gain (z - best))^2.
double defocusedSfr(double z, double best, double sigma0 = 0.8, double gain = 0.05,
                    double f = 0.125) {
    const double d = gain * (z - best);
    const double s2 = sigma0 * sigma0 + d * d;
    const double sinc = std::sin(kPi * f) / (kPi * f);
    return std::exp(-2.0 * kPi * kPi * s2 * f * f) * sinc;
}

std::vector<FocusSample> sweep(double best, double from, double to, double step, double noise = 0.0,
                               unsigned seed = 1) {
    std::mt19937 rng(seed);
    std::normal_distribution<double> jitter(0.0, noise > 0.0 ? noise : 1.0);
    std::vector<FocusSample> s;
    for (double z = from; z <= to + 1e-9; z += step) {
        s.push_back({z, defocusedSfr(z, best) + (noise > 0.0 ? jitter(rng) : 0.0)});
    }
    return s;
}

TEST(ThroughFocus, BestFocusOfAGaussianDefocusIsThePeakOfTheLogParabola) {
    for (double best : {-12.3, 0.0, 3.7, 18.9}) {
        const FocusCurve c = fitFocusCurve(sweep(best, -40.0, 40.0, 5.0), 0.5);
        ASSERT_TRUE(c.bracketed()) << best;
        EXPECT_NEAR(c.bestZ, best, 1e-9);
        EXPECT_NEAR(c.peakSfr, defocusedSfr(best, best), 1e-12);
        EXPECT_GE(c.samplesFitted, 3);
    }
}

TEST(ThroughFocus, BestFocusHoldsWithinHalfAMicrometreUnderNoise) {
    double worst = 0.0;
    for (unsigned seed = 1; seed <= 50; ++seed) {
        const double best = -10.0 + 0.4 * seed;
        const FocusCurve c = fitFocusCurve(sweep(best, -40.0, 40.0, 5.0, 0.003, seed), 0.5);
        ASSERT_TRUE(c.bracketed());
        worst = std::max(worst, std::abs(c.bestZ - best));
    }
    std::printf("[ focus ] 17 positions 5 um apart, SFR noise 0.003: best focus within %.3f um\n",
                worst);
    EXPECT_LE(worst, 0.5);
}

TEST(ThroughFocus, FocusOutsideTheSweepIsNotBracketed) {
    const FocusCurve c = fitFocusCurve(sweep(60.0, -40.0, 40.0, 5.0), 0.5);
    EXPECT_FALSE(c.bracketed());
    EXPECT_TRUE(std::isnan(c.peakSfr));
    EXPECT_FALSE(fitFocusCurve({{0.0, 0.5}, {1.0, 0.6}}, 0.5).bracketed());
}

TEST(ThroughFocus, TheRangeAboveTheLimitIsWhereTheMeasuredCurveCrossesIt) {
    // A tent: 0.2 at -20, 0.8 at 0, 0.2 at +20, straight between samples 5 apart.
    std::vector<FocusSample> tent;
    for (double z = -20.0; z <= 20.0; z += 5.0) {
        tent.push_back({z, 0.8 - 0.03 * std::abs(z)});
    }
    const FocusCurve c = fitFocusCurve(tent, 0.5);
    EXPECT_TRUE(c.reachesLimit);
    EXPECT_NEAR(c.fromZ, -10.0, 1e-12);
    EXPECT_NEAR(c.toZ, 10.0, 1e-12);
    // Above the limit to the sweep's end: the range is at least the sweep.
    const FocusCurve wide = fitFocusCurve(tent, 0.1);
    EXPECT_EQ(wide.fromZ, -20.0);
    EXPECT_EQ(wide.toZ, 20.0);
    const FocusCurve never = fitFocusCurve(tent, 0.9);
    EXPECT_FALSE(never.reachesLimit);
    EXPECT_TRUE(std::isnan(never.fromZ) && std::isnan(never.toZ));
}

TEST(ThroughFocus, TheSurfaceGivesTiltAndCurvatureOfExactPoints) {
    const double z0 = 4.0, sx = 0.9, sy = -0.35, c = 0.12;
    std::vector<FocusPoint> points;
    for (double x = -2.4; x <= 2.4; x += 0.6) {
        for (double y = -1.8; y <= 1.8; y += 0.6) {
            points.push_back({x, y, z0 + sx * x + sy * y + c * (x * x + y * y)});
        }
    }
    const FocusSurface s = fitFocusSurface(points);
    EXPECT_NEAR(s.z0, z0, 1e-9);
    EXPECT_NEAR(s.slopeX, sx, 1e-9);
    EXPECT_NEAR(s.slopeY, sy, 1e-9);
    EXPECT_NEAR(s.curvature, c, 1e-9);
    EXPECT_NEAR(s.tiltAboutYArcmin, std::atan(sx / 1000.0) * 180.0 * 60.0 / kPi, 1e-9);
    EXPECT_NEAR(s.tiltAboutXArcmin, std::atan(sy / 1000.0) * 180.0 * 60.0 / kPi, 1e-9);
    EXPECT_NEAR(s.tiltAboutYArcmin, 3.094, 0.001);  // 0.9 um over a millimetre
    EXPECT_LT(s.residualRms, 1e-9);
    EXPECT_EQ(s.points, static_cast<int>(points.size()));
}

TEST(ThroughFocus, TheSurfaceNeedsFourPointsSpreadOverTheField) {
    EXPECT_TRUE(std::isnan(fitFocusSurface({{0, 0, 1}, {1, 0, 2}, {0, 1, 3}}).z0));
    // On one line through the centre, x and x^2 + y^2 cannot be told from y.
    EXPECT_TRUE(std::isnan(fitFocusSurface({{-1, 0, 1}, {0, 0, 2}, {1, 0, 3}, {2, 0, 5}}).z0));
}

TEST(ThroughFocus, TheCommonWindowIsTheOverlapOfEveryRange) {
    FocusCurve a, b, c;
    a.reachesLimit = b.reachesLimit = c.reachesLimit = true;
    a.fromZ = -10.0;
    a.toZ = 6.0;
    b.fromZ = -4.0;
    b.toZ = 12.0;
    c.fromZ = -20.0;
    c.toZ = 20.0;
    const FocusWindow w = commonFocusWindow({a, b, c});
    ASSERT_TRUE(w.exists());
    EXPECT_EQ(w.fromZ, -4.0);
    EXPECT_EQ(w.toZ, 6.0);
    EXPECT_EQ(w.centreZ(), 1.0);
    FocusCurve apart = b;
    apart.fromZ = 8.0;
    EXPECT_FALSE(commonFocusWindow({a, apart}).exists());
    FocusCurve never;
    EXPECT_FALSE(commonFocusWindow({a, never}).exists());
    EXPECT_FALSE(commonFocusWindow({}).exists());
}

TEST(FocusStudy, AFrameIsAFileAtItsFocusPosition) {
    const FocusFrame f = parseFocusFrame("stack/a@b.raw@-12.5");
    EXPECT_EQ(f.path, "stack/a@b.raw");
    EXPECT_EQ(f.z, -12.5);
    EXPECT_THROW(parseFocusFrame("a.raw"), Failure);
    EXPECT_THROW(parseFocusFrame("a.raw@"), Failure);
    EXPECT_THROW(parseFocusFrame("a.raw@12um"), Failure);
    EXPECT_THROW(parseFocusFrame("@3"), Failure);
}

TEST(FocusStudy, AListHoldsFileAndZLinesBesideIt) {
    const std::string dir = ::testing::TempDir();
    {
        std::ofstream list(dir + "stack.csv");
        list << "file,z\n# the sweep\n\nz1.raw, -5\n/abs/z2.raw,5.5\n";
    }
    const std::vector<FocusFrame> frames = readFocusList(dir + "stack.csv");
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].z, -5.0);
    EXPECT_NE(frames[0].path.find("z1.raw"), std::string::npos);
    EXPECT_EQ(frames[0].path.rfind(dir.substr(0, dir.size() - 1), 0), 0u);
    EXPECT_EQ(frames[1].path, "/abs/z2.raw");
    {
        std::ofstream list(dir + "broken.csv");
        list << "z1.raw,-5\nz2.raw\n";
    }
    try {
        readFocusList(dir + "broken.csv");
        FAIL() << "a line without z was read";
    } catch (const Failure& e) {
        EXPECT_NE(std::string(e.what()).find("broken.csv:2"), std::string::npos) << e.what();
    }
}

}  // namespace
