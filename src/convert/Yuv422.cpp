#include "convert/Yuv422.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "convert/ImageExtent.h"

namespace talonvireo {
namespace convert {

namespace {
// Positions of Y0, U, Y1, V within the four bytes of a pair.
struct PairLayout {
    int y0;
    int u;
    int y1;
    int v;
};

PairLayout layoutOf(Yuv422Order order) {
    switch (order) {
        case Yuv422Order::YVYU:
            return {0, 3, 2, 1};
        case Yuv422Order::UYVY:
            return {1, 0, 3, 2};
        case Yuv422Order::VYUY:
            return {1, 2, 3, 0};
        case Yuv422Order::YUYV:
        default:
            return {0, 1, 2, 3};
    }
}

unsigned char clampToByte(int value) {
    return static_cast<unsigned char>(std::clamp(value, 0, 255));
}

void writePixel(int luma, int d, int e, unsigned char* px) {
    const int c = 1164 * (luma - 16);
    px[0] = clampToByte((c + 2018 * d) / 1000);
    px[1] = clampToByte((c - 391 * d - 813 * e) / 1000);
    px[2] = clampToByte((c + 1596 * e) / 1000);
}
}  // namespace

Yuv422Order yuv422OrderFromCode(int code) {
    switch (code) {
        case 1:
            return Yuv422Order::YVYU;
        case 2:
            return Yuv422Order::UYVY;
        case 3:
            return Yuv422Order::VYUY;
        default:
            return Yuv422Order::YUYV;
    }
}

bool bgraToYuv422(const unsigned char* bgra, unsigned char* yuv, int width, int height) {
    const std::size_t count = runnableCount(bgra, yuv, width, height);
    for (std::size_t i = 0; i < count; ++i) {
        const int blue = bgra[4 * i];
        const int green = bgra[4 * i + 1];
        const int red = bgra[4 * i + 2];
        yuv[2 * i] =
            static_cast<unsigned char>(((16425 * green + 8432 * red + 3176 * blue) >> 15) + 16);
        const int chroma = (i & 1) == 0 ? (14345 * blue - 9527 * green - 4818 * red) / 32768
                                        : (14345 * red - 12045 * green - 2300 * blue) / 32768;
        yuv[2 * i + 1] = static_cast<unsigned char>(chroma + 128);
    }
    return count != 0;
}

int yuv422ToBgra(const unsigned char* yuv, unsigned char* bgra, int width, int height,
                 Yuv422Order order) {
    const std::size_t pixels = runnableCount(yuv, bgra, width, height);
    const std::size_t pairs = pixels / 2;
    if (pairs == 0 || pairs > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        return 0;
    }
    const PairLayout at = layoutOf(order);
    for (std::size_t p = 0; p < pairs; ++p) {
        const unsigned char* in = yuv + 4 * p;
        const int d = in[at.u] - 128;
        const int e = in[at.v] - 128;
        writePixel(in[at.y0], d, e, bgra + 8 * p);
        writePixel(in[at.y1], d, e, bgra + 8 * p + 4);
    }
    return static_cast<int>(pairs);
}

}  // namespace convert
}  // namespace talonvireo
