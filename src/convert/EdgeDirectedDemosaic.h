// Edge-directed bilinear demosaic of an 8-bit Bayer mosaic to 32-bit pixels (blue, green,
// red, fourth byte), the demosaic behind the image transform toolbox.
//
// Interior sites:
//   red or blue site   own colour = C; green = (W + E) >> 1 when |W - E| <= |N - S|, else
//                      (N + S) >> 1; the opposite colour = (NW + SW) >> 1 when
//                      |NW - NE| > |NW - SW|, else (NW + NE) >> 1. The diagonal estimate never
//                      looks at the down-right neighbour; that asymmetry is intended. The
//                      fourth byte is not written.
//   green site         green = C; the colour of its row = (W + E) >> 1, the colour of its
//                      column = (N + S) >> 1; fourth byte 0.
// Border sites (first and last row and column) copy each missing colour from their own 2 x 2
// cell (cells start at even rows and columns): a green site takes the colour of its row from
// its horizontal cell partner and the other from its vertical partner; a red or blue site
// takes the opposite colour from its diagonal partner and green from the partner along the
// border (the vertical one in the first and last column, the horizontal one in the first and
// last row, corners included); fourth byte 0. For an RGGB mosaic of even size these are the
// classic rules, e.g. pixel (r, 0), r even: red own, green below, blue below-right.
//
// Odd sizes: the last cell of an odd width or height lacks a column or row. A partner that
// would lie past the image is replaced by the nearest existing sample of the same colour,
// two rows or columns back (the other side of the pixel); in an image one sample wide or
// high, by the pixel's own sample. Nothing outside the width * height samples is read.
#pragma once

namespace talonvireo {
namespace convert {

// Where red sits: rows r with (r + rowShift) even and columns c with (c + colShift) even;
// blue at the opposite parities, green elsewhere.
struct MosaicPhase {
    int rowShift;
    int colShift;
};

inline constexpr MosaicPhase kPhaseRggb{0, 0};
inline constexpr MosaicPhase kPhaseGrbg{0, 1};
inline constexpr MosaicPhase kPhaseGbrg{1, 0};
inline constexpr MosaicPhase kPhaseBggr{1, 1};

// What becomes of the fourth byte of interior red and blue sites.
enum class FourthByte {
    Untouched,  // left as the destination held it
    Zeroed,     // 0 like every other pixel's: for a scratch image that nobody has filled
};

// Demosaics height rows of width samples into height * width pixels of 4 bytes. Returns
// false, writing nothing, for a null buffer or a width or height of 0 or less.
bool demosaicEdgeDirected(const unsigned char* mosaic, unsigned char* bgra, int width, int height,
                          MosaicPhase phase, FourthByte fourth = FourthByte::Untouched);

}  // namespace convert
}  // namespace talonvireo
