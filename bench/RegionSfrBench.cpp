// Speed of TalonCalSFR on rendered regions. Run pinned to one core:
//   taskset -c 0 build/bench/talonvireo_bench
#include <benchmark/benchmark.h>

#include <vector>

#include "render/RegionEncoding.h"
#include "render/SlantedEdgeRenderer.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
namespace pf = talonvireo::PixelFormat;
namespace render = talonvireo::render;

std::vector<unsigned char> renderedRegion(int side, int format) {
    render::SlantedEdgeScene scene;
    scene.width = scene.height = side;
    scene.sigma = 0.8;
    scene.angleDeg = 5.0;
    scene.noise = 1.0;
    const cv::Mat levels = render::renderSlantedEdge(scene);
    const bool wide =
        (format & pf::LayoutMask) == pf::Grey16 || (format & pf::LayoutMask) == pf::Bgr16;
    return render::encodeRegion(
        wide ? render::quantise16(levels, 256.0) : render::quantise8(levels), format);
}

void measureRegion(benchmark::State& state, int format) {
    const int side = static_cast<int>(state.range(0));
    std::vector<unsigned char> bytes = renderedRegion(side, format);
    tagSFRResult result{};
    result.nyquistDivisor = 8.0;
    for (auto _ : state) {
        const int status = TalonCalSFR(bytes.data(), side, side, format, result);
        if (status != 0) {
            state.SkipWithError("edge refused");
            break;
        }
        benchmark::DoNotOptimize(result);
    }
    state.SetLabel(std::to_string(side) + "x" + std::to_string(side));
}

void BM_TalonCalSFR_Grey8(benchmark::State& state) {
    measureRegion(state, pf::Grey8);
}
void BM_TalonCalSFR_Bgr8(benchmark::State& state) {
    measureRegion(state, pf::Bgr8);
}
void BM_TalonCalSFR_Grey16(benchmark::State& state) {
    measureRegion(state, pf::Grey16);
}
void BM_TalonCalSFR_BayerRG8(benchmark::State& state) {
    measureRegion(state, pf::Bayer8 | pf::PhaseRG);
}

}  // namespace

BENCHMARK(BM_TalonCalSFR_Grey8)->Arg(90)->Arg(100)->Arg(200)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TalonCalSFR_Bgr8)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TalonCalSFR_Grey16)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TalonCalSFR_BayerRG8)->Arg(100)->Unit(benchmark::kMicrosecond);
