// The quad finder on a 4000 x 3000 frame of a 9 x 12 grid of squares of side 190 turned 5 to
// 12 degrees (blur sigma 0.8, read noise of two levels): the whole search at one and two
// threads, 8-bit grey and 10-bit words, and its two halves, the coarse search for candidates
// and the sub-pixel refinement of their sides.
#include <benchmark/benchmark.h>

#include <omp.h>

#include <cmath>
#include <vector>

#include <opencv2/core.hpp>

#include "BenchThreads.h"

#include "detect/CoarseImage.h"
#include "detect/NoiseLevel.h"
#include "detect/PolarityMasks.h"
#include "detect/QuadCandidates.h"
#include "detect/QuadFinder.h"
#include "render/ChartRenderer.h"

namespace {
using namespace talonvireo;

cv::Mat gridFrame(int bits) {
    constexpr double kPi = 3.141592653589793;
    std::vector<render::ChartSquare> squares;
    for (int r = 0; r < 9; ++r) {
        for (int c = 0; c < 12; ++c) {
            const int k = r * 12 + c;
            const double turn = (5.0 + 7.0 * ((k * 37) % 108) / 107.0) * ((r + c) % 2 ? -1 : 1);
            squares.push_back(
                {4000.0 / 12 * (c + 0.5), 3000.0 / 9 * (r + 0.5), 190.0, turn * kPi / 180.0});
        }
    }
    render::ChartExposure exposure;
    exposure.bits = bits;
    exposure.readNoise = 2.0 * (1 << (bits - 8));
    return render::exposeChart(render::chartCoverage(squares, {}, 0.8, 4000, 3000), exposure);
}

using bench::Threads;

void BM_FindQuads(benchmark::State& state, int bits) {
    const cv::Mat frame = gridFrame(bits);
    const Threads threads(static_cast<int>(state.range(0)));
    size_t found = 0;
    for (auto _ : state) {
        const std::vector<detect::Quad> quads = detect::findQuads(frame);
        found = quads.size();
        benchmark::DoNotOptimize(quads.data());
    }
    state.counters["quads"] = static_cast<double>(found);
}
BENCHMARK_CAPTURE(BM_FindQuads, grey8, 8)
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(BM_FindQuads, words10, 10)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

// Reduction, masks and candidates: everything before the full-resolution refinement.
void BM_CoarseSearch(benchmark::State& state) {
    const cv::Mat frame = gridFrame(8);
    const Threads threads(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        const detect::CoarseImage coarse = detect::reduceFrame(frame);
        const detect::PolarityMasks masks =
            detect::splitByLocalMean(coarse.values, detect::noiseSigma(coarse.values));
        const auto dark = detect::findQuadCandidates(masks.dark, 1, coarse);
        const auto light = detect::findQuadCandidates(masks.light, -1, coarse);
        benchmark::DoNotOptimize(dark.data());
        benchmark::DoNotOptimize(light.data());
    }
}
BENCHMARK(BM_CoarseSearch)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
