#include "render/GaussLegendre.h"

#include <cmath>
#include <stdexcept>

#include "render/Pi.h"

namespace talonvireo {
namespace render {

QuadratureRule gaussLegendre(int n) {
    if (n < 1) {
        throw std::invalid_argument("quadrature needs at least one node");
    }
    QuadratureRule rule;
    rule.nodes.resize(n);
    rule.weights.resize(n);
    // Newton's method on P_n from the Chebyshev-like first guess; nodes are symmetric.
    for (int i = 0; i < (n + 1) / 2; ++i) {
        double x = std::cos(kPi * (i + 0.75) / (n + 0.5));
        double derivative = 1.0;
        for (int iter = 0; iter < 100; ++iter) {
            double p0 = 1.0;
            double p1 = x;
            for (int k = 2; k <= n; ++k) {
                const double p2 = ((2.0 * k - 1.0) * x * p1 - (k - 1.0) * p0) / k;
                p0 = p1;
                p1 = p2;
            }
            // p1 = P_n(x), p0 = P_{n-1}(x)
            derivative = n * (x * p1 - p0) / (x * x - 1.0);
            const double step = p1 / derivative;
            x -= step;
            if (std::fabs(step) < 1e-16) {
                break;
            }
        }
        const double w = 2.0 / ((1.0 - x * x) * derivative * derivative);
        rule.nodes[i] = -x;
        rule.nodes[n - 1 - i] = x;
        rule.weights[i] = w;
        rule.weights[n - 1 - i] = w;
    }
    return rule;
}

}  // namespace render
}  // namespace talonvireo
