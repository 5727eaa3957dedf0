// Measured SFR against the true SFR of exactly rendered, blurred edges.
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <tuple>

#include "TestRegions.h"
#include "render/SfrTruth.h"

namespace {
using namespace talonvireo::testing;
namespace render = talonvireo::render;

struct EdgeCase {
    double sigma;
    double angle;
    render::EdgeFamily family;
    bool darkFirst;
};

std::string caseName(const ::testing::TestParamInfo<EdgeCase>& info) {
    const EdgeCase& c = info.param;
    std::ostringstream name;
    name << "sigma" << static_cast<int>(std::lround(c.sigma * 10)) << "_angle"
         << static_cast<int>(c.angle)
         << (c.family == render::EdgeFamily::NearVertical ? "_vertical" : "_horizontal")
         << (c.darkFirst ? "_darkFirst" : "_brightFirst");
    return name.str();
}

// GoogleTest would otherwise print the case's raw bytes, padding included.
void PrintTo(const EdgeCase& c, std::ostream* os) {
    *os << caseName(::testing::TestParamInfo<EdgeCase>(c, 0));
}

render::SlantedEdgeScene sceneOf(const EdgeCase& c) {
    render::SlantedEdgeScene scene = edgeScene(c.sigma, c.angle);
    scene.family = c.family;
    scene.darkFirst = c.darkFirst;
    return scene;
}

std::vector<EdgeCase> casesAt(std::initializer_list<double> angles) {
    std::vector<EdgeCase> cases;
    for (double sigma : {0.5, 0.8, 1.2}) {
        for (double angle : angles) {
            for (auto family :
                 {render::EdgeFamily::NearVertical, render::EdgeFamily::NearHorizontal}) {
                for (bool darkFirst : {true, false}) {
                    cases.push_back({sigma, angle, family, darkFirst});
                }
            }
        }
    }
    return cases;
}

// Small angles: the reported figures are the true SFR itself.
class SmallAngleAccuracy : public ::testing::TestWithParam<EdgeCase> {};

TEST_P(SmallAngleAccuracy, SfrWithin0015AndMtf50WithinTwoPercentOfTruth) {
    const EdgeCase& c = GetParam();
    const Measurement m = measureScene(sceneOf(c));
    ASSERT_EQ(m.status, 0);
    const tagSFRResult& r = m.result;
    EXPECT_NEAR(r.sfrQuarterNyquist[0], render::trueSfr(0.125, c.sigma, c.angle), 0.015);
    EXPECT_NEAR(r.sfrHalfNyquist[0], render::trueSfr(0.25, c.sigma, c.angle), 0.015);
    const double mtf50 = render::trueMtf50(c.sigma, c.angle);
    EXPECT_NEAR(r.mtf50[0], mtf50, 0.02 * mtf50);
    EXPECT_NEAR(std::fabs(r.edgeAngle), c.angle, 0.1);
}

INSTANTIATE_TEST_SUITE_P(Edges, SmallAngleAccuracy, ::testing::ValuesIn(casesAt({3.0, 5.0, 10.0})),
                         caseName);

// Large angles: the projection is already normal to the edge and the axis is divided by
// cos(angle) once more, so the figure reported at f is the true SFR at f cos(angle).
class LargeAngleAccuracy : public ::testing::TestWithParam<EdgeCase> {};

TEST_P(LargeAngleAccuracy, SfrAtFIsTrueSfrAtFCosAngle) {
    const EdgeCase& c = GetParam();
    const Measurement m = measureScene(sceneOf(c));
    ASSERT_EQ(m.status, 0);
    const tagSFRResult& r = m.result;
    const double cosA = std::cos(c.angle * M_PI / 180.0);
    EXPECT_NEAR(r.sfrQuarterNyquist[0], render::trueSfr(0.125 * cosA, c.sigma, c.angle), 0.02);
    EXPECT_NEAR(r.sfrHalfNyquist[0], render::trueSfr(0.25 * cosA, c.sigma, c.angle), 0.02);
    const double stretched = render::trueMtf50(c.sigma, c.angle) / cosA;
    EXPECT_NEAR(r.mtf50[0], stretched, 0.03 * stretched);
    EXPECT_NEAR(r.nyquist, 0.5 / cosA, 0.002);
}

INSTANTIATE_TEST_SUITE_P(Edges, LargeAngleAccuracy, ::testing::ValuesIn(casesAt({20.0, 40.0})),
                         caseName);

TEST(Accuracy, NoisyEdgeStaysNearTruth) {
    render::SlantedEdgeScene scene = edgeScene(0.8, 5.0);
    scene.noise = 1.0;
    for (std::uint32_t seed = 1; seed <= 5; ++seed) {
        scene.seed = seed;
        const Measurement m = measureScene(scene);
        ASSERT_EQ(m.status, 0);
        EXPECT_NEAR(m.result.sfrHalfNyquist[0], render::trueSfr(0.25, 0.8, 5.0), 0.03);
    }
}

}  // namespace
