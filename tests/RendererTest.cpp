// The test renderer against brute-force integration, and the truth functions.
#include <gtest/gtest.h>

#include <cmath>

#include "render/GaussLegendre.h"
#include "render/RegionEncoding.h"
#include "render/SfrTruth.h"
#include "render/SlantedEdgeRenderer.h"
#include "talonvireo/PixelFormat.h"

namespace {
namespace render = talonvireo::render;
namespace pf = talonvireo::PixelFormat;

double normalCdf(double t) {
    return 0.5 * std::erfc(-t / std::sqrt(2.0));
}

// Midpoint rule on a fine grid over pixel (c, r) = [c - 0.5, c + 0.5) x [r - 0.5, r + 0.5).
double bruteForce(double c, double r, const render::EdgeLineGeometry& e) {
    const int n = 400;
    double sum = 0.0;
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            const double x = c - 0.5 + (i + 0.5) / n;
            const double y = r - 0.5 + (j + 0.5) / n;
            sum += normalCdf((e.nx * (x - e.cx) + e.ny * (y - e.cy)) / e.sigma);
        }
    }
    return sum / (n * n);
}

TEST(Renderer, PixelAveragesMatchBruteForceIntegration) {
    const render::QuadratureRule rule = render::pixelQuadrature();
    for (double angle : {0.0, 5.0, 30.0, 60.0, 90.0}) {
        for (double sigma : {0.3, 0.8}) {
            render::EdgeLineGeometry e;
            e.cx = 10.2;
            e.cy = 7.7;
            e.nx = std::cos(angle * M_PI / 180.0);
            e.ny = -std::sin(angle * M_PI / 180.0);
            e.sigma = sigma;
            for (int c = 8; c <= 12; ++c) {
                const double exact = render::brightFraction(c, 7, e, rule);
                EXPECT_NEAR(exact, bruteForce(c, 7, e), 2e-5) << angle << " " << sigma << " " << c;
            }
        }
    }
}

TEST(Renderer, PixelCentresAreIntegerCoordinates) {
    // A vertical edge exactly through the centre of column 10: that pixel is half covered.
    const render::QuadratureRule rule = render::pixelQuadrature();
    render::EdgeLineGeometry e;
    e.cx = 10.0;
    e.cy = 0.0;
    e.sigma = 0.5;
    EXPECT_NEAR(render::brightFraction(10, 3, e, rule), 0.5, 1e-14);
    EXPECT_NEAR(render::brightFraction(9, 3, e, rule) + render::brightFraction(11, 3, e, rule), 1.0,
                1e-14);
}

TEST(Renderer, SceneLevelsAndPolarity) {
    render::SlantedEdgeScene scene;
    scene.width = 40;
    scene.height = 30;
    scene.dark = 20;
    scene.bright = 220;
    const cv::Mat v = render::renderSlantedEdge(scene);
    EXPECT_NEAR(v.at<double>(15, 0), 20.0, 1e-9);
    EXPECT_NEAR(v.at<double>(15, 39), 220.0, 1e-9);
    scene.darkFirst = false;
    scene.family = render::EdgeFamily::NearHorizontal;
    const cv::Mat h = render::renderSlantedEdge(scene);
    EXPECT_NEAR(h.at<double>(0, 20), 220.0, 1e-9);
    EXPECT_NEAR(h.at<double>(29, 20), 20.0, 1e-9);
    EXPECT_THROW(render::renderSlantedEdge(render::SlantedEdgeScene{0, 10}), std::invalid_argument);
}

TEST(Renderer, NoiseIsSeeded) {
    render::SlantedEdgeScene scene;
    scene.noise = 2.0;
    scene.seed = 9;
    const cv::Mat a = render::renderSlantedEdge(scene);
    const cv::Mat b = render::renderSlantedEdge(scene);
    EXPECT_EQ(cv::norm(a, b, cv::NORM_INF), 0.0);
    scene.seed = 10;
    EXPECT_GT(cv::norm(a, render::renderSlantedEdge(scene), cv::NORM_INF), 0.0);
}

TEST(Renderer, EncodingLaysOutEveryFormat) {
    cv::Mat g8(2, 3, CV_8U);
    for (int i = 0; i < 6; ++i) {
        g8.data[i] = static_cast<unsigned char>(10 * i);
    }
    EXPECT_EQ(render::encodeRegion(g8, pf::Grey8).size(), 6u);
    const std::vector<unsigned char> bgr = render::encodeRegion(g8, pf::Bgr8);
    ASSERT_EQ(bgr.size(), 18u);
    EXPECT_EQ(bgr[3 * 4 + 0], 40);
    EXPECT_EQ(bgr[3 * 4 + 2], 40);
    cv::Mat g16;
    g8.convertTo(g16, CV_16U, 256.0);
    EXPECT_EQ(render::encodeRegion(g16, pf::Bgr16).size(), 36u);
    EXPECT_EQ(render::encodeRegion(g16, pf::Bayer16 | pf::PhaseRG).size(), 12u);
    EXPECT_THROW(render::encodeRegion(g8, pf::Grey16), std::invalid_argument);
    EXPECT_THROW(render::encodeRegion(g8, 0x030), std::invalid_argument);
}

TEST(Renderer, GaussLegendreIntegratesPolynomialsExactly) {
    const render::QuadratureRule q = render::gaussLegendre(16);
    for (int degree = 0; degree <= 31; ++degree) {
        double sum = 0.0;
        for (size_t i = 0; i < q.nodes.size(); ++i) {
            sum += q.weights[i] * std::pow(q.nodes[i], degree);
        }
        const double exact = degree % 2 ? 0.0 : 2.0 / (degree + 1);
        EXPECT_NEAR(sum, exact, 1e-14) << degree;
    }
}

TEST(SfrTruth, GaussianTimesPixelApertureAlongTheNormal) {
    EXPECT_EQ(render::trueSfr(0.0, 0.8, 5.0), 1.0);
    // Vertical edge: only the pixel width counts; sinc(0.25) = 0.9003.
    EXPECT_NEAR(render::trueSfr(0.25, 0.8, 0.0),
                std::exp(-2 * M_PI * M_PI * 0.64 * 0.0625) * std::sin(M_PI * 0.25) / (M_PI * 0.25),
                1e-15);
    for (double sigma : {0.5, 0.8, 1.2}) {
        const double f = render::trueMtf50(sigma, 5.0);
        EXPECT_NEAR(render::trueSfr(f, sigma, 5.0), 0.5, 1e-12);
    }
}

}  // namespace
