// Per-channel SFR of a Bayer region, each plane from its own samples, against rendered truth.
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "TestRegions.h"
#include "accuracy/MethodAccuracy.h"
#include "render/RegionEncoding.h"
#include "render/SfrTruth.h"
#include "render/SlantedEdgeRenderer.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;
using accuracy::ChannelGains;
using accuracy::EdgeCase;
using accuracy::Reading;

std::string describe(const EdgeCase& c, const std::string& plane) {
    std::ostringstream s;
    s << plane << ": " << c.size << " x " << c.size << " sigma " << c.sigma << " angle " << c.angle
      << " offset " << c.offset;
    return s.str();
}

void expectPlanesNearTruth(ChannelGains gains) {
    for (int size : {100, 60}) {
        for (double sigma : {0.6, 1.0, 1.4}) {
            for (double angle : {3.0, 8.0, 14.0, 22.0, 33.0, 40.0}) {
                EdgeCase c;
                c.size = size;
                c.sigma = sigma;
                c.angle = angle;
                c.offset = 0.3;
                c.depth = 16;
                std::vector<std::string> names;
                const std::vector<Reading> planes =
                    accuracy::readRawPlanes(c, gains, PixelFormat::PhaseRG, &names);
                ASSERT_EQ(planes.size(), 4u);
                for (size_t k = 0; k < planes.size(); ++k) {
                    const Reading& r = planes[k];
                    ASSERT_EQ(r.status, 0) << describe(c, names[k]);
                    EXPECT_NEAR(r.sfrQuarterNyquist, r.trueQuarterNyquist, 0.01)
                        << describe(c, names[k]);
                    EXPECT_NEAR(r.sfrHalfNyquist, r.trueHalfNyquist, 0.01) << describe(c, names[k]);
                }
            }
        }
    }
}

TEST(PerChannelRaw, EqualGainsEveryPlaneWithin001OfTruth) {
    expectPlanesNearTruth({1.0, 1.0, 1.0});
}

TEST(PerChannelRaw, UnequalGainsEveryPlaneWithin001OfTruth) {
    expectPlanesNearTruth({0.62, 1.0, 0.78});
}

// The grey the classic path demosaics to is itself blurred: it reads further from truth than
// the planes do.
TEST(PerChannelRaw, PlanesReadCloserToTruthThanTheRoadToGrey) {
    EdgeCase c;
    c.sigma = 0.6;
    c.angle = 8.0;
    c.depth = 16;
    const std::vector<Reading> planes =
        accuracy::readRawPlanes(c, {0.62, 1.0, 0.78}, PixelFormat::PhaseRG);
    const render::SlantedEdgeScene scene = [&] {
        render::SlantedEdgeScene s = talonvireo::testing::edgeScene(c.sigma, c.angle);
        return s;
    }();
    const cv::Mat mosaic = render::quantise16(render::renderSlantedEdge(scene), 256.0);
    SfrCurveOptions precise;
    precise.method = SfrMethod::kPrecise;
    precise.frequencies = {0.25};
    SfrCurve grey;
    ASSERT_EQ(measureSfrCurve(mosaic.data, mosaic.cols, mosaic.rows,
                              PixelFormat::Bayer16 + PixelFormat::PhaseRG, precise, grey),
              0);
    const double truth = render::trueSfr(0.25, c.sigma, c.angle);
    const double greyError = std::fabs(grey.channels[0].sfrAt[0] - truth);
    EXPECT_GT(greyError, 0.02);
    for (const Reading& r : planes) {
        EXPECT_LT(std::fabs(r.sfrHalfNyquist - r.trueHalfNyquist), greyError / 4.0);
    }
}

// Each phase names its planes by where they sit: with distinct gains, the plane called R
// carries the red gain's step, and so on, for 8- and 16-bit mosaics.
TEST(PerChannelRaw, PlanesAreNamedByTheirSitesInEveryPhase) {
    const double gain[3] = {0.5, 1.0, 0.75};  // red, green, blue
    const std::pair<const char*, int> expected[4] = {{"R", 0}, {"Gr", 1}, {"Gb", 1}, {"B", 2}};
    for (int phase :
         {PixelFormat::PhaseRG, PixelFormat::PhaseGR, PixelFormat::PhaseGB, PixelFormat::PhaseBG}) {
        for (int depth : {8, 16}) {
            EdgeCase c;
            c.angle = 6.0;
            c.depth = depth;
            std::vector<std::string> names;
            const std::vector<Reading> planes =
                accuracy::readRawPlanes(c, {gain[0], gain[1], gain[2]}, phase, &names);
            ASSERT_EQ(names.size(), 4u);
            for (size_t k = 0; k < 4; ++k) {
                EXPECT_EQ(names[k], expected[k].first) << "phase " << phase;
            }
            // The step height of each plane tells which sites it read.
            SfrCurveOptions options;
            options.method = SfrMethod::kPrecise;
            options.perChannelRaw = true;
            const cv::Mat image = accuracy::renderRawMosaic(c, {gain[0], gain[1], gain[2]}, phase);
            const int layout = depth == 8 ? PixelFormat::Bayer8 : PixelFormat::Bayer16;
            SfrCurve curve;
            ASSERT_EQ(
                measureSfrCurve(image.data, image.cols, image.rows, layout + phase, options, curve),
                0);
            ASSERT_EQ(curve.channels.size(), 4u);
            const double unit = depth == 8 ? 1.0 : 256.0;
            for (size_t k = 0; k < 4; ++k) {
                const SfrChannelCurve& ch = curve.channels[k];
                const double step = ch.esf.back() - ch.esf.front();
                EXPECT_NEAR(step / (160.0 * unit), gain[expected[k].second], 0.03)
                    << ch.name << " phase " << phase << " depth " << depth;
            }
        }
    }
}

TEST(PerChannelRaw, NeedsThePreciseMethodAndAMosaic) {
    const cv::Mat grey = talonvireo::testing::renderGrey8(talonvireo::testing::edgeScene(0.8, 5.0));
    SfrCurveOptions classic;
    classic.perChannelRaw = true;
    SfrCurveOptions precise = classic;
    precise.method = SfrMethod::kPrecise;
    SfrCurve curve;
    curve.channels.resize(1);
    curve.channels[0].name = "mine";
    EXPECT_EQ(measureSfrCurve(grey.data, 100, 100, PixelFormat::Bayer8 + PixelFormat::PhaseRG,
                              classic, curve),
              -1);
    for (int format : {PixelFormat::Grey8, PixelFormat::Bgr8, PixelFormat::Grey16}) {
        EXPECT_EQ(measureSfrCurve(grey.data, 50, 50, format, precise, curve), -1);
    }
    // A mosaic layout with no phase, or two phases at once.
    EXPECT_EQ(measureSfrCurve(grey.data, 100, 100, PixelFormat::Bayer8, precise, curve), -1);
    EXPECT_EQ(measureSfrCurve(grey.data, 100, 100, PixelFormat::Bayer8 + 3, precise, curve), -1);
    ASSERT_EQ(curve.channels.size(), 1u);
    EXPECT_EQ(curve.channels[0].name, "mine");
}

// At 1 degree a 60 x 60 mosaic gives each plane only half a phase cycle: the planes cannot
// be measured, and the call says so (-4, edge too close to the grid) instead of answering.
TEST(PerChannelRaw, TooFewPhasesPerPlaneIsRefused) {
    EdgeCase c;
    c.size = 60;
    c.angle = 1.0;
    c.depth = 16;
    const std::vector<Reading> planes =
        accuracy::readRawPlanes(c, {1.0, 1.0, 1.0}, PixelFormat::PhaseRG);
    ASSERT_EQ(planes.size(), 4u);
    EXPECT_EQ(planes[0].status, -4);
    // The same edge as grey is measured by the classic method and by the precise one.
    EXPECT_EQ(accuracy::readEdge(c, accuracy::Method::Precise).status, 0);
}

}  // namespace
