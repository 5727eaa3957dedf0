// Edges blurred by real lenses (diffraction, defocus, a soft skirt): the tabulated edge spread
// against closed forms, brute-force pixel integration and the exact Gaussian renderer.
#include <gtest/gtest.h>

#include <cmath>

#include "render/EdgeSpreadTable.h"
#include "render/LensBlur.h"
#include "render/SfrTruth.h"
#include "render/SlantedEdgeRenderer.h"

namespace {
namespace render = talonvireo::render;

// A lens's table reproduces the exact Gaussian renderer (closed form across, quadrature
// along) pixel for pixel at every angle: the transform, the integrals and the aperture boxes
// together.
TEST(LensRenderer, AGaussianLensReproducesTheExactGaussianRenderer) {
    for (double sigma : {0.3, 0.8, 2.0}) {
        const render::EdgeSpreadTable table(render::gaussianBlur(sigma), 80.0);
        for (double angle : {0.0, 1.0, 5.0, 26.565, 44.0}) {
            for (auto family :
                 {render::EdgeFamily::NearVertical, render::EdgeFamily::NearHorizontal}) {
                render::SlantedEdgeScene scene;
                scene.width = 60;
                scene.height = 50;
                scene.family = family;
                scene.angleDeg = angle;
                scene.sigma = sigma;
                scene.shiftX = 0.37;
                const cv::Mat exact = render::renderSlantedEdge(scene);
                const cv::Mat lens = render::renderSlantedEdge(scene, table);
                EXPECT_LT(cv::norm(exact, lens, cv::NORM_INF), 160.0 * 1e-8)
                    << "sigma " << sigma << " angle " << angle;
            }
        }
    }
}

// The mean over a pixel with a 0.87 aperture, by a fine midpoint grid over the aperture,
// against the table's second difference.
TEST(LensRenderer, PixelLevelsMatchBruteForceIntegrationOverTheAperture) {
    const render::EdgeSpreadTable table(render::diffractionLimited(4.0), 20.0);
    const double aperture = 0.87;
    for (double angle : {0.5, 8.0, 33.0}) {
        const double nx = std::cos(angle * M_PI / 180.0), ny = -std::sin(angle * M_PI / 180.0);
        for (double d : {-2.1, -0.4, 0.0, 0.3, 1.7}) {
            const int n = 300;
            double sum = 0.0;
            for (int i = 0; i < n; ++i) {
                for (int j = 0; j < n; ++j) {
                    const double u = aperture * ((i + 0.5) / n - 0.5);
                    const double v = aperture * ((j + 0.5) / n - 0.5);
                    sum += table.edgeSpread(d + nx * u + ny * v);
                }
            }
            EXPECT_NEAR(table.pixelLevel(d, aperture * nx, aperture * ny), sum / (n * n), 2e-6)
                << angle << " " << d;
        }
    }
}

// A circular pupil's transfer falls from 1 with slope 4 / (pi fc): its line spread's tail is
// 2 / (pi^3 fc x^2) (under a ripple at the cut-off frequency, averaged out here over four of
// its periods) and the edge spread is 2 / (pi^3 fc x) short of its plateau.
TEST(LensRenderer, DiffractionTailsFallAsTheInverseSquare) {
    const render::LensBlur lens = render::diffractionLimited(16.0);
    const double fc = lens.diffractionCutoff();
    EXPECT_NEAR(fc, 4.345 / (0.537 * 16.0), 1e-12);
    const render::EdgeSpreadTable table(lens, 220.0);
    for (double x : {60.0, 120.0, 200.0}) {
        double mean = 0.0;
        for (int k = 0; k < 400; ++k) {
            mean += table.lineSpread(x + (k + 0.5 - 200.0) / (100.0 * fc)) / 400.0;
        }
        EXPECT_NEAR(mean / (2.0 / (M_PI * M_PI * M_PI * fc * x * x)), 1.0, 0.01) << x;
        EXPECT_NEAR((1.0 - table.edgeSpread(x)) / (2.0 / (M_PI * M_PI * M_PI * fc * x)), 1.0, 0.02)
            << x;
        EXPECT_NEAR(table.edgeSpread(-x), 1.0 - table.edgeSpread(x), 1e-14);
    }
    EXPECT_NEAR(table.edgeSpread(0.0), 0.5, 1e-14);
}

// A halo of Cauchy line spread keeps its share of the light far out: s w / (pi x^2).
TEST(LensRenderer, ASkirtKeepsItsShareFarOut) {
    const render::LensBlur lens = render::skirted(0.6, 0.05, 4.0);
    const render::EdgeSpreadTable table(lens, 160.0);
    for (double x : {40.0, 100.0, 150.0}) {
        EXPECT_NEAR(table.lineSpread(x) / (0.05 * 4.0 / (M_PI * (x * x + 16.0))), 1.0, 0.01) << x;
    }
    // The core holds the rest: the line spread's peak is the Gaussian's, scaled.
    EXPECT_NEAR(table.lineSpread(0.0), 0.95 / (0.6 * std::sqrt(2.0 * M_PI)), 0.02);
}

// A blur disk of diameter D has a semicircular line spread, 8 sqrt(D^2/4 - x^2) / (pi D^2);
// f/1.4 diffraction barely softens it at its middle.
TEST(LensRenderer, ADefocusedLensSpreadsTheLightOverItsBlurDisk) {
    const render::EdgeSpreadTable table(render::defocused(1.4, 10.0), 40.0);
    for (double x : {0.0, 2.0, 3.5}) {
        const double disk = 8.0 * std::sqrt(25.0 - x * x) / (M_PI * 100.0);
        EXPECT_NEAR(table.lineSpread(x) / disk, 1.0, 0.01) << x;
    }
    EXPECT_LT(table.lineSpread(8.0), 0.002);
}

TEST(LensRenderer, TruthIsTheLensTimesThePixelAperture) {
    const render::LensBlur lens = render::diffractionLimited(4.0);
    const double nu = 0.3;
    const double phi = std::acos(nu);
    const double pupil = 2.0 / M_PI * (phi - std::cos(phi) * std::sin(phi));
    EXPECT_NEAR(lens.mtf(nu * lens.diffractionCutoff()), pupil, 1e-14);
    EXPECT_EQ(lens.mtf(lens.diffractionCutoff() * 1.01), 0.0);
    const double f = 0.25, a = 10.0 * M_PI / 180.0;
    const auto sinc = [](double x) { return std::sin(M_PI * x) / (M_PI * x); };
    EXPECT_NEAR(render::trueSfr(f, lens, 10.0, 0.87),
                lens.mtf(f) * sinc(0.87 * f * std::cos(a)) * sinc(0.87 * f * std::sin(a)), 1e-15);
    const double f50 = render::trueFrequencyAtLevel(0.5, lens, 10.0, 0.87);
    EXPECT_NEAR(render::trueSfr(f50, lens, 10.0, 0.87), 0.5, 1e-12);
    // A Gaussian lens gives the Gaussian truth.
    EXPECT_NEAR(render::trueFrequencyAtLevel(0.5, render::gaussianBlur(0.8), 5.0),
                render::trueMtf50(0.8, 5.0), 1e-9);
    // A strongly defocused lens dips below 0.5 before its later lobes.
    const render::LensBlur blurred = render::defocused(4.0, 8.0);
    const double first = render::trueFrequencyAtLevel(0.5, blurred, 5.0);
    for (double g = 0.0; g < first; g += 0.001) {
        EXPECT_GT(render::trueSfr(g, blurred, 5.0), 0.5);
    }
}

TEST(LensRenderer, PhotonNoiseHasThePoissonSpread) {
    render::SlantedEdgeScene scene;
    scene.width = 200;
    scene.height = 200;
    scene.dark = 100.0;
    scene.bright = 100.0;
    scene.photonsPerLevel = 4.0;  // 400 photons: a spread of 20, 5 levels
    const render::EdgeSpreadTable table(render::diffractionLimited(8.0), render::edgeReach(scene));
    const cv::Mat v = render::renderSlantedEdge(scene, table);
    cv::Scalar mean, spread;
    cv::meanStdDev(v, mean, spread);
    EXPECT_NEAR(mean[0], 100.0, 0.1);
    EXPECT_NEAR(spread[0], 5.0, 0.1);
}

TEST(LensRenderer, BadLensesAndReachesAreRefused) {
    EXPECT_THROW(render::EdgeSpreadTable(render::diffractionLimited(-2.0), 10.0),
                 std::invalid_argument);
    render::LensBlur unbounded;
    unbounded.defocusDiameter = 3.0;
    EXPECT_THROW(render::EdgeSpreadTable(unbounded, 10.0), std::invalid_argument);
    EXPECT_THROW(render::EdgeSpreadTable(render::skirted(0.5, 1.5, 3.0), 10.0),
                 std::invalid_argument);
    EXPECT_THROW(render::EdgeSpreadTable(render::gaussianBlur(0.5), 0.0), std::invalid_argument);
    EXPECT_THROW(render::EdgeSpreadTable(render::gaussianBlur(0.5), NAN), std::invalid_argument);
    const render::EdgeSpreadTable small(render::gaussianBlur(0.5), 10.0);
    render::SlantedEdgeScene scene;  // 100 x 100 reaches 50 px and more
    EXPECT_THROW(render::renderSlantedEdge(scene, small), std::out_of_range);
    scene.width = 10;
    scene.height = 10;
    EXPECT_THROW(render::renderSlantedEdge(scene, small, 0.0), std::invalid_argument);
    EXPECT_THROW(render::renderSlantedEdge(scene, small, 1.2), std::invalid_argument);
    EXPECT_NO_THROW(render::renderSlantedEdge(scene, small, 0.87));
}

}  // namespace
