// SFR of caller-cut slanted-edge regions.
//
// The slanted-edge method (ISO 12233): per-row edge centroids under a Hamming window, a
// least-squares edge line, projection of every pixel onto the edge normal into 4x oversampled
// bins, a Hamming-windowed line-spread function, its discrete Fourier transform and a
// correction for the derivative filter.
#pragma once

#include <cstdint>

#include "talonvireo/Export.h"

/// Figures of one measured edge region.
///
/// Arrays of three are indexed by the channel of the prepared region in OpenCV order (blue,
/// green, red for a BGR region); a grey or Bayer region fills index 0 only. Frequencies are in
/// cycles per pixel (sampling Nyquist = 0.5).
///
/// Every call clears the record to zero and then puts `nyquistDivisor` back, so the caller sets
/// it once; figures a failed call did not reach read 0.
struct tagSFRResult {
    /// In: N. When N > 0 the SFR is also reported at 0.5 / N cycles per pixel (`sfrCustom`).
    double nyquistDivisor;
    double sfrQuarterNyquist[3];  ///< SFR at 0.125 cycles per pixel
    double sfrHalfNyquist[3];     ///< SFR at 0.25 cycles per pixel
    /// Frequency at which the SFR first falls below 0.5 (linear interpolation between table
    /// entries; the line through the first two entries when the SFR never falls below 0.5).
    double mtf50[3];
    /// SFR at 0.5 / `nyquistDivisor` cycles per pixel; only written when the divisor is > 0.
    /// A frequency beyond the measured table (a divisor below about 0.25) has no bracketing
    /// entries and reads +infinity: check with std::isfinite.
    double sfrCustom[3];
    /// 1 / (2 cos(theta)), theta being the fitted edge angle.
    double nyquist;
    /// theta in degrees: atan of the fitted edge slope (signed), after a quarter turn of the
    /// region when its edge runs across it.
    double edgeAngle;
};
static_assert(sizeof(tagSFRResult) == 15 * sizeof(double), "tagSFRResult is 15 doubles");
static_assert(sizeof(tagSFRResult) == 120, "tagSFRResult is 120 bytes");

/// One edge region inside a larger image: the layout of an integer rectangle.
struct tagEdgeRoi {
    std::int32_t x;       ///< left column
    std::int32_t y;       ///< top row
    std::int32_t width;   ///< columns
    std::int32_t height;  ///< rows
};
static_assert(sizeof(tagEdgeRoi) == 16, "tagEdgeRoi is four int32");

/// Measures the SFR of one image that is itself the edge region.
///
/// `image` holds `height` rows of `width` pixels, packed without padding, in the layout that
/// `format` names (talonvireo::PixelFormat). The edge should run through the region from side
/// to side; a region whose edge runs across it is turned a quarter turn first.
///
/// Returns 0 on success; -1 for bad input (null buffer, non-positive size, a pixel count that
/// does not fit in 32 bits, an unknown format, a region too small for the method) or any
/// internal failure; -2 when the edge contrast is below 20 % or the spectrum is zero; -3 when
/// the fitted edge is steeper than 1.25 columns per row (about 51 degrees); -4 when the fitted
/// edge is exactly aligned with the pixel grid. Never throws.
TALONVIREO_API int TalonCalSFR(unsigned char* image, int width, int height, int format,
                               tagSFRResult& result);

/// Measures `count` edge regions `rois` of one image; `results[i]` belongs to `rois[i]`, and
/// each `results[i].nyquistDivisor` is read as in TalonCalSFR.
///
/// Returns 0 when all regions were measured (also for `count` <= 0), -1 otherwise. The first
/// failing region ends the call: records of earlier regions keep their figures, the failing
/// one is cleared (or left as it was when the region lies outside the image), later ones are
/// not touched. A region is refused when x + width or y + height, taken as unsigned 32-bit
/// sums, exceeds the image, or when it has a negative origin or size. Never throws.
TALONVIREO_API int TalonCalSFRS(unsigned char* image, int width, int height, int format, int count,
                                tagEdgeRoi* rois, tagSFRResult* results);
