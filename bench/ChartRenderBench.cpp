// Rendering a 4000 x 3000 synthetic chart: the exact coverage (all threads), then the
// exposure to raw words without and with noise (one thread, seeded).
#include <benchmark/benchmark.h>

#include "render/ChartDesign.h"
#include "render/ChartRenderer.h"

namespace {
using namespace talonvireo::render;

void BM_ChartCoverage(benchmark::State& state) {
    const ChartDesign design = designChart(ChartProject::K74T16BX);
    for (auto _ : state) {
        cv::Mat coverage = chartCoverage(design.squares, {}, 1.0, 4000, 3000);
        benchmark::DoNotOptimize(coverage.data);
    }
}

void BM_ChartExposure(benchmark::State& state) {
    const ChartDesign design = designChart(ChartProject::K74T16BX);
    const cv::Mat coverage = chartCoverage(design.squares, {}, 1.0, 4000, 3000);
    ChartExposure exposure;
    exposure.bits = 10;
    exposure.bayer = true;
    exposure.shotNoise = state.range(0) != 0 ? 20.0 : 0.0;
    exposure.readNoise = state.range(0) != 0 ? 2.0 : 0.0;
    for (auto _ : state) {
        cv::Mat raw = exposeChart(coverage, exposure);
        benchmark::DoNotOptimize(raw.data);
    }
}

}  // namespace

BENCHMARK(BM_ChartCoverage)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ChartExposure)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
