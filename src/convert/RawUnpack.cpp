#include "convert/RawUnpack.h"

#include <cstddef>
#include <cstdint>

#include "convert/WordUnpack.h"

namespace talonvireo {
namespace convert {

namespace {
std::size_t sampleCount(cv::Size size) {
    if (size.width <= 0 || size.height <= 0) {
        return 0;
    }
    return static_cast<std::size_t>(static_cast<std::int64_t>(size.width) * size.height);
}

void unpack(const unsigned short* src, unsigned char* dst, cv::Size size, WordDepth depth) {
    const std::size_t count = sampleCount(size);
    if (count != 0) {
        unpackWords(src, dst, count, depth);
    }
}
}  // namespace

void unpackRaw10(const unsigned short* src, unsigned char* dst, cv::Size size) {
    unpack(src, dst, size, WordDepth::k10);
}

void unpackRaw14(const unsigned short* src, unsigned char* dst, cv::Size size) {
    unpack(src, dst, size, WordDepth::k14);
}

void unpackRaw16(const unsigned short* src, unsigned char* dst, cv::Size size) {
    unpack(src, dst, size, WordDepth::k16);
}

}  // namespace convert
}  // namespace talonvireo
