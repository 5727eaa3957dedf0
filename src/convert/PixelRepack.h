// Whole-image repacking between 8-bit grey, 24-bit (blue, green, red) and 32-bit (blue,
// green, red, fourth byte) pixels, rows packed without padding. Each returns false, writing
// nothing, for a null buffer or a width or height of 0 or less.
#pragma once

namespace talonvireo {
namespace convert {

// Fixed-point luminance: (117 blue + 601 green + 306 red) >> 10. The weights sum to 1024,
// so a neutral pixel keeps its value.
inline int fixedPointLuma(int blue, int green, int red) {
    return (117 * blue + 601 * green + 306 * red) >> 10;
}

// 32-bit to 24-bit pixels; the fourth byte is dropped.
bool bgraToBgr(const unsigned char* bgra, unsigned char* bgr, int width, int height);

// 24-bit to 32-bit pixels; the fourth byte becomes 255.
bool bgrToBgra(const unsigned char* bgr, unsigned char* bgra, int width, int height);

// 24-bit pixels to grey by fixedPointLuma.
bool bgrToGrey(const unsigned char* bgr, unsigned char* grey, int width, int height);

// 32-bit pixels to grey by fixedPointLuma; the fourth byte is ignored.
bool bgraToGrey(const unsigned char* bgra, unsigned char* grey, int width, int height);

// Grey into existing 32-bit pixels: blue = green = red = value, the fourth byte untouched.
bool greyIntoBgra(const unsigned char* grey, unsigned char* bgra, int width, int height);

// Grey to 32-bit pixels: blue = green = red = value, fourth byte 255.
bool greyToBgra(const unsigned char* grey, unsigned char* bgra, int width, int height);

}  // namespace convert
}  // namespace talonvireo
