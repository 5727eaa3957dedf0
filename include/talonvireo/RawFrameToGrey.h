// The road from a raw frame to the 8-bit grey image that the whole-frame members locate the
// chart in and cut their regions from, for callers who want to see or cut what a member
// measures.
#pragma once

#include <cstdint>

#include "talonvireo/Export.h"

namespace talonvireo {

/// How a Bayer mosaic becomes grey. The HLX6C and RQ8 members take the Malvar road; the
/// K31R22BX and K74T16BX members the edge-directed one.
enum class GreyRoad {
    kMalvar = 0,        ///< Malvar-He-Cutler 5 x 5 demosaic, then OpenCV's RGB-to-grey
    kEdgeDirected = 1,  ///< edge-directed demosaic, then (117 B + 601 G + 306 R) >> 10
};

/// Reduces `raw` (height rows of width 16-bit words, `bits` = 10, 14 or 16 significant bits,
/// a Bayer mosaic of phase R G) to 8 bits exactly as the members do, demosaics it by `road`
/// and writes width x height grey bytes to `grey`. Returns 0, or -1 (writing nothing) for a
/// null buffer, a size of 0 or less or over 2^31 - 1 pixels, another depth or an unknown
/// road. Never throws.
TALONVIREO_API int rawFrameToGrey(const std::uint16_t* raw, int width, int height, int bits,
                                  GreyRoad road, unsigned char* grey);

}  // namespace talonvireo
