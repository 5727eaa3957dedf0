// Packed 4:2:2 luma/chroma: two bytes per pixel, a luma byte and a chroma byte that
// alternates between U (even pixel index) and V (odd index), the index counted over the
// whole image rather than per row.
#pragma once

namespace talonvireo {
namespace convert {

// Byte order of a pixel pair in a packed 4:2:2 buffer.
enum class Yuv422Order {
    YUYV,  // Y0 U Y1 V (any order code other than 1, 2, 3)
    YVYU,  // Y0 V Y1 U (code 1)
    UYVY,  // U Y0 V Y1 (code 2)
    VYUY,  // V Y0 U Y1 (code 3)
};

Yuv422Order yuv422OrderFromCode(int code);

// 32-bit pixels (blue, green, red, fourth byte) to packed 4:2:2 in YUYV order:
// Y = ((16425 G + 8432 R + 3176 B) >> 15) + 16, then for an even pixel index
// U = (14345 B - 9527 G - 4818 R) / 32768 + 128, for an odd one
// V = (14345 R - 12045 G - 2300 B) / 32768 + 128 (division truncating toward zero). Each
// pixel's chroma is its own, not the pair's average. Returns false, writing nothing, for a
// null buffer or a width or height of 0 or less.
bool bgraToYuv422(const unsigned char* bgra, unsigned char* yuv, int width, int height);

// Packed 4:2:2 to 32-bit pixels, pair by pair (width * height / 2 pairs; a last unpaired
// pixel is not written). With c = 1164 (Y - 16), d = U - 128, e = V - 128:
// blue = (c + 2018 d) / 1000, green = (c - 391 d - 813 e) / 1000, red = (c + 1596 e) / 1000,
// each truncated toward zero and clamped to 0 .. 255; the fourth byte is left untouched.
// Returns the pair count; 0, writing nothing, for a null buffer, a width or height of 0 or
// less, or a pair count beyond the int range.
int yuv422ToBgra(const unsigned char* yuv, unsigned char* bgra, int width, int height,
                 Yuv422Order order);

}  // namespace convert
}  // namespace talonvireo
