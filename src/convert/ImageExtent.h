// Sample counts of packed images given as signed 32-bit width and height.
#pragma once

#include <cstddef>
#include <cstdint>

namespace talonvireo {
namespace convert {

// width * height, or 0 when either is 0 or negative. Two int32 factors cannot overflow the
// 64-bit product, nor its multiple by 4 (bytes of a 32-bit pixel image).
inline std::size_t pixelCount(int width, int height) {
    if (width <= 0 || height <= 0) {
        return 0;
    }
    return static_cast<std::size_t>(static_cast<std::int64_t>(width) * height);
}

// Pixels a conversion from src to dst may touch: 0, so that it runs no loop, when either
// buffer is null or the size is empty.
inline std::size_t runnableCount(const void* src, const void* dst, int width, int height) {
    return src == nullptr || dst == nullptr ? 0 : pixelCount(width, height);
}

}  // namespace convert
}  // namespace talonvireo
