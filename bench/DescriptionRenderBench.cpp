// Rendering a chart description: the 108-square grid on a 4000 x 3000 frame under 10 % barrel
// distortion with sigma rising from 1.0 at the centre to 2.0 at the corners (all threads),
// as 8-bit grey, and as a 10-bit mosaic with noise; and the truth of its 432 edges.
#include <benchmark/benchmark.h>

#include "render/DescriptionRenderer.h"
#include "render/DescriptionTruth.h"
#include "render/GridChart.h"

namespace {
using namespace talonvireo::render;

DescriptionRenderSettings barrelFrame() {
    DescriptionRenderSettings s = settingsForFrame(4000, 3000);
    s.placement.k1 = -0.10;
    s.sigmaCentre = 1.0;
    s.sigmaCorner = 2.0;
    s.cornerLight = 0.6;
    return s;
}

void BM_DescriptionRender(benchmark::State& state) {
    const talonvireo::ChartDescription grid = gridChart();
    DescriptionRenderSettings s = barrelFrame();
    if (state.range(0) != 0) {
        s.bits = 10;
        s.bayer = true;
        s.readNoise = 2.0;
        s.shotNoise = 20.0;
    }
    for (auto _ : state) {
        cv::Mat frame = renderDescription(grid, s);
        benchmark::DoNotOptimize(frame.data);
    }
}

void BM_DescriptionTruth(benchmark::State& state) {
    const talonvireo::ChartDescription grid = gridChart();
    const DescriptionRenderSettings s = barrelFrame();
    for (auto _ : state) {
        auto truth = descriptionTruth(grid, s);
        benchmark::DoNotOptimize(truth.data());
    }
}

}  // namespace

BENCHMARK(BM_DescriptionRender)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_DescriptionTruth)->Unit(benchmark::kMillisecond);
