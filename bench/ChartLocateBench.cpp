// Chart location on a 4000 x 3000 grey frame of each project's chart, as a project locate
// entry point runs it: construct the locator on the frame, half scale, mark size 100,
// locate, prepare, read the edge centres. The 8K map layouts run at quarter scale on a
// 7680 x 4320 frame.
#include <benchmark/benchmark.h>

#include "locate/SFRLocate_HLX6C.h"
#include "locate/SFRLocate_LX.h"
#include "locate/SFRLocate_LX_17QD.h"
#include "locate/SFRLocate_LX_MAP.h"
#include "locate/SFRLocate_LX_MAP_8K.h"
#include "render/ChartDesign.h"
#include "render/ChartRenderer.h"

namespace {
using namespace talonvireo::render;

cv::Mat greyChart(ChartProject project, int width, int height) {
    const ChartDesign design = designChart(project);
    ChartExposure exposure;
    exposure.light = 200.0 / 255.0;
    exposure.dark = 40.0 / 255.0;
    exposure.readNoise = 2.0;
    return exposeChart(chartCoverage(design.squares, {}, 1.0, width, height), exposure);
}

// One locate as the entry points run it; status and centres come back.
template <class Locator>
int locateWith(const cv::Mat& grey, double scale, std::vector<cv::Point>& centres) {
    Locator locator(grey);
    locator.setScale(scale);
    locator.markSearchSize = 100;
    locator.locate();
    const int status = locator.prepare();
    centres = locator.getEdgeCenters();
    return status;
}
using LocateFn = int (*)(const cv::Mat&, double, std::vector<cv::Point>&);

void BM_Locate(benchmark::State& state, LocateFn locate, ChartProject project, double scale,
               int width, int height) {
    const cv::Mat grey = greyChart(project, width, height);
    std::vector<cv::Point> centres;
    for (auto _ : state) {
        if (locate(grey, scale, centres) != 0) {
            state.SkipWithError("chart not located");
            break;
        }
        benchmark::DoNotOptimize(centres.data());
    }
    state.counters["edges"] = static_cast<double>(centres.size());
}

}  // namespace

using namespace RegularSFR;
BENCHMARK_CAPTURE(BM_Locate, SFRLocate_LX_K31R22BX, &locateWith<SFRLocate_LX>,
                  ChartProject::K31R22BX, 0.5, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Locate, SFRLocate_LX2_K31R22BX, &locateWith<SFRLocate_LX2>,
                  ChartProject::K31R22BX, 0.5, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Locate, SFRLocate_LX_MAP_K74T16BX, &locateWith<SFRLocate_LX_MAP>,
                  ChartProject::K74T16BX, 0.5, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Locate, SFRLocate_LX_MAP2_K74T16BX, &locateWith<SFRLocate_LX_MAP2>,
                  ChartProject::K74T16BX, 0.5, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Locate, SFRLocate_LX_17QD_K83P09BQ, &locateWith<SFRLocate_LX_17QD>,
                  ChartProject::K83P09BQ, 0.5, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Locate, SFRLocate_LX_17QD2_K83P09BQ, &locateWith<SFRLocate_LX_17QD2>,
                  ChartProject::K83P09BQ, 0.5, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Locate, SFRLocate_HLX6C_HLX6C, &locateWith<SFRLocate_HLX6C>,
                  ChartProject::HLX6C, 0.5, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Locate, SFRLocate_HLX6C_2_HLX6C, &locateWith<SFRLocate_HLX6C_2>,
                  ChartProject::HLX6C, 0.5, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Locate, SFRLocate_LX_MAP_8K_K74T16BX_8K, &locateWith<SFRLocate_LX_MAP_8K>,
                  ChartProject::K74T16BX, 0.25, 7680, 4320)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Locate, SFRLocate_HLX6C_HLX6C_8K, &locateWith<SFRLocate_HLX6C>,
                  ChartProject::HLX6C, 0.25, 7680, 4320)
    ->Unit(benchmark::kMillisecond);
