// Exact rendering of a chart of dark squares on a light background.
//
// The Gaussian PSF is separable along a square's own axes, so the blurred coverage of a
// square at a point is a product of two differences of normal CDFs. Each pixel (c, r) covers
// [c - 0.5, c + 0.5) x [r - 0.5, r + 0.5) and averages that coverage over its area with a
// Gauss-Legendre rule; pixels farther than 5.5 sigma from every side are simply 0 or 1. No
// image is blurred after sampling.
//
// Under a similarity transform (shift, rotation, scale) the result is exact to the rule's
// accuracy. Under a perspective transform each point is mapped back onto the chart and
// blurred there with sigma divided by the local scale at the square's centre: an
// approximation whose error grows with the perspective terms.
#pragma once

#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

#include "render/ChartSquare.h"
#include "render/ChartTransform.h"

namespace talonvireo {
namespace render {

// Dark coverage (0 light .. 1 dark) of every pixel of a width x height frame, CV_64F.
// Throws std::invalid_argument for a non-positive size or sigma.
cv::Mat chartCoverage(const std::vector<ChartSquare>& squares, const ChartTransform& transform,
                      double sigma, int width, int height);

// How coverage becomes sensor values.
struct ChartExposure {
    double dark = 0.12;   // level of a dark square, fraction of full scale
    double light = 0.80;  // level of the background, fraction of full scale
    // Gains of the red, green and blue sites of the mosaic (ignored without it).
    double gainRed = 1.0;
    double gainGreen = 1.0;
    double gainBlue = 1.0;
    bool bayer = false;      // mosaic of phase R G: rows R G R G ... / G B G B ...
    double shotNoise = 0.0;  // noise standard deviation at full scale, in output units;
                             // scales with the square root of the level
    double readNoise = 0.0;  // level-independent noise standard deviation, output units
    std::uint32_t seed = 1;
    int bits = 8;  // 8: 8-bit grey (CV_8U); 10, 14 or 16: raw words (CV_16U), full scale
                   // 2^bits - 1
};

// Levels rounded to the nearest output value and clamped to 0 .. full scale. Throws
// std::invalid_argument for bits other than 8, 10, 14, 16.
cv::Mat exposeChart(const cv::Mat& coverage, const ChartExposure& exposure);

}  // namespace render
}  // namespace talonvireo
