// The demosaic to grey of a 4000 x 3000 8-bit mosaic (code 17), with all of OpenMP's threads.
#include <benchmark/benchmark.h>

#include "RandomFrame.h"

#include <cstring>
#include <vector>

#include "convert/Demosaic.h"

namespace {

constexpr int kWidth = talonvireo::bench::kFrameWidth;
constexpr int kHeight = talonvireo::bench::kFrameHeight;

void BM_DemosaicToGrey8(benchmark::State& state) {
    const std::vector<unsigned char> mosaic = talonvireo::bench::randomFrame(1);
    std::vector<unsigned char> grey(mosaic.size());
    for (auto _ : state) {
        if (talonvireo::convert::demosaicToGrey(mosaic.data(), kWidth, kHeight, 0x011,
                                                grey.data()) != 0) {
            state.SkipWithError("refused");
            break;
        }
        benchmark::ClobberMemory();
    }
}

// Memory-bandwidth bound: copying the 12 MB mosaic.
void BM_CopyMosaic(benchmark::State& state) {
    const std::vector<unsigned char> mosaic = talonvireo::bench::randomFrame(1);
    std::vector<unsigned char> copy(mosaic.size());
    for (auto _ : state) {
        std::memcpy(copy.data(), mosaic.data(), mosaic.size());
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
}

}  // namespace

BENCHMARK(BM_DemosaicToGrey8)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_CopyMosaic)->Unit(benchmark::kMillisecond);
