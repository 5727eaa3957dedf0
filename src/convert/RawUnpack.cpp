#include "convert/RawUnpack.h"

#include <cstddef>
#include <cstdint>

namespace talonvireo {
namespace convert {

namespace {
constexpr int kRaw10Entries = 1024;

std::size_t sampleCount(cv::Size size) {
    if (size.width <= 0 || size.height <= 0) {
        return 0;
    }
    return static_cast<std::size_t>(static_cast<std::int64_t>(size.width) * size.height);
}
}  // namespace

void unpackRaw10(const unsigned short* src, unsigned char* dst, cv::Size size) {
    const std::size_t count = sampleCount(size);
    if (count == 0) {
        return;
    }
    unsigned short table[kRaw10Entries];
    for (int i = 0; i < kRaw10Entries; i += 2) {
        table[i] = static_cast<unsigned short>(i >> 2);
        table[i + 1] = static_cast<unsigned short>((i + 1) >> 2);
    }
    for (std::size_t k = 0; k < count; ++k) {
        const unsigned short s = src[k];
        dst[k] = static_cast<unsigned char>(table[s < kRaw10Entries ? s : kRaw10Entries - 1]);
    }
}

void unpackRaw14(const unsigned short* src, unsigned char* dst, cv::Size size) {
    const std::size_t count = sampleCount(size);
    for (std::size_t k = 0; k < count; ++k) {
        dst[k] = static_cast<unsigned char>(src[k] >> 6);
    }
}

void unpackRaw16(const unsigned short* src, unsigned char* dst, cv::Size size) {
    const std::size_t count = sampleCount(size);
    for (std::size_t k = 0; k < count; ++k) {
        dst[k] = static_cast<unsigned char>(src[k] >> 8);
    }
}

}  // namespace convert
}  // namespace talonvireo
