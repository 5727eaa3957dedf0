// Points read off one channel's SFR curve, held as plain frequency and SFR arrays.
#pragma once

#include <vector>

namespace talonvireo {
namespace sfr {

// SFR at frequency f, linear between the two table entries that bracket it; NaN when f lies
// outside the table.
double sfrAtFrequency(const std::vector<double>& frequency, const std::vector<double>& sfr,
                      double f);

// Frequency where the SFR first falls strictly below `level`, linear between that entry and
// the one before; NaN when it never does.
double frequencyAtLevel(const std::vector<double>& frequency, const std::vector<double>& sfr,
                        double level);

}  // namespace sfr
}  // namespace talonvireo
