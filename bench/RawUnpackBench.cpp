// Raw unpacking of a 4000 x 3000 frame, beside a plain copy of the same input bytes.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "convert/RawUnpack.h"

namespace {
namespace convert = talonvireo::convert;

const cv::Size kFrame(4000, 3000);

std::vector<unsigned short> rawFrame(unsigned maxValue) {
    std::vector<unsigned short> frame(static_cast<size_t>(kFrame.area()));
    std::mt19937 rng(1);
    for (auto& s : frame) {
        s = static_cast<unsigned short>(rng() % (maxValue + 1));
    }
    return frame;
}

void unpack(benchmark::State& state, const convert::RawConverter& converter, unsigned maxValue) {
    const std::vector<unsigned short> src = rawFrame(maxValue);
    std::vector<unsigned char> dst(src.size());
    for (auto _ : state) {
        converter(src.data(), dst.data(), kFrame);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * src.size() * 3);
}

void BM_UnpackRaw10(benchmark::State& state) {
    unpack(state, convert::unpackRaw10, 1023);
}
void BM_UnpackRaw14(benchmark::State& state) {
    unpack(state, convert::unpackRaw14, 16383);
}
void BM_UnpackRaw16(benchmark::State& state) {
    unpack(state, convert::unpackRaw16, 65535);
}

// Memory-bandwidth bound: copying the frame's 24 MB of raw words.
void BM_CopyRawFrame(benchmark::State& state) {
    const std::vector<unsigned short> src = rawFrame(1023);
    std::vector<unsigned short> dst(src.size());
    for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), src.size() * sizeof(unsigned short));
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * src.size() * 4);
}

}  // namespace

BENCHMARK(BM_UnpackRaw10)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UnpackRaw14)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UnpackRaw16)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CopyRawFrame)->Unit(benchmark::kMillisecond);
