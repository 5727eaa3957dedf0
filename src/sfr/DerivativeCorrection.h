// Correction of the SFR for the three-tap derivative that turned the ESF into the LSF.
#pragma once

#include <vector>

namespace talonvireo {
namespace sfr {

// For a working image of `columns` columns: n = 2 * columns + 1 entries; correct(0) = 1 and,
// with k = i + 1, correct(i) = |x / sin(x)|, x = 2 pi k / (2n + 2), at most 10.
// The tables use only the first 2 * columns entries.
std::vector<double> derivativeCorrection(int columns);

}  // namespace sfr
}  // namespace talonvireo
