// Every edge of a chart found and measured by measureChart: a 4000 x 3000 grid of 108 squares
// (432 edges, 16-bit grey, sigma 1, illumination falling to half at the corners, read noise)
// and 13 of its squares (52 edges, as many as a member's record holds), with the precise
// method by default and the classic one, found or described, at one and two threads.
#include <benchmark/benchmark.h>

#include <omp.h>

#include <string>

#include <opencv2/core.hpp>

#include "BenchThreads.h"

#include "render/DescriptionRenderer.h"
#include "render/GridChart.h"
#include "talonvireo/ChartMeasurement.h"
#include "talonvireo/PixelFormat.h"

namespace {
using namespace talonvireo;

using bench::Threads;

render::DescriptionRenderSettings look() {
    render::DescriptionRenderSettings s = render::settingsForFrame(4000, 3000);
    s.bits = 16;
    s.cornerLight = 0.5;
    s.readNoise = 64.0;
    return s;
}

// `count` of the grid's squares, spread over the field (every 108 / count-th).
ChartDescription fewSquares(int count) {
    const ChartDescription grid = render::gridChart();
    ChartDescription few;
    few.name = std::to_string(count) + " squares";
    const int step = static_cast<int>(grid.shapes.size()) / count;
    for (int k = 0; k < count; ++k) {
        few.shapes.push_back(grid.shapes[static_cast<std::size_t>(k * step)]);
    }
    return few;
}

void measure(benchmark::State& state, const ChartDescription& chart, SfrMethod method,
             const ChartDescription* described) {
    const cv::Mat frame = render::renderDescription(chart, look());
    const Threads threads(static_cast<int>(state.range(0)));
    ChartMeasureOptions options;
    options.method = method;
    std::size_t measured = 0;
    for (auto _ : state) {
        ChartReport report;
        if (measureChart(frame.data, frame.cols, frame.rows, PixelFormat::Grey16, described,
                         options, report) != 0) {
            state.SkipWithError("measureChart failed");
            break;
        }
        measured = 0;
        for (const ChartEdgeReport& e : report.edges) {
            measured += e.state == ChartEdgeState::kMeasured ? 1 : 0;
        }
    }
    state.counters["edges"] = static_cast<double>(measured);
}

void BM_MeasureGrid432Precise(benchmark::State& state) {
    measure(state, render::gridChart(), SfrMethod::kPrecise, nullptr);
}
void BM_MeasureGrid432Classic(benchmark::State& state) {
    measure(state, render::gridChart(), SfrMethod::kClassic, nullptr);
}
void BM_Measure52EdgesPrecise(benchmark::State& state) {
    measure(state, fewSquares(13), SfrMethod::kPrecise, nullptr);
}
void BM_MeasureDescribedGrid432Precise(benchmark::State& state) {
    const ChartDescription chart = render::gridChart();
    measure(state, chart, SfrMethod::kPrecise, &chart);
}

BENCHMARK(BM_MeasureGrid432Precise)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_MeasureGrid432Classic)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Measure52EdgesPrecise)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_MeasureDescribedGrid432Precise)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
