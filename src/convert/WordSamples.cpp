#include "convert/WordSamples.h"

#include <cstddef>

#include "convert/ImageExtent.h"

namespace talonvireo {
namespace convert {

namespace {
inline int lowByte(unsigned short word) {
    return word & 0xFF;
}

inline int highByte(unsigned short word) {
    return word >> 8;
}

// Bits 2 to 9 of a 10-bit word, written in bytes as the format defines them.
inline unsigned char raw10Byte(unsigned short word) {
    return static_cast<unsigned char>(highByte(word) * 64 + (lowByte(word) >> 2));
}
}  // namespace

bool raw10ToBytes(const unsigned short* words, unsigned char* bytes, int width, int height) {
    const std::size_t count = runnableCount(words, bytes, width, height);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = raw10Byte(words[i]);
    }
    return count != 0;
}

bool raw12ToBytes(const unsigned short* words, unsigned char* bytes, int width, int height) {
    const std::size_t count = runnableCount(words, bytes, width, height);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<unsigned char>(highByte(words[i]) * 16 + (lowByte(words[i]) >> 4));
    }
    return count != 0;
}

bool raw10ToBytePairs(const unsigned short* words, unsigned char* pairs, int width, int height) {
    const std::size_t count = runnableCount(words, pairs, width, height);
    for (std::size_t i = 0; i < count; ++i) {
        pairs[2 * i] = raw10Byte(words[i]);
        pairs[2 * i + 1] = static_cast<unsigned char>(highByte(words[i]) >> 2);
    }
    return count != 0;
}

bool bytesToRaw10(const unsigned char* bytes, unsigned short* words, int width, int height) {
    const std::size_t count = runnableCount(bytes, words, width, height);
    for (std::size_t i = 0; i < count; ++i) {
        const int low = (bytes[i] * 4) & 0xFF;
        const int high = bytes[i] >> 6;
        words[i] = static_cast<unsigned short>(high << 8 | low);
    }
    return count != 0;
}

}  // namespace convert
}  // namespace talonvireo
