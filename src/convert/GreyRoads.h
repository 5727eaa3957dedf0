// The members' two roads from raw sensor words straight to 8-bit grey, fused: each band of
// rows is unpacked, demosaiced and reduced to luminance while it sits in cache, with no
// full-frame mosaic or colour image in between. Bit for bit the same grey as unpacking to
// bytes and then running the demosaic and its luminance over whole images.
#pragma once

#include <cstdint>

#include "convert/EdgeDirectedDemosaic.h"
#include "convert/WordDepth.h"

namespace talonvireo {
namespace convert {

// Malvar-He-Cutler demosaic (reflect-101 borders two samples deep, kernel results clamped
// to 0..255) of the byte mosaic, then OpenCV's RGB-to-grey rounding:
// (9798 R + 19235 G + 3735 B + 16384) >> 15. `phaseIdx` is a row of the routine selection
// table (Demosaic.h). False, writing nothing, for a null buffer, a size of 0 or less, a
// phase index outside 0..3 or no memory for the band buffers.
bool malvarRoadToGrey(const std::uint16_t* words, int width, int height, WordDepth depth,
                      int phaseIdx, std::uint8_t* grey);

// The edge-directed demosaic (EdgeDirectedDemosaic.h) of the byte mosaic, then
// (117 B + 601 G + 306 R) >> 10. False, writing nothing, for a null buffer, a size of 0 or
// less or no memory for the band buffers.
bool edgeDirectedRoadToGrey(const std::uint16_t* words, int width, int height, WordDepth depth,
                            MosaicPhase phase, std::uint8_t* grey);

}  // namespace convert
}  // namespace talonvireo
