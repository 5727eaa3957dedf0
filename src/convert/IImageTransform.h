// The abstract toolbox of whole-image pixel-format conversions. Images are raw pointers to
// packed rows with a signed 32-bit width and height. Pixel kinds: 8-bit grey or Bayer mosaic
// (1 byte), 24-bit pixels (blue, green, red), 32-bit pixels (blue, green, red, fourth byte),
// 10- or 12-bit samples in 16-bit words.
//
// `mode` selects the demosaic of the mosaic-to-colour and mosaic-to-grey operations:
// 0 RGGB, 1 GRBG, 2 GBRG, 3 BGGR (the first two samples of the first two rows), 4 the input
// is already grey; any other value behaves as 0.
//
// The operations are declared in a fixed order (the destructor first); implementations keep
// it. Conversions return false when they refuse their arguments (a null buffer, a width or
// height of 0 or less, a temporary that cannot be allocated) and then write nothing.
#pragma once

namespace libs {
namespace TalonUtil {

class IImageTransform {
public:
    virtual ~IImageTransform() = default;

    // Mosaic or grey to 32-bit pixels, by mode.
    virtual bool mosaicToBgra(const unsigned char* src, unsigned char* dst, int width, int height,
                              int mode) = 0;
    // mosaicToBgra, then bgraToBgr, through a temporary 32-bit image.
    virtual bool mosaicToBgr(const unsigned char* src, unsigned char* dst, int width, int height,
                             int mode) = 0;
    // raw10ToBytes, then mosaicToBgra, through a temporary 8-bit image.
    virtual bool raw10ToBgra(const unsigned short* src, unsigned char* dst, int width, int height,
                             int mode) = 0;
    // raw12ToBytes, then mosaicToBgra, through a temporary 8-bit image.
    virtual bool raw12ToBgra(const unsigned short* src, unsigned char* dst, int width, int height,
                             int mode) = 0;
    // raw10ToBytes, then mosaicToBgr, through a temporary 8-bit image.
    virtual bool raw10ToBgr(const unsigned short* src, unsigned char* dst, int width, int height,
                            int mode) = 0;
    // 32-bit to 24-bit pixels (fourth byte dropped).
    virtual bool bgraToBgr(const unsigned char* src, unsigned char* dst, int width, int height) = 0;
    // 24-bit to 32-bit pixels, fourth byte 255.
    virtual bool bgrToBgra(const unsigned char* src, unsigned char* dst, int width, int height) = 0;
    // 10-bit words to bytes: (word >> 2) mod 256.
    virtual bool raw10ToBytes(const unsigned short* src, unsigned char* dst, int width,
                              int height) = 0;
    // 12-bit words to bytes: (word >> 4) mod 256.
    virtual bool raw12ToBytes(const unsigned short* src, unsigned char* dst, int width,
                              int height) = 0;
    // 10-bit words to two bytes per sample at the word's byte positions.
    virtual bool raw10ToBytePairs(const unsigned short* src, unsigned char* dst, int width,
                                  int height) = 0;
    // Bytes to 10-bit words (value << 2).
    virtual bool bytesToRaw10(const unsigned char* src, unsigned short* dst, int width,
                              int height) = 0;
    // Mosaic or grey to grey: mode 4 copies; otherwise mosaicToBgra, then bgraToGrey, through
    // a temporary 32-bit image.
    virtual bool mosaicToGrey(const unsigned char* src, unsigned char* dst, int width, int height,
                              int mode) = 0;
    // raw10ToBytes, then mosaicToGrey, through a temporary 8-bit image.
    virtual bool raw10ToGrey(const unsigned short* src, unsigned char* dst, int width, int height,
                             int mode) = 0;
    // raw12ToBytes, then mosaicToGrey, through a temporary 8-bit image.
    virtual bool raw12ToGrey(const unsigned short* src, unsigned char* dst, int width, int height,
                             int mode) = 0;
    // 24-bit pixels to grey: (117 blue + 601 green + 306 red) >> 10.
    virtual bool bgrToGrey(const unsigned char* src, unsigned char* dst, int width, int height) = 0;
    // 32-bit pixels to grey with the same weights; the fourth byte is ignored.
    virtual bool bgraToGrey(const unsigned char* src, unsigned char* dst, int width,
                            int height) = 0;
    // Grey into 32-bit pixels: blue = green = red = value, the fourth byte untouched.
    virtual bool greyIntoBgra(const unsigned char* src, unsigned char* dst, int width,
                              int height) = 0;
    // In place: sample = trunc(sample - level), clamped at 0 or wrapping.
    virtual bool subtractLevel(void* samples, double level, int width, int height, bool clamp,
                               bool sixteenBit) = 0;
    // Mean of columns x0 .. width - 1 of rows y0 .. height - 1.
    virtual double meanLevel(const void* samples, int width, int height, int x0, int y0,
                             bool sixteenBit) = 0;
    // Upside down in place.
    virtual bool flipVertical(void* buffer, int bytesPerRow, int rowCount) = 0;
    // 32-bit pixels to packed 4:2:2 (Y0 U Y1 V).
    virtual bool bgraToYuv422(const unsigned char* src, unsigned char* dst, int width,
                              int height) = 0;
    // Packed 4:2:2 in the given byte order (1 Y0 V Y1 U, 2 U Y0 V Y1, 3 V Y0 U Y1, any other
    // Y0 U Y1 V) to 32-bit pixels; returns width * height / 2.
    virtual int yuv422ToBgra(const unsigned char* src, unsigned char* dst, int width, int height,
                             int byteOrder) = 0;
    // Edge-directed demosaics of the four mosaic phases to 32-bit pixels.
    virtual bool demosaicRggb(const unsigned char* src, unsigned char* dst, int width,
                              int height) = 0;
    virtual bool demosaicGrbg(const unsigned char* src, unsigned char* dst, int width,
                              int height) = 0;
    virtual bool demosaicGbrg(const unsigned char* src, unsigned char* dst, int width,
                              int height) = 0;
    virtual bool demosaicBggr(const unsigned char* src, unsigned char* dst, int width,
                              int height) = 0;
    // Grey to 32-bit pixels: blue = green = red = value, fourth byte 255.
    virtual bool greyToBgra(const unsigned char* src, unsigned char* dst, int width,
                            int height) = 0;
};

}  // namespace TalonUtil
}  // namespace libs
