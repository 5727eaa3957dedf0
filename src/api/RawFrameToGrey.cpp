// Exported road to grey: the members' own reduction, for callers.
#include "talonvireo/RawFrameToGrey.h"

#include <cstdint>

#include "api/GreyReduction.h"

namespace talonvireo {

int rawFrameToGrey(const std::uint16_t* raw, int width, int height, int bits, GreyRoad road,
                   unsigned char* grey) {
    if (raw == nullptr || grey == nullptr || width <= 0 || height <= 0 ||
        static_cast<std::int64_t>(width) * height > INT32_MAX) {
        return -1;
    }
    convert::WordDepth depth;
    if (!api::wordDepthOf(bits, depth)) {
        return -1;
    }
    // Straight into the caller's buffer: no image of the library's own.
    return api::reduceToGrey(depth, road, raw, width, height, grey) ? 0 : -1;
}

}  // namespace talonvireo
