#include "convert/ImageTransform.h"

#include <cstddef>
#include <cstring>

#include "convert/EdgeDirectedDemosaic.h"
#include "convert/HeapBlock.h"
#include "convert/ImageExtent.h"
#include "convert/PixelRepack.h"
#include "convert/SampleLevel.h"
#include "convert/VerticalFlip.h"
#include "convert/WordSamples.h"
#include "convert/Yuv422.h"

namespace libs {
namespace TalonUtil {

namespace convert = talonvireo::convert;

namespace {
constexpr int kGreyMode = 4;

// Bytes of the temporary image of a composite: width * height pixels of bytesPerPixel.
std::size_t temporaryBytes(int width, int height, std::size_t bytesPerPixel) {
    return convert::pixelCount(width, height) * bytesPerPixel;
}

bool runnable(const void* src, const void* dst, int width, int height) {
    return convert::runnableCount(src, dst, width, height) != 0;
}

// Mosaic or grey to 32-bit pixels by mode: the demosaic of the mode's phase, or for mode 4
// the grey expansion.
bool toBgra(const unsigned char* src, unsigned char* dst, int width, int height, int mode,
            convert::FourthByte fourth) {
    switch (mode) {
        case 1:
            return convert::demosaicEdgeDirected(src, dst, width, height, convert::kPhaseGrbg,
                                                 fourth);
        case 2:
            return convert::demosaicEdgeDirected(src, dst, width, height, convert::kPhaseGbrg,
                                                 fourth);
        case 3:
            return convert::demosaicEdgeDirected(src, dst, width, height, convert::kPhaseBggr,
                                                 fourth);
        case kGreyMode:
            return convert::greyToBgra(src, dst, width, height);
        default:
            return convert::demosaicEdgeDirected(src, dst, width, height, convert::kPhaseRggb,
                                                 fourth);
    }
}

// mosaicToBgra then bgraToBgr through a temporary 32-bit image.
bool toBgr(const unsigned char* src, unsigned char* dst, int width, int height, int mode) {
    if (!runnable(src, dst, width, height)) {
        return false;
    }
    const convert::HeapBlock colour(temporaryBytes(width, height, 4));
    return colour && toBgra(src, colour.data(), width, height, mode, convert::FourthByte::Zeroed) &&
           convert::bgraToBgr(colour.data(), dst, width, height);
}

// Mosaic or grey to grey: mode 4 copies; otherwise mosaicToBgra then bgraToGrey through a
// temporary 32-bit image.
bool toGrey(const unsigned char* src, unsigned char* dst, int width, int height, int mode) {
    if (!runnable(src, dst, width, height)) {
        return false;
    }
    if (mode == kGreyMode) {
        std::memcpy(dst, src, convert::pixelCount(width, height));
        return true;
    }
    const convert::HeapBlock colour(temporaryBytes(width, height, 4));
    return colour && toBgra(src, colour.data(), width, height, mode, convert::FourthByte::Zeroed) &&
           convert::bgraToGrey(colour.data(), dst, width, height);
}

// Words reduced to bytes in a temporary 8-bit image, then handed to `next`.
template <typename Next>
bool throughBytes(bool (*reduce)(const unsigned short*, unsigned char*, int, int),
                  const unsigned short* src, unsigned char* dst, int width, int height, Next next) {
    if (!runnable(src, dst, width, height)) {
        return false;
    }
    const convert::HeapBlock bytes(temporaryBytes(width, height, 1));
    return bytes && reduce(src, bytes.data(), width, height) && next(bytes.data());
}
}  // namespace

bool ImageTransform::mosaicToBgra(const unsigned char* src, unsigned char* dst, int width,
                                  int height, int mode) {
    return toBgra(src, dst, width, height, mode, convert::FourthByte::Untouched);
}

bool ImageTransform::mosaicToBgr(const unsigned char* src, unsigned char* dst, int width,
                                 int height, int mode) {
    return toBgr(src, dst, width, height, mode);
}

bool ImageTransform::raw10ToBgra(const unsigned short* src, unsigned char* dst, int width,
                                 int height, int mode) {
    return throughBytes(
        convert::raw10ToBytes, src, dst, width, height, [&](const unsigned char* bytes) {
            return toBgra(bytes, dst, width, height, mode, convert::FourthByte::Untouched);
        });
}

bool ImageTransform::raw12ToBgra(const unsigned short* src, unsigned char* dst, int width,
                                 int height, int mode) {
    return throughBytes(
        convert::raw12ToBytes, src, dst, width, height, [&](const unsigned char* bytes) {
            return toBgra(bytes, dst, width, height, mode, convert::FourthByte::Untouched);
        });
}

bool ImageTransform::raw10ToBgr(const unsigned short* src, unsigned char* dst, int width,
                                int height, int mode) {
    return throughBytes(
        convert::raw10ToBytes, src, dst, width, height,
        [&](const unsigned char* bytes) { return toBgr(bytes, dst, width, height, mode); });
}

bool ImageTransform::bgraToBgr(const unsigned char* src, unsigned char* dst, int width,
                               int height) {
    return convert::bgraToBgr(src, dst, width, height);
}

bool ImageTransform::bgrToBgra(const unsigned char* src, unsigned char* dst, int width,
                               int height) {
    return convert::bgrToBgra(src, dst, width, height);
}

bool ImageTransform::raw10ToBytes(const unsigned short* src, unsigned char* dst, int width,
                                  int height) {
    return convert::raw10ToBytes(src, dst, width, height);
}

bool ImageTransform::raw12ToBytes(const unsigned short* src, unsigned char* dst, int width,
                                  int height) {
    return convert::raw12ToBytes(src, dst, width, height);
}

bool ImageTransform::raw10ToBytePairs(const unsigned short* src, unsigned char* dst, int width,
                                      int height) {
    return convert::raw10ToBytePairs(src, dst, width, height);
}

bool ImageTransform::bytesToRaw10(const unsigned char* src, unsigned short* dst, int width,
                                  int height) {
    return convert::bytesToRaw10(src, dst, width, height);
}

bool ImageTransform::mosaicToGrey(const unsigned char* src, unsigned char* dst, int width,
                                  int height, int mode) {
    return toGrey(src, dst, width, height, mode);
}

bool ImageTransform::raw10ToGrey(const unsigned short* src, unsigned char* dst, int width,
                                 int height, int mode) {
    return throughBytes(
        convert::raw10ToBytes, src, dst, width, height,
        [&](const unsigned char* bytes) { return toGrey(bytes, dst, width, height, mode); });
}

bool ImageTransform::raw12ToGrey(const unsigned short* src, unsigned char* dst, int width,
                                 int height, int mode) {
    return throughBytes(
        convert::raw12ToBytes, src, dst, width, height,
        [&](const unsigned char* bytes) { return toGrey(bytes, dst, width, height, mode); });
}

bool ImageTransform::bgrToGrey(const unsigned char* src, unsigned char* dst, int width,
                               int height) {
    return convert::bgrToGrey(src, dst, width, height);
}

bool ImageTransform::bgraToGrey(const unsigned char* src, unsigned char* dst, int width,
                                int height) {
    return convert::bgraToGrey(src, dst, width, height);
}

bool ImageTransform::greyIntoBgra(const unsigned char* src, unsigned char* dst, int width,
                                  int height) {
    return convert::greyIntoBgra(src, dst, width, height);
}

bool ImageTransform::subtractLevel(void* samples, double level, int width, int height, bool clamp,
                                   bool sixteenBit) {
    return convert::subtractLevel(samples, level, width, height, clamp, sixteenBit);
}

double ImageTransform::meanLevel(const void* samples, int width, int height, int x0, int y0,
                                 bool sixteenBit) {
    return convert::meanLevel(samples, width, height, x0, y0, sixteenBit);
}

bool ImageTransform::flipVertical(void* buffer, int bytesPerRow, int rowCount) {
    return convert::flipVertical(buffer, bytesPerRow, rowCount);
}

bool ImageTransform::bgraToYuv422(const unsigned char* src, unsigned char* dst, int width,
                                  int height) {
    return convert::bgraToYuv422(src, dst, width, height);
}

int ImageTransform::yuv422ToBgra(const unsigned char* src, unsigned char* dst, int width,
                                 int height, int byteOrder) {
    return convert::yuv422ToBgra(src, dst, width, height, convert::yuv422OrderFromCode(byteOrder));
}

bool ImageTransform::demosaicRggb(const unsigned char* src, unsigned char* dst, int width,
                                  int height) {
    return convert::demosaicEdgeDirected(src, dst, width, height, convert::kPhaseRggb);
}

bool ImageTransform::demosaicGrbg(const unsigned char* src, unsigned char* dst, int width,
                                  int height) {
    return convert::demosaicEdgeDirected(src, dst, width, height, convert::kPhaseGrbg);
}

bool ImageTransform::demosaicGbrg(const unsigned char* src, unsigned char* dst, int width,
                                  int height) {
    return convert::demosaicEdgeDirected(src, dst, width, height, convert::kPhaseGbrg);
}

bool ImageTransform::demosaicBggr(const unsigned char* src, unsigned char* dst, int width,
                                  int height) {
    return convert::demosaicEdgeDirected(src, dst, width, height, convert::kPhaseBggr);
}

bool ImageTransform::greyToBgra(const unsigned char* src, unsigned char* dst, int width,
                                int height) {
    return convert::greyToBgra(src, dst, width, height);
}

}  // namespace TalonUtil
}  // namespace libs
