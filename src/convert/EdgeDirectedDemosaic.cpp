#include "convert/EdgeDirectedDemosaic.h"

#include <cstddef>
#include <cstdlib>

#include "convert/ByteLanes.h"
#include "convert/EdgeDirectedSites.h"

namespace talonvireo {
namespace convert {

namespace {
constexpr int kBlue = 0;
constexpr int kGreen = 1;
constexpr int kRed = 2;
constexpr int kFourth = 3;

struct MosaicView {
    const unsigned char* data;
    int width;
    int height;

    int at(int row, int col) const {
        return data[static_cast<std::size_t>(row) * static_cast<std::size_t>(width) + col];
    }
};

inline int average(int a, int b) {
    return (a + b) >> 1;
}

using edge_directed::isRedColumn;
using edge_directed::isRedRow;

void borderPixel(const MosaicView& m, MosaicPhase phase, int row, int col, bool alongColumn,
                 unsigned char* px) {
    const edge_directed::SiteColour colour =
        edge_directed::borderSite(m, phase, row, col, alongColumn);
    px[kBlue] = static_cast<unsigned char>(colour.blue);
    px[kGreen] = static_cast<unsigned char>(colour.green);
    px[kRed] = static_cast<unsigned char>(colour.red);
    px[kFourth] = 0;
}

// The three rows around an interior row, and its output.
struct RowWindow {
    const unsigned char* up;
    const unsigned char* mid;
    const unsigned char* down;
    unsigned char* out;
};

// kOwn is the output byte of the row's chroma colour (red in a red row, blue in a blue row),
// kOther the byte of the opposite chroma colour.
template <int kOwn, FourthByte kPolicy>
inline void chromaSite(const RowWindow& w, int c) {
    constexpr int kOther = kRed + kBlue - kOwn;
    const int west = w.mid[c - 1];
    const int east = w.mid[c + 1];
    const int north = w.up[c];
    const int south = w.down[c];
    const int nw = w.up[c - 1];
    const int ne = w.up[c + 1];
    const int sw = w.down[c - 1];
    unsigned char* px = w.out + 4 * static_cast<std::size_t>(c);
    px[kOwn] = w.mid[c];
    px[kGreen] = static_cast<unsigned char>(std::abs(west - east) <= std::abs(north - south)
                                                ? average(west, east)
                                                : average(north, south));
    px[kOther] = static_cast<unsigned char>(
        std::abs(nw - ne) > std::abs(nw - sw) ? average(nw, sw) : average(nw, ne));
    if (kPolicy == FourthByte::Zeroed) {
        px[kFourth] = 0;
    }
}

template <int kOwn>
inline void greenSite(const RowWindow& w, int c) {
    constexpr int kOther = kRed + kBlue - kOwn;
    unsigned char* px = w.out + 4 * static_cast<std::size_t>(c);
    px[kOwn] = static_cast<unsigned char>(average(w.mid[c - 1], w.mid[c + 1]));
    px[kGreen] = w.mid[c];
    px[kOther] = static_cast<unsigned char>(average(w.up[c], w.down[c]));
    px[kFourth] = 0;
}

#if defined(__SSE2__)
// Sixteen interior sites from column c, a chroma site, on: the same rules lane by lane, the
// chroma and green results then picked by column parity.
template <int kOwn, FourthByte kPolicy>
inline void sixteenSites(const RowWindow& w, int c) {
    using namespace lanes;
    const __m128i centre = load(w.mid + c);
    const __m128i west = load(w.mid + c - 1);
    const __m128i east = load(w.mid + c + 1);
    const __m128i north = load(w.up + c);
    const __m128i south = load(w.down + c);
    const __m128i nw = load(w.up + c - 1);
    const __m128i ne = load(w.up + c + 1);
    const __m128i sw = load(w.down + c - 1);

    const __m128i alongRow = averageDown(west, east);
    const __m128i alongColumn = averageDown(north, south);
    const __m128i green =
        select(lessOrEqual(absoluteDifference(west, east), absoluteDifference(north, south)),
               alongRow, alongColumn);
    // |NW - NE| > |NW - SW| takes NW and SW; otherwise (ties included) NW and NE.
    const __m128i diagonal =
        select(lessOrEqual(absoluteDifference(nw, ne), absoluteDifference(nw, sw)),
               averageDown(nw, ne), averageDown(nw, sw));

    const __m128i chromaLanes = _mm_set1_epi16(0x00FF);  // even lanes: chroma sites
    const __m128i own = select(chromaLanes, centre, alongRow);
    const __m128i greenPlane = select(chromaLanes, green, centre);
    const __m128i other = select(chromaLanes, diagonal, alongColumn);
    const __m128i zero = _mm_setzero_si128();
    const Pixels16 px = kOwn == kRed ? interleave4(other, greenPlane, own, zero)
                                     : interleave4(own, greenPlane, other, zero);
    unsigned char* out = w.out + 4 * static_cast<std::size_t>(c);
    for (int q = 0; q < 4; ++q) {
        __m128i v = px.quarter[q];
        if (kPolicy == FourthByte::Untouched) {
            // Keep the fourth byte of the chroma pixels (even pixels of the group).
            const __m128i keep =
                _mm_set_epi32(0, static_cast<int>(0xFF000000u), 0, static_cast<int>(0xFF000000u));
            v = _mm_or_si128(v, _mm_and_si128(load(out + 16 * q), keep));
        }
        store(out + 16 * q, v);
    }
}
#endif

// Interior sites of one row, columns 1 .. width - 2; firstChroma (1 or 2) is the first
// column holding the row's chroma colour.
template <int kOwn, FourthByte kPolicy>
void interiorRow(const RowWindow& w, int firstChroma, int width) {
    if (width < 3) {
        return;  // no interior column
    }
    int c = 1;
    if (firstChroma == 2) {
        greenSite<kOwn>(w, c++);
    }
#if defined(__SSE2__)
    // Reads reach column c + 16, the last column at most.
    for (; c + 16 <= width - 1; c += 16) {
        sixteenSites<kOwn, kPolicy>(w, c);
    }
#endif
    for (; c <= width - 2; c += 2) {
        chromaSite<kOwn, kPolicy>(w, c);
        if (c + 1 <= width - 2) {
            greenSite<kOwn>(w, c + 1);
        }
    }
}

template <FourthByte kPolicy>
void interiorRows(const unsigned char* mosaic, unsigned char* bgra, int width, int height,
                  MosaicPhase phase) {
    const std::size_t rowBytes = 4 * static_cast<std::size_t>(width);
    for (int r = 1; r < height - 1; ++r) {
        const unsigned char* mid = mosaic + static_cast<std::size_t>(r) * width;
        const RowWindow w{mid - width, mid, mid + width,
                          bgra + static_cast<std::size_t>(r) * rowBytes};
        // In a red row the chroma colour sits in red columns, in a blue row in the others.
        const int firstChroma = isRedColumn(phase, 1) == isRedRow(phase, r) ? 1 : 2;
        if (isRedRow(phase, r)) {
            interiorRow<kRed, kPolicy>(w, firstChroma, width);
        } else {
            interiorRow<kBlue, kPolicy>(w, firstChroma, width);
        }
    }
}
}  // namespace

bool demosaicEdgeDirected(const unsigned char* mosaic, unsigned char* bgra, int width, int height,
                          MosaicPhase phase, FourthByte fourth) {
    if (mosaic == nullptr || bgra == nullptr || width <= 0 || height <= 0) {
        return false;
    }
    if (fourth == FourthByte::Zeroed) {
        interiorRows<FourthByte::Zeroed>(mosaic, bgra, width, height, phase);
    } else {
        interiorRows<FourthByte::Untouched>(mosaic, bgra, width, height, phase);
    }
    const MosaicView m{mosaic, width, height};
    const std::size_t rowBytes = 4 * static_cast<std::size_t>(width);
    auto pixel = [&](int row, int col) {
        return bgra + static_cast<std::size_t>(row) * rowBytes + 4 * static_cast<std::size_t>(col);
    };
    for (int r = 1; r < height - 1; ++r) {
        borderPixel(m, phase, r, 0, true, pixel(r, 0));
        borderPixel(m, phase, r, width - 1, true, pixel(r, width - 1));
    }
    for (int c = 0; c < width; ++c) {
        borderPixel(m, phase, 0, c, false, pixel(0, c));
        borderPixel(m, phase, height - 1, c, false, pixel(height - 1, c));
    }
    return true;
}

}  // namespace convert
}  // namespace talonvireo
