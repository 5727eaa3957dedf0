// What the station's frame costs beside the member it runs: one rendered 4000 x 3000 HLX6C
// frame read from a file, (a) by the member itself, (b) graded plainly, (c) graded against
// limits on MTF50 (the classic MTF50 comes from the member's own pass), and on a frame the
// member fails (the chart's right edge cut off), (d) the member's failing call and (e) the
// partial report of every edge. BM_FrameReport is the library's report alone, in memory, on
// both frames: beside BM_MemberCall it is the cost of keeping everything the pass learns.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <filesystem>
#include <string>

#include "ChartFrame.h"
#include "station/FrameFile.h"
#include "station/FrameGrading.h"
#include "station/Limits.h"
#include "station/Members.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;
namespace fs = std::filesystem;

// The two frames on disk, made once per process and removed at its end.
struct Frames {
    fs::path folder =
        fs::temp_directory_path() / ("talonvireo-report-bench-" + std::to_string(getpid()));
    cv::Mat whole;
    cv::Mat cut;
    std::string wholePath;
    std::string cutPath;
    Frames() {
        fs::create_directories(folder);
        render::ChartExposure exposure;
        exposure.bayer = true;
        exposure.bits = 10;
        exposure.readNoise = 2.0;
        const render::ChartDesign design = render::designChart(render::ChartProject::HLX6C);
        whole = render::exposeChart(render::chartCoverage(design.squares, {}, 0.9, 4000, 3000),
                                    exposure);
        cut = whole.colRange(0, 3490).clone();
        wholePath = (folder / "whole.raw").string();
        cutPath = (folder / "cut.raw").string();
        station::writeRawFrame(wholePath, whole, {4000, 3000, station::Packing::Words16, 0, 0});
        station::writeRawFrame(cutPath, cut, {3490, 3000, station::Packing::Words16, 0, 0});
    }
    ~Frames() { fs::remove_all(folder); }
};

const Frames& frames() {
    static const Frames made;
    return made;
}

const station::Member& hlx6c() {
    static const std::vector<station::Member> members = station::allMembers();
    return *station::findMember(members, "talonvireoSFR_raw10_HLX6C");
}

station::FrameOptions options(int width) {
    station::FrameOptions o;
    o.layout = {width, 3000, station::Packing::Words16, 0, 0};
    return o;
}

void BM_MemberCall(benchmark::State& state) {
    const cv::Mat& raw = state.range(0) == 0 ? frames().whole : frames().cut;
    const SFRParam param{0.0f, 80, 100};
    SFRResult_HLX5 record{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            talonvireoSFR_raw10_HLX6C(raw.ptr<std::uint16_t>(), raw.cols, raw.rows, param, record));
    }
}
BENCHMARK(BM_MemberCall)
    ->Arg(0)
    ->Arg(1)
    ->ArgNames({"cut"})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The library's frame report of the same frame: the member's pass, kept whole.
void BM_FrameReport(benchmark::State& state) {
    const cv::Mat& raw = state.range(0) == 0 ? frames().whole : frames().cut;
    const SFRParam param{0.0f, 80, 100};
    for (auto _ : state) {
        MemberFrameReport report;
        benchmark::DoNotOptimize(measureMemberFrame(*hlx6c().info, raw.ptr<std::uint16_t>(),
                                                    raw.cols, raw.rows, param, {}, report));
    }
}
BENCHMARK(BM_FrameReport)
    ->Arg(0)
    ->Arg(1)
    ->ArgNames({"cut"})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void BM_MeasurePlain(benchmark::State& state) {
    const station::FrameOptions o = options(4000);
    for (auto _ : state) {
        benchmark::DoNotOptimize(station::gradeFrameFile(hlx6c(), frames().wholePath, o));
    }
}
BENCHMARK(BM_MeasurePlain)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_MeasureWithMtf50Limits(benchmark::State& state) {
    station::FrameOptions o = options(4000);
    station::Limits limits;
    limits.path = "bench";
    limits.zones = {{"all", 100, {}, {}, {}}};
    limits.zones[0].figures.mtf50 = 0.1;
    o.limits = limits;
    for (auto _ : state) {
        benchmark::DoNotOptimize(station::gradeFrameFile(hlx6c(), frames().wholePath, o));
    }
}
BENCHMARK(BM_MeasureWithMtf50Limits)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_MeasurePartialOnAFailingFrame(benchmark::State& state) {
    station::FrameOptions o = options(3490);
    o.partial = true;
    for (auto _ : state) {
        benchmark::DoNotOptimize(station::gradeFrameFile(hlx6c(), frames().cutPath, o));
    }
}
BENCHMARK(BM_MeasurePartialOnAFailingFrame)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
