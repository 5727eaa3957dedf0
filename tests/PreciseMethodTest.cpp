// The precise region method against rendered truth, at every kind of edge angle.
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "TestRegions.h"
#include "accuracy/MethodAccuracy.h"
#include "render/EdgeSpreadTable.h"
#include "render/LensBlur.h"
#include "render/SfrTruth.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;
using accuracy::EdgeCase;
using accuracy::Method;
using accuracy::Reading;

// Angles from 1 to 44 degrees every 3.5 and every simple-fraction angle (where the classic
// bins fill unevenly), with the angles the classic normal axis reads worst.
std::vector<double> sweepAngles() {
    std::vector<double> angles;
    for (double a = 1.0; a <= 44.0; a += 3.5) {
        angles.push_back(a);
    }
    for (double a : accuracy::simpleFractionAngles()) {
        angles.push_back(a);
    }
    for (double a : {11.3, 14.0, 20.0, 26.5, 33.7, 44.0}) {
        angles.push_back(a);
    }
    return angles;
}

std::string describe(const EdgeCase& c) {
    std::ostringstream s;
    s << c.size << " x " << c.size << " sigma " << c.sigma << " angle " << c.angle << " offset "
      << c.offset << " noise " << c.noise << " seed " << c.seed << " depth " << c.depth;
    return s.str();
}

struct SizeAndBlur {
    int size;
    double sigma;
};

std::string sizeAndBlurName(const ::testing::TestParamInfo<SizeAndBlur>& info) {
    return "size" + std::to_string(info.param.size) + "_sigma" +
           std::to_string(static_cast<int>(std::lround(info.param.sigma * 10)));
}

// GoogleTest would otherwise print the case's raw bytes, padding included.
void PrintTo(const SizeAndBlur& c, std::ostream* os) {
    *os << c.size << " x " << c.size << ", sigma " << c.sigma;
}

// Noise-free edges in 16-bit words (the rendering rounded to 1/256 of a level): MTF50
// within 0.3 % and the SFR at Nyquist/4 and /2 within 0.003 of truth, at four offsets.
class PreciseNoiseFree : public ::testing::TestWithParam<SizeAndBlur> {};

TEST_P(PreciseNoiseFree, Mtf50WithinPointThreePercentAndSfrWithin0003AtEveryAngle) {
    for (double angle : sweepAngles()) {
        for (double offset : {0.0, 0.25, 0.5, 0.75}) {
            EdgeCase c;
            c.size = GetParam().size;
            c.sigma = GetParam().sigma;
            c.angle = angle;
            c.offset = offset;
            c.depth = 16;
            const Reading r = accuracy::readEdge(c, Method::Precise);
            ASSERT_EQ(r.status, 0) << describe(c);
            EXPECT_LE(std::fabs(r.mtf50ErrorPercent), 0.3) << describe(c);
            EXPECT_NEAR(r.sfrQuarterNyquist, r.trueQuarterNyquist, 0.003) << describe(c);
            EXPECT_NEAR(r.sfrHalfNyquist, r.trueHalfNyquist, 0.003) << describe(c);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Regions, PreciseNoiseFree,
                         ::testing::Values(SizeAndBlur{100, 0.5}, SizeAndBlur{100, 1.0},
                                           SizeAndBlur{100, 1.5}, SizeAndBlur{60, 0.5},
                                           SizeAndBlur{60, 1.0}, SizeAndBlur{60, 1.5}),
                         sizeAndBlurName);

// With 1 % noise (1.6 levels on the 160-level step, 8-bit samples), five seeds per case: the
// root-mean-square MTF50 error over the seeds within 1.2 % of truth.
class PreciseNoisy : public ::testing::TestWithParam<SizeAndBlur> {};

TEST_P(PreciseNoisy, RmsMtf50ErrorOverFiveSeedsWithinOnePointTwoPercent) {
    std::vector<double> angles = accuracy::simpleFractionAngles();
    for (double a : {2.0, 9.0, 30.0, 41.0}) {
        angles.push_back(a);
    }
    for (double angle : angles) {
        EdgeCase c;
        c.size = GetParam().size;
        c.sigma = GetParam().sigma;
        c.angle = angle;
        c.offset = 0.25;
        c.noise = 1.6;
        double sumSquares = 0.0;
        for (std::uint32_t seed = 1; seed <= 5; ++seed) {
            c.seed = seed;
            const Reading r = accuracy::readEdge(c, Method::Precise);
            ASSERT_EQ(r.status, 0) << describe(c);
            sumSquares += r.mtf50ErrorPercent * r.mtf50ErrorPercent;
        }
        EXPECT_LE(std::sqrt(sumSquares / 5.0), 1.2) << describe(c);
    }
}

INSTANTIATE_TEST_SUITE_P(Regions, PreciseNoisy,
                         ::testing::Values(SizeAndBlur{100, 0.5}, SizeAndBlur{100, 1.5},
                                           SizeAndBlur{60, 0.5}, SizeAndBlur{60, 1.5}),
                         sizeAndBlurName);

// Diffraction-limited lenses (537 nm on 4.345 um pixels, 0.87 pixel aperture): line spreads
// whose tails fall off as the inverse square of the distance. A 100 x 100 region sees all
// but 0.2 % (f/8) to 0.5 % (f/16) of their light; the precise method keeps what it sees.
// At and within 0.2 degrees of tan 1/2, where a 100-row region's phases stay in two clusters,
// an f/2 edge carries detail beyond what two sample phases can hold (about 0.04 of SFR folds
// back onto MTF50 there): those cases are left to the sampling limit.
class PreciseLens : public ::testing::TestWithParam<double> {};

TEST_P(PreciseLens, DiffractionLimitedEdgesKeepTheirTails) {
    const double fNumber = GetParam();
    const render::EdgeSpreadTable lens(render::diffractionLimited(fNumber), 75.0);
    const double mtf50Limit = fNumber >= 16.0 ? 1.0 : 0.5;
    const double sfrLimit = fNumber >= 16.0 ? 0.01 : 0.005;
    std::vector<double> angles = sweepAngles();
    angles.push_back(std::atan2(9.0, 28.0) * 180.0 / M_PI);
    for (double angle : angles) {
        if (fNumber < 4.0 && std::fabs(angle - std::atan(0.5) * 180.0 / M_PI) < 0.2) {
            continue;
        }
        EdgeCase c;
        c.lens = &lens;
        c.aperture = 0.87;
        c.angle = angle;
        c.offset = 0.25;
        c.depth = 16;
        const Reading r = accuracy::readEdge(c, Method::Precise);
        ASSERT_EQ(r.status, 0) << "f/" << fNumber << " " << describe(c);
        EXPECT_LE(std::fabs(r.mtf50ErrorPercent), mtf50Limit)
            << "f/" << fNumber << " " << describe(c);
        EXPECT_NEAR(r.sfrQuarterNyquist, r.trueQuarterNyquist, sfrLimit) << "f/" << fNumber;
        EXPECT_NEAR(r.sfrHalfNyquist, r.trueHalfNyquist, sfrLimit) << "f/" << fNumber;
    }
}

INSTANTIATE_TEST_SUITE_P(FNumbers, PreciseLens, ::testing::Values(2.0, 4.0, 8.0, 16.0),
                         [](const ::testing::TestParamInfo<double>& info) {
                             return "f" + std::to_string(static_cast<int>(info.param));
                         });

// With 14-bit photon noise (one photon per level, 2560 to 12800) the tails' smoothing widens
// with the measured noise: over five seeds the MTF50 error's mean stays within 1 % and its RMS
// within 1.2 % on 100 x 100 regions, the single-reading scatter any estimator pays there.
TEST(PreciseLens, PhotonNoiseAveragesOutOverSeeds) {
    const render::EdgeSpreadTable f4(render::diffractionLimited(4.0), 75.0);
    const render::EdgeSpreadTable f16(render::diffractionLimited(16.0), 75.0);
    for (const render::EdgeSpreadTable* lens : {&f4, &f16}) {
        for (double angle : {5.0, std::atan2(9.0, 28.0) * 180.0 / M_PI, 33.0}) {
            double sum = 0.0, squares = 0.0;
            EdgeCase c;
            c.lens = lens;
            c.aperture = 0.87;
            c.angle = angle;
            c.offset = 0.25;
            c.depth = 14;
            c.photonNoise = true;
            for (std::uint32_t seed = 1; seed <= 5; ++seed) {
                c.seed = seed;
                const Reading r = accuracy::readEdge(c, Method::Precise);
                ASSERT_EQ(r.status, 0) << describe(c);
                sum += r.mtf50ErrorPercent;
                squares += r.mtf50ErrorPercent * r.mtf50ErrorPercent;
            }
            EXPECT_LE(std::fabs(sum / 5.0), 1.0) << lens->lens().describe() << " " << describe(c);
            EXPECT_LE(std::sqrt(squares / 5.0), 1.2)
                << lens->lens().describe() << " " << describe(c);
        }
    }
}

// Where the classic normal axis is worst, the precise method is at least five times closer.
TEST(PreciseMethod, BeatsTheNormalAxisAtSimpleFractionAngles) {
    for (double angle : accuracy::simpleFractionAngles()) {
        EdgeCase c;
        c.sigma = 0.8;
        c.angle = angle;
        c.depth = 16;
        const Reading normal = accuracy::readEdge(c, Method::NormalAxis);
        const Reading precise = accuracy::readEdge(c, Method::Precise);
        ASSERT_EQ(normal.status, 0);
        ASSERT_EQ(precise.status, 0);
        EXPECT_LT(std::fabs(precise.mtf50ErrorPercent),
                  std::max(0.05, std::fabs(normal.mtf50ErrorPercent) / 5.0))
            << describe(c) << " normal axis " << normal.mtf50ErrorPercent;
    }
}

// The precise method refuses exactly what the classic one refuses: near-aligned, steep,
// flat and noisy regions alike.
TEST(PreciseMethod, RefusesExactlyWhatTheClassicMethodRefuses) {
    std::vector<EdgeCase> cases;
    for (double angle : {0.0, 0.3, 0.8, 1.0, 25.0, 44.0, 50.0, 55.0, 70.0}) {
        for (double noise : {0.0, 4.0}) {
            EdgeCase c;
            c.angle = angle;
            c.noise = noise;
            cases.push_back(c);
        }
    }
    for (const EdgeCase& c : cases) {
        const Reading classic = accuracy::readEdge(c, Method::Classic);
        const Reading precise = accuracy::readEdge(c, Method::Precise);
        EXPECT_EQ(precise.status, classic.status) << describe(c);
    }
    // A flat region and pure noise.
    cv::Mat flat(60, 60, CV_8U, cv::Scalar(120));
    cv::Mat noise(60, 60, CV_8U);
    cv::randu(noise, 0, 256);
    for (const cv::Mat* image : {&flat, &noise}) {
        SfrCurveOptions classic, precise;
        precise.method = SfrMethod::kPrecise;
        SfrCurve a, b;
        EXPECT_EQ(measureSfrCurve(image->data, 60, 60, PixelFormat::Grey8, precise, b),
                  measureSfrCurve(image->data, 60, 60, PixelFormat::Grey8, classic, a));
    }
}

TEST(PreciseMethod, ReportsItsMethodAxisAndKernel) {
    const cv::Mat grey = talonvireo::testing::renderGrey8(talonvireo::testing::edgeScene(0.8, 8.0));
    SfrCurveOptions options;
    options.method = SfrMethod::kPrecise;
    options.frequencies = {0.0, 0.125, 5.0, -1.0};
    SfrCurve curve;
    ASSERT_EQ(measureSfrCurve(grey.data, grey.cols, grey.rows, PixelFormat::Grey8, options, curve),
              0);
    EXPECT_EQ(curve.method, SfrMethod::kPrecise);
    EXPECT_TRUE(curve.normalFrequencyAxis);
    ASSERT_EQ(curve.channels.size(), 1u);
    const SfrChannelCurve& ch = curve.channels[0];
    EXPECT_EQ(ch.name, "grey");
    EXPECT_GE(ch.kernelSigma, 0.2);
    EXPECT_NEAR(ch.edgeAngle, 8.0, 0.05);
    ASSERT_EQ(ch.frequency.size(), ch.sfr.size());
    EXPECT_DOUBLE_EQ(ch.frequency.front(), 0.0);
    EXPECT_NEAR(ch.sfr.front(), 1.0, 1e-12);
    EXPECT_GE(ch.frequency.back(), 0.5);  // Nyquist is always in the table
    ASSERT_EQ(ch.esf.size(), ch.lsf.size());
    EXPECT_LT(ch.esf.front(), ch.esf.back());  // dark to light
    EXPECT_NEAR(ch.esfBinWidth, ch.kernelSigma / 2.0, 1e-12);
    ASSERT_EQ(ch.sfrAt.size(), 4u);
    EXPECT_NEAR(ch.sfrAt[0], 1.0, 1e-12);
    EXPECT_NEAR(ch.sfrAt[1], render::trueSfr(0.125, 0.8, 8.0), 0.005);
    EXPECT_TRUE(std::isnan(ch.sfrAt[2]));
    EXPECT_TRUE(std::isnan(ch.sfrAt[3]));
    EXPECT_LT(ch.mtf10, ch.frequency.back());
    EXPECT_LT(ch.mtf30, ch.mtf10);
    EXPECT_LT(ch.mtf50, ch.mtf30);
}

// A colour region gives three precise curves, each near truth; a turned region reads the
// same as the upright one.
TEST(PreciseMethod, ColourAndTurnedRegions) {
    render::SlantedEdgeScene scene = talonvireo::testing::edgeScene(1.0, 12.0);
    const cv::Mat grey = talonvireo::testing::renderGrey8(scene);
    cv::Mat bgr;
    cv::merge(std::vector<cv::Mat>{grey, grey, grey}, bgr);
    SfrCurveOptions options;
    options.method = SfrMethod::kPrecise;
    SfrCurve colour;
    ASSERT_EQ(measureSfrCurve(bgr.data, bgr.cols, bgr.rows, PixelFormat::Bgr8, options, colour), 0);
    ASSERT_EQ(colour.channels.size(), 3u);
    const double truth = render::trueMtf50(1.0, 12.0);
    for (const SfrChannelCurve& ch : colour.channels) {
        EXPECT_NEAR(ch.mtf50 / truth, 1.0, 0.01) << ch.name;
    }
    scene.family = render::EdgeFamily::NearHorizontal;
    const cv::Mat turned = talonvireo::testing::renderGrey8(scene);
    SfrCurve across;
    ASSERT_EQ(
        measureSfrCurve(turned.data, turned.cols, turned.rows, PixelFormat::Grey8, options, across),
        0);
    EXPECT_NEAR(across.channels[0].mtf50 / truth, 1.0, 0.01);
}

// Bad input is refused with -1 and the caller's curve is left alone.
TEST(PreciseMethod, BadInputLeavesTheCurveAlone) {
    const cv::Mat grey = talonvireo::testing::renderGrey8(talonvireo::testing::edgeScene(0.8, 5.0));
    SfrCurveOptions precise;
    precise.method = SfrMethod::kPrecise;
    SfrCurve curve;
    curve.channels.resize(2);
    curve.channels[0].name = "mine";
    EXPECT_EQ(measureSfrCurve(nullptr, 100, 100, PixelFormat::Grey8, precise, curve), -1);
    EXPECT_EQ(measureSfrCurve(grey.data, 0, 100, PixelFormat::Grey8, precise, curve), -1);
    EXPECT_EQ(measureSfrCurve(grey.data, 100, -3, PixelFormat::Grey8, precise, curve), -1);
    EXPECT_EQ(measureSfrCurve(grey.data, 100, 100, 0x1234, precise, curve), -1);
    SfrCurveOptions unknown;
    unknown.method = static_cast<SfrMethod>(7);
    EXPECT_EQ(measureSfrCurve(grey.data, 100, 100, PixelFormat::Grey8, unknown, curve), -1);
    // 2 x 2 is too small for any edge.
    EXPECT_NE(measureSfrCurve(grey.data, 2, 2, PixelFormat::Grey8, precise, curve), 0);
    ASSERT_EQ(curve.channels.size(), 2u);
    EXPECT_EQ(curve.channels[0].name, "mine");
}

}  // namespace
