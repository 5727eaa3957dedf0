// The toolbox's mosaic-to-grey operation at mode 0 (edge-directed demosaic into a temporary
// 32-bit image, then the fixed-point luminance) on a 4000 x 3000 8-bit mosaic, one thread.
#include <benchmark/benchmark.h>

#include "RandomFrame.h"

#include <cstdlib>
#include <cstring>
#include <vector>

#include "convert/ImageTransform.h"

namespace {

constexpr int kWidth = talonvireo::bench::kFrameWidth;
constexpr int kHeight = talonvireo::bench::kFrameHeight;

void BM_MosaicToGreyMode0(benchmark::State& state) {
    const std::vector<unsigned char> mosaic = talonvireo::bench::randomFrame(7);
    std::vector<unsigned char> grey(mosaic.size());
    libs::TalonUtil::ImageTransform transform;
    for (auto _ : state) {
        if (!transform.mosaicToGrey(mosaic.data(), grey.data(), kWidth, kHeight, 0)) {
            state.SkipWithError("refused");
            break;
        }
        benchmark::ClobberMemory();
    }
}

// The demosaic alone, into a caller-owned (already faulted-in) 32-bit image.
void BM_DemosaicRggbToBgra(benchmark::State& state) {
    const std::vector<unsigned char> mosaic = talonvireo::bench::randomFrame(7);
    std::vector<unsigned char> bgra(mosaic.size() * 4);
    libs::TalonUtil::ImageTransform transform;
    for (auto _ : state) {
        transform.demosaicRggb(mosaic.data(), bgra.data(), kWidth, kHeight);
        benchmark::ClobberMemory();
    }
}

// The luminance alone, from a 32-bit image to grey.
void BM_BgraToGrey(benchmark::State& state) {
    const std::vector<unsigned char> bgra(static_cast<size_t>(kWidth) * kHeight * 4, 100);
    std::vector<unsigned char> grey(static_cast<size_t>(kWidth) * kHeight);
    libs::TalonUtil::ImageTransform transform;
    for (auto _ : state) {
        transform.bgraToGrey(bgra.data(), grey.data(), kWidth, kHeight);
        benchmark::ClobberMemory();
    }
}

// Bandwidth bound of the composite: writing and re-reading the 48 MB temporary image
// (copied here once) plus the 12 MB mosaic in and the 12 MB grey image out.
void BM_CopyTemporaryImage(benchmark::State& state) {
    const std::vector<unsigned char> src(static_cast<size_t>(kWidth) * kHeight * 4, 1);
    std::vector<unsigned char> dst(src.size());
    for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), src.size());
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
}

// What a fresh 48 MB temporary costs before any pixel is computed: allocation, first touch of
// every page (one byte a page), release.
void BM_FreshTemporaryImage(benchmark::State& state) {
    const std::size_t bytes = static_cast<size_t>(kWidth) * kHeight * 4;
    for (auto _ : state) {
        auto* block = static_cast<unsigned char*>(std::malloc(bytes));
        for (std::size_t i = 0; i < bytes; i += 4096) {
            block[i] = 1;
        }
        benchmark::DoNotOptimize(block);
        std::free(block);
    }
}

}  // namespace

BENCHMARK(BM_MosaicToGreyMode0)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_DemosaicRggbToBgra)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BgraToGrey)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CopyTemporaryImage)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FreshTemporaryImage)->Unit(benchmark::kMillisecond);
