// Sensor words to bytes, a run at a time, vectorised for the processor it runs on.
#pragma once

#include <cstddef>
#include <cstdint>

#include "convert/WordDepth.h"

namespace talonvireo {
namespace convert {

// dst[k] = wordToByte(src[k], depth) for k < count. The buffers must not overlap.
void unpackWords(const std::uint16_t* src, std::uint8_t* dst, std::size_t count, WordDepth depth);

}  // namespace convert
}  // namespace talonvireo
