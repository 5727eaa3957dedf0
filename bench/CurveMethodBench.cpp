// Speed of measureSfrCurve by method and region size: classic, precise, and precise per raw
// colour plane. Run pinned to one core:
//   taskset -c 0 build/bench/talonvireo_bench --benchmark_filter=Curve
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "render/RegionEncoding.h"
#include "render/SlantedEdgeRenderer.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
namespace pf = talonvireo::PixelFormat;
namespace render = talonvireo::render;
using talonvireo::SfrMethod;

// A noisy edge at the given angle; grey, or a neutral mosaic in 16-bit words.
std::vector<unsigned char> edgeRegion(int side, double angle, int format) {
    render::SlantedEdgeScene scene;
    scene.width = scene.height = side;
    scene.sigma = 0.8;
    scene.angleDeg = angle;
    scene.noise = 1.0;
    const cv::Mat levels = render::renderSlantedEdge(scene);
    const bool wide = (format & pf::LayoutMask) == pf::Bayer16;
    return render::encodeRegion(
        wide ? render::quantise16(levels, 256.0) : render::quantise8(levels), format);
}

void measureCurve(benchmark::State& state, SfrMethod method, bool planes) {
    const int side = static_cast<int>(state.range(0));
    const double angle = static_cast<double>(state.range(1)) / 10.0;
    const int format = planes ? pf::Bayer16 | pf::PhaseRG : pf::Grey8;
    const std::vector<unsigned char> bytes = edgeRegion(side, angle, format);
    talonvireo::SfrCurveOptions options;
    options.method = method;
    options.perChannelRaw = planes;
    options.frequencies = {0.125, 0.25};
    talonvireo::SfrCurve curve;
    for (auto _ : state) {
        if (talonvireo::measureSfrCurve(bytes.data(), side, side, format, options, curve) != 0) {
            state.SkipWithError("edge refused");
            break;
        }
        benchmark::DoNotOptimize(curve);
    }
    state.SetLabel(std::to_string(side) + "x" + std::to_string(side) + " at " +
                   std::to_string(angle).substr(0, 4) + " deg");
}

void BM_Curve_Classic(benchmark::State& state) {
    measureCurve(state, SfrMethod::kClassic, false);
}
void BM_Curve_Precise(benchmark::State& state) {
    measureCurve(state, SfrMethod::kPrecise, false);
}
void BM_Curve_PrecisePerChannelRaw(benchmark::State& state) {
    measureCurve(state, SfrMethod::kPrecise, true);
}

// Sizes 60, 80, 100, 200 at 5 degrees; 100 at 26.6 degrees (tan 1/2, the widest kernel).
void regionSizes(benchmark::internal::Benchmark* b) {
    for (int side : {60, 80, 100, 200}) {
        b->Args({side, 50});
    }
    b->Args({100, 266});
    b->Unit(benchmark::kMicrosecond);
}

}  // namespace

BENCHMARK(BM_Curve_Classic)->Apply(regionSizes);
BENCHMARK(BM_Curve_Precise)->Apply(regionSizes);
BENCHMARK(BM_Curve_PrecisePerChannelRaw)->Apply(regionSizes);
