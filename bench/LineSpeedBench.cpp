// What a line sees: the fused roads to grey, each member's pair of locators on images
// prepared once, the regions in parallel, and the throughput of two threads that each
// measure their own stream of frames (frames per second across both).
#include <benchmark/benchmark.h>

#include <omp.h>

#include <thread>
#include <vector>

#include <opencv2/core.hpp>

#include "ChartFrame.h"
#include "api/LocateEntry.h"
#include "api/LocateRecipes.h"
#include "api/MemberPass.h"
#include "convert/GreyRoads.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;
using bench::rawChart;
using render::ChartProject;

void BM_FusedRoad(benchmark::State& state, bool malvar) {
    const cv::Mat raw = rawChart(ChartProject::HLX6C, 10, 4000, 3000);
    cv::Mat grey(raw.size(), CV_8UC1);
    for (auto _ : state) {
        const auto* words = raw.ptr<std::uint16_t>();
        if (malvar) {
            convert::malvarRoadToGrey(words, raw.cols, raw.rows, convert::WordDepth::k10, 2,
                                      grey.data);
        } else {
            convert::edgeDirectedRoadToGrey(words, raw.cols, raw.rows, convert::WordDepth::k10,
                                            convert::kPhaseRggb, grey.data);
        }
        benchmark::DoNotOptimize(grey.data);
    }
}
BENCHMARK_CAPTURE(BM_FusedRoad, malvar, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_FusedRoad, edge_directed, false)->Unit(benchmark::kMillisecond);

cv::Mat greyFrame(ChartProject project, int width, int height) {
    const cv::Mat raw = rawChart(project, 10, width, height);
    cv::Mat grey(raw.size(), CV_8UC1);
    convert::malvarRoadToGrey(raw.ptr<std::uint16_t>(), width, height, convert::WordDepth::k10, 2,
                              grey.data);
    return grey;
}

// Both locators of a member, as the member runs them: one downscale, then the pair.
template <class First, class Second, class Param, class Result>
void locatePair(benchmark::State& state, ChartProject project, int width, int height) {
    const cv::Mat grey = greyFrame(project, width, height);
    for (auto _ : state) {
        RegularSFR::MarkSearchMemo marks;
        const api::LocateImages images = api::LocateImages::at(grey, First::kScale, &marks);
        Result first{};
        Result second{};
        First::template onImages<Param, Result>(images, Param{100}, first);
        Second::template onImages<Param, Result>(images, Param{100}, second);
        benchmark::DoNotOptimize(second.centres[0].x);
    }
}

template <class First, class Second, class Param, class Result>
bool registerLocatePair(const char* name, ChartProject project, int width, int height) {
    benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
        locatePair<First, Second, Param, Result>(state, project, width, height);
    })->Unit(benchmark::kMillisecond);
    return true;
}

using K31P = K31R22BX::Param;
using K31R = K31R22BX::Result;
using K74P = K74T16BX::Param;
using K74R = K74T16BX::Result;
using K83P = K83P09BQ::Param;
using K83R = K83P09BQ::Result;
const bool kLocatePairs[] = {
    registerLocatePair<api::K31R22BXFirst, api::K31R22BXSecond, K31P, K31R>(
        "BM_LocatePair/K31R22BX", ChartProject::K31R22BX, 4000, 3000),
    registerLocatePair<api::K74T16BXFirst, api::K74T16BXSecond, K74P, K74R>(
        "BM_LocatePair/K74T16BX", ChartProject::K74T16BX, 4000, 3000),
    registerLocatePair<api::K83P09BQFirst, api::K83P09BQSecond, K83P, K83R>(
        "BM_LocatePair/K83P09BQ", ChartProject::K83P09BQ, 4000, 3000),
    registerLocatePair<api::Hlx6cFirst, api::Hlx6cSecond, K74P, K74R>(
        "BM_LocatePair/HLX6C", ChartProject::HLX6C, 4000, 3000),
    registerLocatePair<api::Map8kFirst, api::Map8kSecond, K74P, K74R>(
        "BM_LocatePair/Map8K", ChartProject::K74T16BX, 7680, 4320),
    registerLocatePair<api::Hlx6c8kFirst, api::Hlx6c8kSecond, K74P, K74R>(
        "BM_LocatePair/HLX6C_8K", ChartProject::HLX6C, 7680, 4320),
};

// Every region of a member's frame, 80 px square, measured in parallel as the members do:
// HLX6C's 52 and K31R22BX's 68.
template <class First, class Second, class Param, class Result>
void regionsInParallel(benchmark::State& state, ChartProject project) {
    constexpr int kPerSet = sizeof(Result::centres) / sizeof(Result::centres[0]);
    constexpr int kRegions = 2 * kPerSet;
    const cv::Mat grey = greyFrame(project, 4000, 3000);
    std::vector<EdgeCentre> centres(kRegions);
    {
        RegularSFR::MarkSearchMemo marks;
        const api::LocateImages images = api::LocateImages::at(grey, First::kScale, &marks);
        Result r[2] = {};
        First::template onImages<Param, Result>(images, Param{100}, r[0]);
        Second::template onImages<Param, Result>(images, Param{100}, r[1]);
        for (int i = 0; i < kRegions; ++i) {
            centres[i] = {r[i / kPerSet].centres[i % kPerSet].x,
                          r[i / kPerSet].centres[i % kPerSet].y};
        }
    }
    // Any member row of the chart's slot count: every region roiSize (80) square.
    MemberInfo member =
        *findMember(kRegions == 68 ? "talonvireoSFR/K31R22BX" : "talonvireoSFR_raw16");
    member.regionRule = RegionRule::kRoiSize;
    for (auto _ : state) {
        const std::vector<api::SlotPass> slots =
            api::measureSlots(grey, centres, member, 80, 4.0f, nullptr);
        benchmark::DoNotOptimize(slots[0].entry.sfrHalfNyquist);
    }
}

template <class First, class Second, class Param, class Result>
bool registerRegions(const char* name, ChartProject project) {
    benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
        regionsInParallel<First, Second, Param, Result>(state, project);
    })->Unit(benchmark::kMillisecond);
    return true;
}

const bool kRegionsInParallel[] = {
    registerRegions<api::Hlx6cFirst, api::Hlx6cSecond, K74P, K74R>("BM_RegionsInParallel/HLX6C",
                                                                   ChartProject::HLX6C),
    registerRegions<api::K31R22BXFirst, api::K31R22BXSecond, K31P, K31R>(
        "BM_RegionsInParallel/K31R22BX", ChartProject::K31R22BX),
};

// Two caller threads, each measuring its own copy of the frame over and over. libraryThreads
// is the OpenMP team each call may use: 0 leaves the default (one per core), 1 keeps every
// call on its caller's thread.
void BM_TwoStreams(benchmark::State& state) {
    const int libraryThreads = static_cast<int>(state.range(0));
    const cv::Mat raw = rawChart(ChartProject::HLX6C, 10, 4000, 3000);
    constexpr int kFramesPerThread = 8;
    for (auto _ : state) {
        std::vector<std::thread> callers;
        for (int t = 0; t < 2; ++t) {
            callers.emplace_back([&] {
                if (libraryThreads > 0) {
                    omp_set_num_threads(libraryThreads);
                }
                cv::Mat frame = raw.clone();
                for (int f = 0; f < kFramesPerThread; ++f) {
                    SFRParam param{4.0f, 80, 100};
                    SFRResult_HLX5 result{};
                    talonvireoSFR_raw10_HLX6C(frame.data, frame.cols, frame.rows, param, result);
                    benchmark::DoNotOptimize(result.edges[0].sfrHalfNyquist);
                }
            });
        }
        for (std::thread& caller : callers) {
            caller.join();
        }
    }
    state.counters["frames_per_s"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * 2 * kFramesPerThread,
                           benchmark::Counter::kIsRate);
}
BENCHMARK(BM_TwoStreams)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

// One caller, frame after frame: the figure a single stream gets.
void BM_OneStream(benchmark::State& state) {
    cv::Mat raw = rawChart(ChartProject::HLX6C, 10, 4000, 3000);
    for (auto _ : state) {
        SFRParam param{4.0f, 80, 100};
        SFRResult_HLX5 result{};
        talonvireoSFR_raw10_HLX6C(raw.data, raw.cols, raw.rows, param, result);
        benchmark::DoNotOptimize(result.edges[0].sfrHalfNyquist);
    }
    state.counters["frames_per_s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_OneStream)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
