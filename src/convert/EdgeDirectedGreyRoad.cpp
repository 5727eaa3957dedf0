// The edge-directed road, fused. Per band: the rows it needs (one above and below, where the
// frame has them) are unpacked once into byte rows; interior pixels take the demosaic's rules
// on all lanes at once in 16-bit arithmetic, the rules of the row's site kind picked per
// column, then the luminance in 32-bit lanes. Border pixels take their cell rules one by one.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convert/EdgeDirectedGreyRoad.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "convert/WeightedGrey-inl.h"

#include <algorithm>
#include <cstddef>

#include "convert/EdgeDirectedSites.h"
#include "convert/GreyRoads.h"
#include "convert/RowBands.h"
#include "convert/WordUnpack.h"

#ifndef TALONVIREO_EDGE_DIRECTED_ROAD_SHARED
#define TALONVIREO_EDGE_DIRECTED_ROAD_SHARED
namespace talonvireo {
namespace convert {
namespace edge_directed {
// Room past a row's end for a vector that starts on the last columns.
constexpr int kPad = 64;

inline std::size_t rowStride(int width) {
    return static_cast<std::size_t>(width) + kPad;
}

inline int luminance(const SiteColour& c) {
    return (117 * c.blue + 601 * c.green + 306 * c.red) >> 10;
}

// The unpacked rows of one band: frame rows firstRow - 1 .. endRow where the frame has them.
struct BandRows {
    const std::uint8_t* band;
    std::size_t stride;
    int firstRow;  // the frame row of band row 1
    int width;
    int height;

    const std::uint8_t* row(int frameRow) const {
        return band + static_cast<std::size_t>(frameRow - firstRow + 1) * stride;
    }
    int at(int frameRow, int col) const { return row(frameRow)[col]; }
};

inline void unpackBandRows(const std::uint16_t* words, int width, int height, WordDepth depth,
                           int firstRow, int endRow, std::uint8_t* band) {
    const std::size_t stride = rowStride(width);
    for (int r = std::max(firstRow - 1, 0); r <= std::min(endRow, height - 1); ++r) {
        unpackWords(words + static_cast<std::size_t>(r) * width,
                    band + static_cast<std::size_t>(r - firstRow + 1) * stride,
                    static_cast<std::size_t>(width), depth);
    }
}

inline void borderGrey(const BandRows& rows, MosaicPhase phase, int row, int col, bool alongColumn,
                       std::uint8_t* grey) {
    grey[static_cast<std::size_t>(row) * rows.width + col] =
        static_cast<std::uint8_t>(luminance(borderSite(rows, phase, row, col, alongColumn)));
}
}  // namespace edge_directed
}  // namespace convert
}  // namespace talonvireo
#endif

HWY_BEFORE_NAMESPACE();
namespace talonvireo {
namespace convert {
namespace HWY_NAMESPACE {

// The edge-directed demosaic's luminance: (306 R + 601 G + 117 B) >> 10.
using EdgeDirectedLuma = GreyWeights<306, 601, 117, 0, 10>;

// Columns 1 .. width - 2 of an interior row. chromaEven says whether the row's red or blue
// sites sit in even columns.
template <bool kRedRow>
void interiorRow(const std::uint8_t* up, const std::uint8_t* mid, const std::uint8_t* down,
                 int width, bool chromaEven, std::uint8_t* out) {
    const D16 d;
    const hn::Rebind<std::uint8_t, D16> d8;
    const int n = static_cast<int>(hn::Lanes(d));
    const V16 one = hn::Set(d, 1);
    const V16 chromaParity = chromaEven ? hn::Zero(d) : one;
    for (int c = 1; c <= width - 2; c += n) {
        const auto at = [&](const std::uint8_t* row, int dx) {
            return hn::PromoteTo(d, hn::LoadU(d8, row + c + dx));
        };
        // Lanes at the row's red or blue sites (the column parity of lane i is that of c + i).
        const auto chroma = hn::Eq(hn::And(hn::Iota(d, c), one), chromaParity);
        const V16 centre = at(mid, 0);
        const V16 west = at(mid, -1);
        const V16 east = at(mid, 1);
        const V16 north = at(up, 0);
        const V16 south = at(down, 0);
        const V16 nw = at(up, -1);
        const V16 ne = at(up, 1);
        const V16 sw = at(down, -1);
        const V16 alongRow = hn::ShiftRight<1>(hn::Add(west, east));
        const V16 alongColumn = hn::ShiftRight<1>(hn::Add(north, south));
        // |W - E| <= |N - S| takes W and E; |NW - NE| > |NW - SW| takes NW and SW.
        const V16 directedGreen =
            hn::IfThenElse(hn::Gt(hn::Abs(hn::Sub(west, east)), hn::Abs(hn::Sub(north, south))),
                           alongColumn, alongRow);
        const V16 diagonal =
            hn::IfThenElse(hn::Gt(hn::Abs(hn::Sub(nw, ne)), hn::Abs(hn::Sub(nw, sw))),
                           hn::ShiftRight<1>(hn::Add(nw, sw)), hn::ShiftRight<1>(hn::Add(nw, ne)));
        const V16 own = hn::IfThenElse(chroma, centre, alongRow);
        const V16 green = hn::IfThenElse(chroma, directedGreen, centre);
        const V16 other = hn::IfThenElse(chroma, diagonal, alongColumn);
        const V16 red = kRedRow ? own : other;
        const V16 blue = kRedRow ? other : own;
        storeGrey(EdgeDirectedLuma{}, d, red, green, blue, out + c,
                  static_cast<std::size_t>(width - 1 - c));
    }
}

void EdgeDirectedBand(const std::uint16_t* words, int width, int height, WordDepth depth,
                      MosaicPhase phase, int firstRow, int endRow, std::uint8_t* band,
                      std::uint8_t* grey) {
    using namespace edge_directed;
    unpackBandRows(words, width, height, depth, firstRow, endRow, band);
    const BandRows rows{band, rowStride(width), firstRow, width, height};
    for (int r = firstRow; r < endRow; ++r) {
        if (r == 0 || r == height - 1) {
            for (int c = 0; c < width; ++c) {
                borderGrey(rows, phase, r, c, false, grey);
            }
            continue;
        }
        std::uint8_t* out = grey + static_cast<std::size_t>(r) * width;
        const bool redRow = isRedRow(phase, r);
        // Even columns hold the row's red or blue when column 0's colour parity is the row's.
        const bool chromaEven = isRedColumn(phase, 0) == redRow;
        if (redRow) {
            interiorRow<true>(rows.row(r - 1), rows.row(r), rows.row(r + 1), width, chromaEven,
                              out);
        } else {
            interiorRow<false>(rows.row(r - 1), rows.row(r), rows.row(r + 1), width, chromaEven,
                               out);
        }
        borderGrey(rows, phase, r, 0, true, grey);
        borderGrey(rows, phase, r, width - 1, true, grey);
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace convert
}  // namespace talonvireo
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace talonvireo {
namespace convert {

HWY_EXPORT(EdgeDirectedBand);

bool edgeDirectedRoadToGrey(const std::uint16_t* words, int width, int height, WordDepth depth,
                            MosaicPhase phase, std::uint8_t* grey) {
    if (words == nullptr || grey == nullptr || width <= 0 || height <= 0) {
        return false;
    }
    const std::size_t bandBytes = (kBandRows + 2) * edge_directed::rowStride(width);
    return forEachBand(height, bandBytes, [&](int first, int end, unsigned char* band) {
        HWY_DYNAMIC_DISPATCH(EdgeDirectedBand)
        (words, width, height, depth, phase, first, end, band, grey);
    });
}

}  // namespace convert
}  // namespace talonvireo
#endif
