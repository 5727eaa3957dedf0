// Exact rendering of a blurred straight edge.
//
// Each pixel is the Gaussian-blurred step averaged over the pixel's area. Pixel (c, r) covers
// [c - 0.5, c + 0.5) x [r - 0.5, r + 0.5): integer coordinates are pixel centres, as in OpenCV.
// Along one axis the average is exact (the integral of the normal CDF has a closed form), along
// the other it is a 16-point Gauss-Legendre rule, good to about 1e-12 of the edge height for
// sigma >= 0.3 px. No image is blurred after sampling.
#pragma once

#include <cstdint>

#include <opencv2/core.hpp>

#include "render/GaussLegendre.h"

namespace talonvireo {
namespace render {

class EdgeSpreadTable;

enum class EdgeFamily {
    NearVertical,    // the edge runs top to bottom; the angle is measured from vertical
    NearHorizontal,  // the edge runs left to right; the angle is measured from horizontal
};

struct SlantedEdgeScene {
    int width = 100;
    int height = 100;
    EdgeFamily family = EdgeFamily::NearVertical;
    // Positive angles lean a near-vertical edge's lower end to the right and lift a
    // near-horizontal edge's right end.
    double angleDeg = 5.0;
    // Dark on the left (near-vertical) or on top (near-horizontal); false swaps the sides.
    bool darkFirst = true;
    double dark = 40.0;     // level far on the dark side
    double bright = 200.0;  // level far on the bright side
    double sigma = 0.8;     // standard deviation of the Gaussian PSF, pixels (> 0)
    // The edge passes through the region's centre ((width-1)/2, (height-1)/2) plus this shift.
    double shiftX = 0.0;
    double shiftY = 0.0;
    double noise = 0.0;  // standard deviation of additive Gaussian noise, in levels
    // Photon noise: each pixel's level times this is the mean of a Poisson count, which
    // divided back by it is the level (0: none). Applied before the additive noise.
    double photonsPerLevel = 0.0;
    std::uint32_t seed = 1;
};

// Levels as CV_64F, height x width. Throws std::invalid_argument for a non-positive size
// or sigma.
cv::Mat renderSlantedEdge(const SlantedEdgeScene& scene);

// The scene blurred by the lens of `spread` instead of a Gaussian of scene.sigma, each pixel
// a centred square aperture of side `aperture` (of the pitch, 0..1]. The truth is
// spread.lens().mtf(f) sinc(aperture f cos a) sinc(aperture f sin a). Throws
// std::invalid_argument for a bad size or aperture and std::out_of_range when the table does
// not reach the region's corners (see edgeReach).
cv::Mat renderSlantedEdge(const SlantedEdgeScene& scene, const EdgeSpreadTable& spread,
                          double aperture = 1.0);

// The farthest any pixel of the scene reaches from its edge, pixels: the reach an
// EdgeSpreadTable needs for it.
double edgeReach(const SlantedEdgeScene& scene);

// A straight edge through (cx, cy) whose unit normal (nx, ny) points to the bright side.
struct EdgeLineGeometry {
    double cx = 0.0;
    double cy = 0.0;
    double nx = 1.0;
    double ny = 0.0;
    double sigma = 1.0;
};

// The quadrature rule brightFraction expects.
QuadratureRule pixelQuadrature();

// Fraction of pixel (c, r) on the bright side of the blurred edge, averaged over the pixel.
double brightFraction(double c, double r, const EdgeLineGeometry& edge, const QuadratureRule& rule);

}  // namespace render
}  // namespace talonvireo
