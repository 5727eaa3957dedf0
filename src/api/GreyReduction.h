// The members' road from raw words to 8-bit grey, by one of the two demosaics: the fused
// roads of GreyRoads.h, one pass from the words to grey. Shared by the members and the
// exported road.
#pragma once

#include <cstdint>
#include <new>

#include <opencv2/core.hpp>

#include "convert/Demosaic.h"
#include "convert/GreyRoads.h"
#include "talonvireo/RawFrameToGrey.h"

namespace talonvireo {
namespace api {

inline constexpr int kBayerRg = 1;  // the phase field of format 17

// The word depth of `bits` significant bits; false for a depth no member takes.
inline bool wordDepthOf(int bits, convert::WordDepth& depth) {
    switch (bits) {
        case 10:
            depth = convert::WordDepth::k10;
            return true;
        case 14:
            depth = convert::WordDepth::k14;
            return true;
        case 16:
            depth = convert::WordDepth::k16;
            return true;
        default:
            return false;
    }
}

// Bayer R G words (width x height, packed) to width x height grey bytes: the Malvar road is
// demosaicToGrey at pixel format 17 (8-bit mosaic, Bayer R G), the edge-directed one the
// image transform's mosaic-to-grey operation, mode 0 (RGGB). False, writing nothing, for a
// null buffer, a size of 0 or less, an unknown road or no memory for the band buffers.
inline bool reduceToGrey(convert::WordDepth depth, GreyRoad road, const std::uint16_t* words,
                         int width, int height, std::uint8_t* grey) {
    switch (road) {
        case GreyRoad::kMalvar:
            return convert::malvarRoadToGrey(words, width, height, depth,
                                             convert::phaseIndex(kBayerRg), grey);
        case GreyRoad::kEdgeDirected:
            return convert::edgeDirectedRoadToGrey(words, width, height, depth, convert::kPhaseRggb,
                                                   grey);
    }
    return false;
}

// `raw` is CV_16UC1; returns the CV_8UC1 grey image of its size. Throws std::bad_alloc when
// memory runs out.
inline cv::Mat reduceToGrey(convert::WordDepth depth, GreyRoad road, const cv::Mat& raw) {
    cv::Mat grey(raw.rows, raw.cols, CV_8UC1);
    if (!reduceToGrey(depth, road, raw.ptr<std::uint16_t>(), raw.cols, raw.rows, grey.data)) {
        throw std::bad_alloc();
    }
    return grey;
}

}  // namespace api
}  // namespace talonvireo
