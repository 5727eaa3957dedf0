// Centroid of a row of samples, in one-based positions.
#pragma once

namespace talonvireo {
namespace sfr {

// sum(i v(i)) / sum(v(i)) for i = 1..n; 0 when sum(v) < 0.0001 (no usable edge in the row).
double rowCentroid(const double* v, int n);

// Centroid of the product v(i) w(i), without forming the product.
double weightedRowCentroid(const double* v, const double* w, int n);

}  // namespace sfr
}  // namespace talonvireo
