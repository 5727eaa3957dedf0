// Records of the whole-frame measurement: what the caller asks for and what it gets back.
// Plain 32-bit fields, no constructors; the caller allocates them and the library fills
// them in place for the length of one call.
#pragma once

#include <cstdint>

namespace talonvireo {

/// What to measure. Validation: roiSize >= 1; 1 <= markSearchSize <= width / 2; roiSize <=
/// markSearchSize. The _RQ8 members set roiSize to 90 in the caller's record (and leave it
/// so, also on failure) and require 90 <= markSearchSize <= width / 2.
struct SFRParam {
    /// N of the extra frequency 0.5 / N cycles per pixel (sfrCustom); <= 0 gives no figure.
    float freqDivisor;
    /// Side of the square region cut round every located edge centre, pixels.
    std::int32_t roiSize;
    /// Length scale of the chart marks, pixels: the corner search's minimum corner distance
    /// and blob area, and the ring radius of single-corner edges.
    std::int32_t markSearchSize;
};
static_assert(sizeof(SFRParam) == 12, "SFRParam is three 32-bit fields");

/// One measured edge. Note the order: half Nyquist before quarter Nyquist.
struct SFREdgeResult {
    std::int32_t x;           ///< column of the region centre (located centre, truncated)
    std::int32_t y;           ///< row of the region centre
    float sfrHalfNyquist;     ///< SFR at 0.25 cycles per pixel
    float sfrQuarterNyquist;  ///< SFR at 0.125 cycles per pixel
    float sfrCustom;          ///< SFR at 0.5 / freqDivisor cycles per pixel; 0 without a divisor
};
static_assert(sizeof(SFREdgeResult) == 20, "an edge entry is five 32-bit fields");

/// The K31R22BX chart: entries 0-33 from the first layout, 34-67 from the second, each in a
/// fixed slot so that entry k always names the same chart edge.
struct SFRResult {
    SFREdgeResult edges[68];
};
static_assert(sizeof(SFRResult) == 68 * 20, "SFRResult is 68 edge entries");

/// The 26-edge charts: entries 0-25 from the first layout, 26-51 from the second.
struct SFRResult_HLX5 {
    SFREdgeResult edges[52];
};
static_assert(sizeof(SFRResult_HLX5) == 52 * 20, "SFRResult_HLX5 is 52 edge entries");

}  // namespace talonvireo
