// The toolbox's implementation. Stateless: create one on the stack for a call and drop it.
// Composite operations run two other operations through one temporary image from the C heap,
// owned for the duration of the call. They are built from the same conversions as the single
// operations rather than through the virtual table, so a derived class that overrides one
// operation does not change the composites; and a temporary 32-bit image gets 0 in every
// fourth byte, where the demosaic into a caller's image leaves the red and blue sites'
// fourth bytes untouched.
#pragma once

#include "convert/IImageTransform.h"

namespace libs {
namespace TalonUtil {

class ImageTransform : public IImageTransform {
public:
    ImageTransform() = default;
    ~ImageTransform() override = default;

    bool mosaicToBgra(const unsigned char* src, unsigned char* dst, int width, int height,
                      int mode) override;
    bool mosaicToBgr(const unsigned char* src, unsigned char* dst, int width, int height,
                     int mode) override;
    bool raw10ToBgra(const unsigned short* src, unsigned char* dst, int width, int height,
                     int mode) override;
    bool raw12ToBgra(const unsigned short* src, unsigned char* dst, int width, int height,
                     int mode) override;
    bool raw10ToBgr(const unsigned short* src, unsigned char* dst, int width, int height,
                    int mode) override;
    bool bgraToBgr(const unsigned char* src, unsigned char* dst, int width, int height) override;
    bool bgrToBgra(const unsigned char* src, unsigned char* dst, int width, int height) override;
    bool raw10ToBytes(const unsigned short* src, unsigned char* dst, int width,
                      int height) override;
    bool raw12ToBytes(const unsigned short* src, unsigned char* dst, int width,
                      int height) override;
    bool raw10ToBytePairs(const unsigned short* src, unsigned char* dst, int width,
                          int height) override;
    bool bytesToRaw10(const unsigned char* src, unsigned short* dst, int width,
                      int height) override;
    bool mosaicToGrey(const unsigned char* src, unsigned char* dst, int width, int height,
                      int mode) override;
    bool raw10ToGrey(const unsigned short* src, unsigned char* dst, int width, int height,
                     int mode) override;
    bool raw12ToGrey(const unsigned short* src, unsigned char* dst, int width, int height,
                     int mode) override;
    bool bgrToGrey(const unsigned char* src, unsigned char* dst, int width, int height) override;
    bool bgraToGrey(const unsigned char* src, unsigned char* dst, int width, int height) override;
    bool greyIntoBgra(const unsigned char* src, unsigned char* dst, int width, int height) override;
    bool subtractLevel(void* samples, double level, int width, int height, bool clamp,
                       bool sixteenBit) override;
    double meanLevel(const void* samples, int width, int height, int x0, int y0,
                     bool sixteenBit) override;
    bool flipVertical(void* buffer, int bytesPerRow, int rowCount) override;
    bool bgraToYuv422(const unsigned char* src, unsigned char* dst, int width, int height) override;
    int yuv422ToBgra(const unsigned char* src, unsigned char* dst, int width, int height,
                     int byteOrder) override;
    bool demosaicRggb(const unsigned char* src, unsigned char* dst, int width, int height) override;
    bool demosaicGrbg(const unsigned char* src, unsigned char* dst, int width, int height) override;
    bool demosaicGbrg(const unsigned char* src, unsigned char* dst, int width, int height) override;
    bool demosaicBggr(const unsigned char* src, unsigned char* dst, int width, int height) override;
    bool greyToBgra(const unsigned char* src, unsigned char* dst, int width, int height) override;
};

}  // namespace TalonUtil
}  // namespace libs
