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
    switch (bits) {
        case 10:
            depth = convert::WordDepth::k10;
            break;
        case 14:
            depth = convert::WordDepth::k14;
            break;
        case 16:
            depth = convert::WordDepth::k16;
            break;
        default:
            return -1;
    }
    api::GreyRoad internal;
    switch (road) {
        case GreyRoad::kMalvar:
            internal = api::GreyRoad::kDemosaic17;
            break;
        case GreyRoad::kEdgeDirected:
            internal = api::GreyRoad::kImageTransform;
            break;
        default:
            return -1;
    }
    // Straight into the caller's buffer: no image of the library's own.
    return api::reduceToGrey(depth, internal, raw, width, height, grey) ? 0 : -1;
}

}  // namespace talonvireo
