// What the painters of a level map share: how far a blur reaches, the pixel's quadrature
// nodes, the normal CDF, and how a coverage is painted over what lies below it.
//
// A shape's coverage is Phi(frame distance / sigma) per bounding side (product over the sides
// of a convex shape: exact away from its corners, as the blur of a half-plane is), averaged
// over the pixel [c - 0.5, c + 0.5) x [r - 0.5, r + 0.5) by a Gauss-Legendre rule. Pixels
// whose every node lies farther than kReachSigmas sigma from every side are 0 or 1 outright.
#pragma once

#include <array>
#include <cmath>

#include "render/FieldBlur.h"
#include "render/GaussLegendre.h"
#include "render/NormalCdfTable.h"
#include "talonvireo/ChartRegistration.h"

namespace talonvireo {
namespace render {

constexpr int kPixelNodes = 6;            // Gauss-Legendre nodes per pixel axis
constexpr double kReachSigmas = 6.0;      // Phi(-6) = 1e-9
constexpr double kHalfDiagonal = 0.7072;  // farthest node from a pixel's centre, with room

// The kPixelNodes^2 nodes of a pixel as offsets from its centre, with weights summing to 1.
struct PixelNodes {
    std::array<double, kPixelNodes * kPixelNodes> dx{};
    std::array<double, kPixelNodes * kPixelNodes> dy{};
    std::array<double, kPixelNodes * kPixelNodes> weight{};

    static PixelNodes make() {
        const QuadratureRule rule = gaussLegendre(kPixelNodes);
        PixelNodes nodes;
        for (int i = 0; i < kPixelNodes; ++i) {
            for (int j = 0; j < kPixelNodes; ++j) {
                const int k = i * kPixelNodes + j;
                nodes.dx[k] = 0.5 * rule.nodes[j];
                nodes.dy[k] = 0.5 * rule.nodes[i];
                nodes.weight[k] = 0.25 * rule.weights[i] * rule.weights[j];
            }
        }
        return nodes;
    }
};

// What every painter needs to know of the frame.
struct PaintContext {
    const ChartRegistration* placement = nullptr;
    FieldBlur blur;
    double bend = 0.0;  // DistortionBounds::bend
    PixelNodes nodes;
    NormalCdfTable cdf;
};

// A distance limit past which a first-order frame distance of `reach` is safely beyond reach:
// it errs by at most about reach^2 bend, so twice that and a little more.
inline double beyondReach(double reach, double bend) {
    return reach * (1.0 + 2.0 * reach * bend) + 0.05;
}

// Paint `paint` over `level` with coverage `cov`.
inline void paintOver(double& level, double paint, double cov) {
    level = level * (1.0 - cov) + paint * cov;
}

}  // namespace render
}  // namespace talonvireo
