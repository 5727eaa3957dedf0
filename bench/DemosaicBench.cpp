// The demosaic to grey of a 4000 x 3000 8-bit mosaic (code 17), with all of OpenMP's threads.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "convert/Demosaic.h"

namespace {

constexpr int kWidth = 4000;
constexpr int kHeight = 3000;

std::vector<unsigned char> mosaicFrame() {
    std::vector<unsigned char> frame(static_cast<size_t>(kWidth) * kHeight);
    std::mt19937 rng(1);
    for (auto& s : frame) {
        s = static_cast<unsigned char>(rng());
    }
    return frame;
}

void BM_DemosaicToGrey8(benchmark::State& state) {
    const std::vector<unsigned char> mosaic = mosaicFrame();
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
    const std::vector<unsigned char> mosaic = mosaicFrame();
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
