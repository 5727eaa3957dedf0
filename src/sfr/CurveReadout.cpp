#include "sfr/CurveReadout.h"

#include <cstddef>
#include <limits>

namespace talonvireo {
namespace sfr {

namespace {
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double lerp(double x0, double x1, double y0, double y1, double x) {
    return x1 == x0 ? y0 : y0 + (y1 - y0) * (x - x0) / (x1 - x0);
}
}  // namespace

double sfrAtFrequency(const std::vector<double>& frequency, const std::vector<double>& sfr,
                      double f) {
    const std::size_t n = frequency.size() < sfr.size() ? frequency.size() : sfr.size();
    if (n == 0 || !(f >= frequency[0]) || f > frequency[n - 1]) {
        return kNaN;
    }
    for (std::size_t i = 1; i < n; ++i) {
        if (frequency[i] >= f) {
            return lerp(frequency[i - 1], frequency[i], sfr[i - 1], sfr[i], f);
        }
    }
    return sfr[0];  // a table of one entry, f at its frequency
}

double frequencyAtLevel(const std::vector<double>& frequency, const std::vector<double>& sfr,
                        double level) {
    const std::size_t n = frequency.size() < sfr.size() ? frequency.size() : sfr.size();
    for (std::size_t i = 1; i < n; ++i) {
        if (sfr[i] < level) {
            return lerp(sfr[i - 1], sfr[i], frequency[i - 1], frequency[i], level);
        }
    }
    return kNaN;
}

}  // namespace sfr
}  // namespace talonvireo
