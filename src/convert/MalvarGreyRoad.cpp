// The Malvar road, fused. Per band: the rows it needs (two above and below, mirrored at the
// frame's edges) are unpacked once into byte rows with two mirrored samples at each end;
// every output row then computes the four kernels on all lanes with 16-bit arithmetic (the
// largest kernel sum is 7140 in magnitude), keeps per column the ones its site uses and
// reduces to grey in 32-bit lanes.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convert/MalvarGreyRoad.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "convert/WeightedGrey-inl.h"

#include <cstddef>

#include <opencv2/core.hpp>

#include "convert/Demosaic.h"
#include "convert/GreyRoads.h"
#include "convert/RowBands.h"
#include "convert/WordUnpack.h"

#ifndef TALONVIREO_MALVAR_ROAD_SHARED
#define TALONVIREO_MALVAR_ROAD_SHARED
namespace talonvireo {
namespace convert {
namespace malvar {
constexpr int kBorder = 2;
// Room past a row's right border for a vector that starts on the last columns.
constexpr int kPad = 64;

inline std::size_t rowStride(int width) {
    return static_cast<std::size_t>(width) + 2 * kBorder + kPad;
}

// Unpacks the rows a band reads into `band`: row i holds frame row firstRow - 2 + i
// (mirrored), samples at offset kBorder with two mirrored samples either side.
inline void unpackBandRows(const std::uint16_t* words, int width, int height, WordDepth depth,
                           int firstRow, int rowCount, std::uint8_t* band) {
    const std::size_t stride = rowStride(width);
    for (int i = 0; i < rowCount; ++i) {
        const int src =
            cv::borderInterpolate(firstRow - kBorder + i, height, cv::BORDER_REFLECT_101);
        std::uint8_t* row = band + i * stride + kBorder;
        unpackWords(words + static_cast<std::size_t>(src) * width, row,
                    static_cast<std::size_t>(width), depth);
        for (int c : {-2, -1, width, width + 1}) {
            row[c] = row[cv::borderInterpolate(c, width, cv::BORDER_REFLECT_101)];
        }
    }
}
}  // namespace malvar
}  // namespace convert
}  // namespace talonvireo
#endif

HWY_BEFORE_NAMESPACE();
namespace talonvireo {
namespace convert {
namespace HWY_NAMESPACE {

// Kernel result over 16, clamped to a byte.
HWY_INLINE V16 clampedChannel(D16 d, V16 sum) {
    return hn::Min(hn::Max(hn::ShiftRight<4>(sum), hn::Zero(d)), hn::Set(d, 255));
}

// OpenCV's fixed-point RGB-to-grey of 8-bit pixels.
using OpenCvGrey = GreyWeights<9798, 19235, 3735, 16384, 15>;

// One output row. `centre` points at the row's first sample in the band; chromaEven says
// whether the row's red or blue sites sit in even columns.
template <bool kRedRow>
void greyRow(const std::uint8_t* centre, std::size_t stride, int width, bool chromaEven,
             std::uint8_t* out) {
    const D16 d;
    const hn::Rebind<std::uint8_t, D16> d8;
    const int n = static_cast<int>(hn::Lanes(d));
    const V16 one = hn::Set(d, 1);
    const V16 chromaParity = chromaEven ? hn::Zero(d) : one;
    const std::uint8_t* u2 = centre - 2 * stride;
    const std::uint8_t* u1 = centre - stride;
    const std::uint8_t* d1 = centre + stride;
    const std::uint8_t* d2 = centre + 2 * stride;
    for (int x = 0; x < width; x += n) {
        const auto at = [&](const std::uint8_t* row, int dx) {
            return hn::PromoteTo(d, hn::LoadU(d8, row + x + dx));
        };
        // Lanes at the row's red or blue sites (the column parity of lane i is that of x + i).
        const auto chroma = hn::Eq(hn::And(hn::Iota(d, x), one), chromaParity);
        const V16 c = at(centre, 0);
        const V16 h1 = hn::Add(at(centre, -1), at(centre, 1));
        const V16 h2 = hn::Add(at(centre, -2), at(centre, 2));
        const V16 v1 = hn::Add(at(u1, 0), at(d1, 0));
        const V16 v2 = hn::Add(at(u2, 0), at(d2, 0));
        const V16 diag = hn::Add(hn::Add(at(u1, -1), at(u1, 1)), hn::Add(at(d1, -1), at(d1, 1)));
        const V16 c8 = hn::ShiftLeft<3>(c);
        const V16 c10 = hn::Add(c8, hn::ShiftLeft<1>(c));
        const V16 far = hn::Add(v2, h2);
        // Green at red or blue; the colour along the row; along the column; on the diagonals.
        const V16 greenAtChroma = clampedChannel(
            d, hn::Sub(hn::Add(c8, hn::ShiftLeft<2>(hn::Add(v1, h1))), hn::ShiftLeft<1>(far)));
        const V16 alongRow = clampedChannel(d, hn::Add(hn::Sub(hn::Add(c10, hn::ShiftLeft<3>(h1)),
                                                               hn::ShiftLeft<1>(hn::Add(h2, diag))),
                                                       v2));
        const V16 alongColumn = clampedChannel(
            d, hn::Add(
                   hn::Sub(hn::Add(c10, hn::ShiftLeft<3>(v1)), hn::ShiftLeft<1>(hn::Add(v2, diag))),
                   h2));
        const V16 diagonal = clampedChannel(
            d, hn::Sub(hn::Add(hn::Add(c8, hn::ShiftLeft<2>(c)), hn::ShiftLeft<2>(diag)),
                       hn::Add(far, hn::ShiftLeft<1>(far))));
        const V16 green = hn::IfThenElse(chroma, greenAtChroma, c);
        V16 red;
        V16 blue;
        if constexpr (kRedRow) {
            red = hn::IfThenElse(chroma, c, alongRow);
            blue = hn::IfThenElse(chroma, diagonal, alongColumn);
        } else {
            red = hn::IfThenElse(chroma, diagonal, alongColumn);
            blue = hn::IfThenElse(chroma, c, alongRow);
        }
        storeGrey(OpenCvGrey{}, d, red, green, blue, out + x, static_cast<std::size_t>(width - x));
    }
}

void MalvarBand(const std::uint16_t* words, int width, int height, WordDepth depth, int phaseIdx,
                int firstRow, int endRow, std::uint8_t* band, std::uint8_t* grey) {
    using namespace malvar;
    const std::size_t stride = rowStride(width);
    unpackBandRows(words, width, height, depth, firstRow, endRow - firstRow + 2 * kBorder, band);
    for (int y = firstRow; y < endRow; ++y) {
        const int evenRoutine = routineFor(phaseIdx, 2 * (y & 1));
        const bool redRow = evenRoutine >= 2;                          // red, or green in a red row
        const bool chromaEven = evenRoutine == 0 || evenRoutine == 3;  // blue or red
        const std::uint8_t* centre = band + (y - firstRow + kBorder) * stride + kBorder;
        std::uint8_t* out = grey + static_cast<std::size_t>(y) * width;
        if (redRow) {
            greyRow<true>(centre, stride, width, chromaEven, out);
        } else {
            greyRow<false>(centre, stride, width, chromaEven, out);
        }
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace convert
}  // namespace talonvireo
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace talonvireo {
namespace convert {

HWY_EXPORT(MalvarBand);

bool malvarRoadToGrey(const std::uint16_t* words, int width, int height, WordDepth depth,
                      int phaseIdx, std::uint8_t* grey) {
    if (words == nullptr || grey == nullptr || width <= 0 || height <= 0 || phaseIdx < 0 ||
        phaseIdx > 3) {
        return false;
    }
    using namespace malvar;
    const std::size_t bandBytes = (kBandRows + 2 * kBorder) * rowStride(width);
    return forEachBand(height, bandBytes, [&](int first, int end, unsigned char* band) {
        HWY_DYNAMIC_DISPATCH(MalvarBand)
        (words, width, height, depth, phaseIdx, first, end, band, grey);
    });
}

}  // namespace convert
}  // namespace talonvireo
#endif
