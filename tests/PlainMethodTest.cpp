// The optimised core against a plain transcription of the method (filter2D, a cosine per
// window sample, one sine and cosine per transform term, sequential sums).
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "PlainSlantedEdge.h"
#include "TestRegions.h"

namespace {
using namespace talonvireo::testing;
namespace pf = talonvireo::PixelFormat;
namespace render = talonvireo::render;

void expectMatchesPlain(const cv::Mat& grey, int format, const std::string& what) {
    const Measurement m = measure(grey, format, 6.0);
    cv::Mat region = grey;
    if (format == pf::Bgr8) {
        cv::merge(std::vector<cv::Mat>{grey, grey, grey}, region);
    }
    const PlainSfrOutcome plain = plainSlantedEdge(region);
    ASSERT_EQ(m.status, plain.status) << what;
    if (plain.status != 0) {
        return;
    }
    const double tol = 1e-9;
    for (int c = 0; c < plain.channels; ++c) {
        EXPECT_NEAR(m.result.sfrHalfNyquist[c], plainSfrAt(plain, c, 2.0), tol) << what;
        EXPECT_NEAR(m.result.sfrQuarterNyquist[c], plainSfrAt(plain, c, 4.0), tol) << what;
        EXPECT_NEAR(m.result.sfrCustom[c], plainSfrAt(plain, c, 6.0), tol) << what;
        EXPECT_NEAR(m.result.mtf50[c], plainMtf50(plain, c), tol) << what;
    }
    EXPECT_NEAR(m.result.edgeAngle, plain.edgeAngle, 1e-9) << what;
    EXPECT_NEAR(m.result.nyquist, plain.nyquist, 1e-12) << what;
}

TEST(PlainMethod, OptimisedCoreMatchesThePlainTranscription) {
    std::mt19937 rng(2024);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int trial = 0; trial < 60; ++trial) {
        render::SlantedEdgeScene scene;
        scene.width = 20 + static_cast<int>(unit(rng) * 140);
        scene.height = 20 + static_cast<int>(unit(rng) * 140);
        scene.family =
            trial % 3 == 0 ? render::EdgeFamily::NearHorizontal : render::EdgeFamily::NearVertical;
        scene.angleDeg = (trial % 2 ? -1.0 : 1.0) * (1.0 + unit(rng) * 40.0);
        scene.sigma = 0.4 + unit(rng) * 1.6;
        scene.darkFirst = unit(rng) < 0.5;
        scene.dark = 10 + unit(rng) * 60;
        scene.bright = 150 + unit(rng) * 100;
        scene.shiftX = (unit(rng) - 0.5) * 6.0;
        scene.shiftY = (unit(rng) - 0.5) * 6.0;
        scene.noise = unit(rng) * 4.0;
        scene.seed = rng();
        const cv::Mat grey = renderGrey8(scene);
        const std::string what = "trial " + std::to_string(trial);
        expectMatchesPlain(grey, pf::Grey8, what);
        if (trial % 10 == 0) {
            expectMatchesPlain(grey, pf::Bgr8, what + " BGR");
        }
    }
}

TEST(PlainMethod, RefusalsMatchThePlainTranscription) {
    render::SlantedEdgeScene steep = edgeScene(0.8, 55.0);
    steep.width = 160;
    steep.height = 50;
    expectMatchesPlain(renderGrey8(steep), pf::Grey8, "steep");
    render::SlantedEdgeScene faint = edgeScene(0.8, 5.0);
    faint.dark = 120;
    faint.bright = 150;
    expectMatchesPlain(renderGrey8(faint), pf::Grey8, "faint");
}

}  // namespace
