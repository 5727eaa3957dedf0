#include "render/SlantedEdgeRenderer.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <stdexcept>

#include "render/EdgeSpreadTable.h"
#include "render/GaussLegendre.h"
#include "render/Pi.h"

namespace talonvireo {
namespace render {

namespace {
constexpr int kNodes = 16;

double normalCdf(double t) {
    return 0.5 * std::erfc(-t / std::sqrt(2.0));
}
double normalPdf(double t) {
    return std::exp(-0.5 * t * t) / std::sqrt(2.0 * kPi);
}
// Antiderivative of the normal CDF.
double cdfIntegral(double t) {
    return t * normalCdf(t) + normalPdf(t);
}

// Mean over u in [u0 - 0.5, u0 + 0.5] of Phi(alpha u + beta), in closed form.
double exactMean(double u0, double alpha, double beta) {
    if (alpha == 0.0) {
        return normalCdf(beta);
    }
    return (cdfIntegral(alpha * (u0 + 0.5) + beta) - cdfIntegral(alpha * (u0 - 0.5) + beta)) /
           alpha;
}
}  // namespace

QuadratureRule pixelQuadrature() {
    return gaussLegendre(kNodes);
}

double brightFraction(double c, double r, const EdgeLineGeometry& edge,
                      const QuadratureRule& rule) {
    // Closed form along the axis where the normal is steeper; quadrature along the other,
    // where the integrand varies slowly.
    const bool alongX = std::fabs(edge.nx) >= std::fabs(edge.ny);
    const double a = (alongX ? edge.nx : edge.ny) / edge.sigma;
    const double b = (alongX ? edge.ny : edge.nx) / edge.sigma;
    const double u0 = alongX ? c : r;
    const double v0 = alongX ? r : c;
    const double uc = alongX ? edge.cx : edge.cy;
    const double vc = alongX ? edge.cy : edge.cx;
    double sum = 0.0;
    for (size_t i = 0; i < rule.nodes.size(); ++i) {
        const double v = v0 + 0.5 * rule.nodes[i];
        sum += 0.5 * rule.weights[i] * exactMean(u0, a, b * (v - vc) - a * uc);
    }
    return sum;
}

namespace {
void checkScene(const SlantedEdgeScene& scene) {
    if (scene.width <= 0 || scene.height <= 0) {
        throw std::invalid_argument("scene needs a positive size");
    }
}

// The scene's edge line; its sigma is the scene's.
EdgeLineGeometry sceneEdge(const SlantedEdgeScene& scene) {
    const double a = scene.angleDeg * kPi / 180.0;
    EdgeLineGeometry edge;
    if (scene.family == EdgeFamily::NearVertical) {
        edge.nx = std::cos(a);
        edge.ny = -std::sin(a);
    } else {
        edge.nx = std::sin(a);
        edge.ny = std::cos(a);
    }
    edge.cx = (scene.width - 1) * 0.5 + scene.shiftX;
    edge.cy = (scene.height - 1) * 0.5 + scene.shiftY;
    edge.sigma = scene.sigma;
    return edge;
}

// Levels from each pixel's bright fraction, with the scene's noise.
template <typename BrightFraction>
cv::Mat sceneLevels(const SlantedEdgeScene& scene, BrightFraction bright) {
    const double low = scene.darkFirst ? scene.dark : scene.bright;
    const double high = scene.darkFirst ? scene.bright : scene.dark;
    cv::Mat levels(scene.height, scene.width, CV_64F);
    for (int r = 0; r < scene.height; ++r) {
        double* row = levels.ptr<double>(r);
        for (int c = 0; c < scene.width; ++c) {
            row[c] = low + (high - low) * bright(c, r);
        }
    }
    std::mt19937 engine(scene.seed);
    if (scene.photonsPerLevel > 0.0) {
        for (int r = 0; r < scene.height; ++r) {
            double* row = levels.ptr<double>(r);
            for (int c = 0; c < scene.width; ++c) {
                std::poisson_distribution<long> photons(std::max(0.0, row[c]) *
                                                        scene.photonsPerLevel);
                row[c] = static_cast<double>(photons(engine)) / scene.photonsPerLevel;
            }
        }
    }
    if (scene.noise > 0.0) {
        std::normal_distribution<double> noise(0.0, scene.noise);
        for (int r = 0; r < scene.height; ++r) {
            double* row = levels.ptr<double>(r);
            for (int c = 0; c < scene.width; ++c) {
                row[c] += noise(engine);
            }
        }
    }
    return levels;
}
}  // namespace

cv::Mat renderSlantedEdge(const SlantedEdgeScene& scene) {
    checkScene(scene);
    if (!(scene.sigma > 0.0)) {
        throw std::invalid_argument("scene needs a positive sigma");
    }
    const EdgeLineGeometry edge = sceneEdge(scene);
    const QuadratureRule rule = pixelQuadrature();
    return sceneLevels(scene, [&](int c, int r) { return brightFraction(c, r, edge, rule); });
}

cv::Mat renderSlantedEdge(const SlantedEdgeScene& scene, const EdgeSpreadTable& spread,
                          double aperture) {
    checkScene(scene);
    if (!(aperture > 0.0 && aperture <= 1.0)) {
        throw std::invalid_argument("pixel aperture must lie in (0, 1]");
    }
    if (edgeReach(scene) > spread.reach()) {
        throw std::out_of_range("the edge spread table does not reach the region's corners");
    }
    const EdgeLineGeometry edge = sceneEdge(scene);
    const double w1 = aperture * edge.nx, w2 = aperture * edge.ny;
    return sceneLevels(scene, [&](int c, int r) {
        return spread.pixelLevel(edge.nx * (c - edge.cx) + edge.ny * (r - edge.cy), w1, w2);
    });
}

double edgeReach(const SlantedEdgeScene& scene) {
    checkScene(scene);
    const EdgeLineGeometry edge = sceneEdge(scene);
    double far = 0.0;
    for (double c : {-0.5, scene.width - 0.5}) {
        for (double r : {-0.5, scene.height - 0.5}) {
            far = std::max(far, std::fabs(edge.nx * (c - edge.cx) + edge.ny * (r - edge.cy)));
        }
    }
    return far + 1.0;
}

}  // namespace render
}  // namespace talonvireo
