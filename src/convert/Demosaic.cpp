#include "convert/Demosaic.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "convert/MalvarKernels.h"

namespace talonvireo {
namespace convert {

namespace {
constexpr int kBorder = 2;

constexpr int routineSelectionTable[4][4] = {
    {0, 1, 2, 3},  // B G
    {1, 0, 3, 2},  // G B
    {3, 2, 1, 0},  // R G
    {2, 3, 0, 1},  // G R
};

bool acceptedCode(int format) {
    const int layout = format & 0xF0;
    return (format & 0x0F) != 0 && (layout == 0x10 || layout == 0x20 || layout == 0x40);
}

// Sum of weight x sample over the non-zero weights of K, unrolled at compile time.
template <const Kernel5x5* K, typename T, std::size_t... I>
inline int kernelSum(const T* centre, int stride, std::index_sequence<I...>) {
    int sum = 0;
    (((*K)[I] != 0
          ? (sum += (*K)[I] * static_cast<int>(centre[(static_cast<int>(I) / 5 - 2) * stride +
                                                      static_cast<int>(I) % 5 - 2]))
          : 0),
     ...);
    return sum;
}

// Where an output channel comes from: the mosaic sample itself, or a kernel.
struct Native {};
template <const Kernel5x5* K>
struct Interpolated {};

template <typename T>
inline T channelValue(Native, const T* centre, int) {
    return *centre;
}

// The kernel result, clamped to the sample range.
template <const Kernel5x5* K, typename T>
inline T channelValue(Interpolated<K>, const T* centre, int stride) {
    const int sum = kernelSum<K>(centre, stride, std::make_index_sequence<25>{});
    if (sum <= 0) {
        return 0;
    }
    constexpr int kMax = static_cast<int>(static_cast<T>(~T(0)));
    return static_cast<T>(std::min(sum / 16, kMax));
}

using Diagonal = Interpolated<&kernelDiagonal>;
using GreenAtRedBlue = Interpolated<&kernelGreenAtRedBlue>;
using AlongRow = Interpolated<&kernelAlongRow>;
using AlongColumn = Interpolated<&kernelAlongColumn>;

// A per-pixel routine, by the source of its red, green and blue channels: output pixel,
// bordered mosaic, stride in samples, row and column in bordered coordinates.
template <typename T, typename Red, typename Green, typename Blue>
void interpolateSite(T* out, const T* b, int stride, int row, int col) {
    const T* c = b + row * stride + col;
    out[0] = channelValue(Red{}, c, stride);
    out[1] = channelValue(Green{}, c, stride);
    out[2] = channelValue(Blue{}, c, stride);
}

template <typename T>
void interpolateAtBlue(T* out, const T* b, int stride, int row, int col) {
    interpolateSite<T, Diagonal, GreenAtRedBlue, Native>(out, b, stride, row, col);
}

template <typename T>
void interpolateAtGreenInBlueRow(T* out, const T* b, int stride, int row, int col) {
    interpolateSite<T, AlongColumn, Native, AlongRow>(out, b, stride, row, col);
}

template <typename T>
void interpolateAtGreenInRedRow(T* out, const T* b, int stride, int row, int col) {
    interpolateSite<T, AlongRow, Native, AlongColumn>(out, b, stride, row, col);
}

template <typename T>
void interpolateAtRed(T* out, const T* b, int stride, int row, int col) {
    interpolateSite<T, Native, GreenAtRedBlue, Diagonal>(out, b, stride, row, col);
}

// One pass: every site of one cell position, rows in parallel. The routine is a template
// argument, so it is chosen once per pass and inlined.
template <typename T, void (*Routine)(T*, const T*, int, int, int)>
void runPass(T* rgb, const T* bordered, int width, int height, int position) {
    const int stride = width + 2 * kBorder;
    const int firstRow = position / 2;
    const int firstCol = position % 2;
#pragma omp parallel for schedule(static)
    for (int y = firstRow; y < height; y += 2) {
        T* outRow = rgb + 3 * static_cast<std::size_t>(y) * width;
        for (int x = firstCol; x < width; x += 2) {
            Routine(outRow + 3 * x, bordered, stride, y + kBorder, x + kBorder);
        }
    }
}

template <typename T>
void runAllPasses(T* rgb, const T* bordered, int width, int height, int phaseIdx) {
    for (int position = 0; position < 4; ++position) {
        switch (routineFor(phaseIdx, position)) {
            case 0:
                runPass<T, interpolateAtBlue<T>>(rgb, bordered, width, height, position);
                break;
            case 1:
                runPass<T, interpolateAtGreenInBlueRow<T>>(rgb, bordered, width, height, position);
                break;
            case 2:
                runPass<T, interpolateAtGreenInRedRow<T>>(rgb, bordered, width, height, position);
                break;
            default:
                runPass<T, interpolateAtRed<T>>(rgb, bordered, width, height, position);
                break;
        }
    }
}
}  // namespace

int bytesPerMosaicSample(int format) {
    if ((format & (0x010 | 0x100 | 0x400)) != 0) {
        return 1;
    }
    if ((format & (0x020 | 0x040 | 0x080 | 0x200 | 0x800)) != 0) {
        return 2;
    }
    return 1;
}

int phaseIndex(int phase) {
    switch (phase) {
        case 8:
            return 0;
        case 4:
            return 1;
        case 1:
            return 2;
        case 2:
            return 3;
        default:
            throw cv::Exception();
    }
}

int routineFor(int phaseIdx, int position) {
    return routineSelectionTable[phaseIdx][position];
}

int demosaicBordered(const void* mosaic, int width, int height, int format, void* rgb) {
    if (!acceptedCode(format)) {
        return -1;
    }
    if (mosaic == nullptr || rgb == nullptr || width <= 0 || height <= 0) {
        return -1;
    }
    const int depth = bytesPerMosaicSample(format) == 1 ? CV_8U : CV_16U;
    const cv::Mat wrapped(height, width, CV_MAKETYPE(depth, 1), const_cast<void*>(mosaic));
    cv::Mat bordered;
    cv::copyMakeBorder(wrapped, bordered, kBorder, kBorder, kBorder, kBorder,
                       cv::BORDER_REFLECT_101, cv::Scalar(0));
    const int phaseIdx = phaseIndex(format & 0x0F);
    if (wrapped.type() == CV_8UC1) {
        runAllPasses(static_cast<std::uint8_t*>(rgb), bordered.ptr<std::uint8_t>(), width, height,
                     phaseIdx);
    } else {
        runAllPasses(static_cast<std::uint16_t*>(rgb), bordered.ptr<std::uint16_t>(), width, height,
                     phaseIdx);
    }
    return 0;
}

int demosaicToGrey(const void* mosaic, int width, int height, int format, void* grey) {
    if (!acceptedCode(format) || grey == nullptr) {
        return -1;
    }
    const int depth = bytesPerMosaicSample(format) == 1 ? CV_8U : CV_16U;
    cv::Mat colour(std::max(height, 0), std::max(width, 0), CV_MAKETYPE(depth, 3));
    if (demosaicBordered(mosaic, width, height, format, colour.data) != 0) {
        return -1;
    }
    cv::Mat out(height, width, CV_MAKETYPE(depth, 1), grey);
    cv::cvtColor(colour, out, cv::COLOR_RGB2GRAY);
    return 0;
}

}  // namespace convert
}  // namespace talonvireo
