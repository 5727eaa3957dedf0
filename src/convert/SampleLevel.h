// Level operations on 8-bit or 16-bit samples, rows packed: subtracting a black level in
// place and measuring the mean level of a rectangle that reaches the image's far corner.
#pragma once

namespace talonvireo {
namespace convert {

// Every one of height rows of width samples (16-bit words when sixteenBit, else bytes)
// becomes trunc(sample - level), truncated toward zero. With clamp a result below 0 becomes
// 0; without it the result is stored as it stands, wrapping modulo 256 or 65536 (a result
// above the sample maximum wraps in both cases). Returns false, changing nothing, for a null
// buffer, a width or height of 0 or less, or a level that is not finite.
bool subtractLevel(void* samples, double level, int width, int height, bool clamp, bool sixteenBit);

// Mean of the samples in columns x0 .. width - 1 of rows y0 .. height - 1 (row stride width
// samples): their sum divided by (width - x0) * (height - y0), evaluated as it stands. An
// empty range (x0 >= width or y0 >= height) sums to 0, so the result is 0 over that
// product: NaN when it is 0, a signed zero otherwise. Returns NaN, reading nothing, for a
// null buffer or a negative x0 or y0.
double meanLevel(const void* samples, int width, int height, int x0, int y0, bool sixteenBit);

}  // namespace convert
}  // namespace talonvireo
