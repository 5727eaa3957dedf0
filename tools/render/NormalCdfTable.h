// The normal CDF from a table: cubic Hermite pieces between nodes 1/64 apart on [-8.5, 8.5]
// from its exact values and slopes, within 1e-10 of the exact CDF everywhere and several times
// faster than erfc, which the pixel quadrature calls tens of millions of times a frame.
#pragma once

#include <vector>

namespace talonvireo {
namespace render {

struct NormalCdfTable {
    static constexpr double kEnd = 8.5;  // 0 and 1 beyond (the tail is below 1e-17)
    static constexpr double kPerUnit = 64.0;
    std::vector<double> value;  // Phi at node i, t = -kEnd + i / kPerUnit
    std::vector<double> slope;  // phi there, per node step

    static NormalCdfTable make();

    double operator()(double t) const {
        if (!(t > -kEnd)) {
            return 0.0;
        }
        if (t >= kEnd) {
            return 1.0;
        }
        const double x = (t + kEnd) * kPerUnit;
        const int i = static_cast<int>(x);
        const double u = x - i;
        const double p0 = value[i], p1 = value[i + 1], m0 = slope[i], m1 = slope[i + 1];
        // Hermite basis in nested form.
        const double d = p1 - p0;
        return p0 + u * (m0 + u * (3.0 * d - 2.0 * m0 - m1 + u * (m0 + m1 - 2.0 * d)));
    }
};

}  // namespace render
}  // namespace talonvireo
