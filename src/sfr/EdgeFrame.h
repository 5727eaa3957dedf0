// Signed distance from a fitted edge line, along its normal.
#pragma once

#include <cmath>

#include "sfr/SfrContext.h"

namespace talonvireo {
namespace sfr {

// The line column = intercept + slope * row, with the sign that makes distances grow from
// the dark side to the light one.
struct EdgeFrame {
    EdgeLine line;
    double sign = 1.0;

    double scale() const { return sign / std::sqrt(1.0 + line.slope * line.slope); }
    double distance(double x, double y) const {
        return (x - line.intercept - line.slope * y) * scale();
    }
};

}  // namespace sfr
}  // namespace talonvireo
