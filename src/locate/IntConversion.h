// Float-to-int conversions of the locator. Truncation toward zero as C++ casts do, but
// saturating at the int range (NaN becomes 0) so that a wild projection or radius cannot hit
// the undefined cast; every value inside the range converts exactly as the cast would.
#pragma once

#include <climits>
#include <cstdint>

namespace RegularSFR {

inline int truncateToInt(double v) {
    if (!(v == v)) {
        return 0;
    }
    if (v >= 2147483647.0) {
        return INT_MAX;
    }
    if (v <= -2147483648.0) {
        return INT_MIN;
    }
    return static_cast<int>(v);
}

// n * n as a 32-bit product wraps, without the undefined signed overflow.
inline int squareInt32(int n) {
    const std::int64_t sq = static_cast<std::int64_t>(n) * n;
    return static_cast<int>(static_cast<std::uint32_t>(sq));
}

}  // namespace RegularSFR
