// Gauss-Legendre quadrature rules.
#pragma once

#include <vector>

namespace talonvireo {
namespace render {

struct QuadratureRule {
    std::vector<double> nodes;    // on [-1, 1]
    std::vector<double> weights;  // sum to 2
};

// The n-point rule, exact for polynomials up to degree 2n - 1.
QuadratureRule gaussLegendre(int n);

}  // namespace render
}  // namespace talonvireo
