// How many significant bits the sensor words of a raw frame hold, and the byte each word
// becomes on the way to grey. One rule for every road, fast or plain.
#pragma once

#include <cstdint>

namespace talonvireo {
namespace convert {

enum class WordDepth {
    k10,  // (word >> 2), a word above 1023 saturating to 255
    k14,  // low byte of (word >> 6): 16384 and above wrap
    k16,  // the high byte
};

inline std::uint8_t wordToByte(std::uint16_t word, WordDepth depth) {
    switch (depth) {
        case WordDepth::k10:
            return static_cast<std::uint8_t>((word < 1024 ? word : 1023) >> 2);
        case WordDepth::k14:
            return static_cast<std::uint8_t>((word >> 6) & 0xFF);
        default:
            return static_cast<std::uint8_t>(word >> 8);
    }
}

}  // namespace convert
}  // namespace talonvireo
