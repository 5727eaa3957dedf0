// A 4000 x 3000 frame of random 8-bit samples, the input of the frame-stage benchmarks.
#pragma once

#include <cstddef>
#include <random>
#include <vector>

namespace talonvireo {
namespace bench {

inline constexpr int kFrameWidth = 4000;
inline constexpr int kFrameHeight = 3000;

inline std::vector<unsigned char> randomFrame(unsigned seed) {
    std::vector<unsigned char> frame(static_cast<std::size_t>(kFrameWidth) * kFrameHeight);
    std::mt19937 rng(seed);
    for (auto& s : frame) {
        s = static_cast<unsigned char>(rng());
    }
    return frame;
}

}  // namespace bench
}  // namespace talonvireo
