// Exported road to grey: the members' own reduction, for callers.
#include "talonvireo/RawFrameToGrey.h"

#include <cstdint>
#include <cstring>
#include <exception>

#include "api/GreyReduction.h"

namespace talonvireo {

int rawFrameToGrey(const std::uint16_t* raw, int width, int height, int bits, GreyRoad road,
                   unsigned char* grey) {
    if (raw == nullptr || grey == nullptr || width <= 0 || height <= 0 ||
        static_cast<std::int64_t>(width) * height > INT32_MAX) {
        return -1;
    }
    convert::RawConverter unpack;
    switch (bits) {
        case 10:
            unpack = convert::unpackRaw10;
            break;
        case 14:
            unpack = convert::unpackRaw14;
            break;
        case 16:
            unpack = convert::unpackRaw16;
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
    try {
        const cv::Mat words(height, width, CV_16UC1, const_cast<std::uint16_t*>(raw));
        const cv::Mat out = api::reduceToGrey(unpack, internal, words);
        std::memcpy(grey, out.data, out.total());
        return 0;
    } catch (const std::exception&) {
        return -1;
    }
}

}  // namespace talonvireo
