// Frames per second a tracker keeps up with on a still 4000 x 3000 chart (read noise of two
// 8-bit levels, so every frame is a new one): the 52-edge HLX6C member and the 68-edge
// K31R22BX one, the member's classic figures alone and with the precise method added, beside
// the whole-frame member call each frame would otherwise pay. Two frames of independent noise
// alternate, as a camera's would.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "ChartFrame.h"
#include "render/ChartRenderer.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;

std::vector<cv::Mat> twoFrames(render::ChartProject project, int bits) {
    const render::ChartDesign design = render::designChart(project);
    const cv::Mat coverage = render::chartCoverage(design.squares, {}, 0.8, 4000, 3000);
    std::vector<cv::Mat> frames;
    for (std::uint32_t seed : {1u, 2u}) {
        render::ChartExposure exposure;
        exposure.bayer = true;
        exposure.bits = bits;
        exposure.readNoise = 2.0 * (1 << (bits - 8));
        exposure.seed = seed;
        frames.push_back(render::exposeChart(coverage, exposure));
    }
    return frames;
}

void track(benchmark::State& state, const char* name, render::ChartProject project, bool precise) {
    const MemberInfo& member = *findMember(name);
    const std::vector<cv::Mat> frames = twoFrames(project, member.bits);
    MemberFrameOptions options;
    options.precise = precise;
    MemberTracker tracker(member, SFRParam{0.0f, 80, 100}, options);
    MemberFrameReport report;
    tracker.measure(frames[0].ptr<std::uint16_t>(), 4000, 3000, report);
    int k = 0, relocations = 0;
    for (auto _ : state) {
        const cv::Mat& f = frames[static_cast<std::size_t>(++k % 2)];
        if (tracker.measure(f.ptr<std::uint16_t>(), f.cols, f.rows, report) != 0 ||
            report.memberStatus != 0) {
            state.SkipWithError("the tracker lost the chart");
            break;
        }
        relocations += tracker.relocated() ? 1 : 0;
    }
    state.counters["frames/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["relocations"] = relocations;
}

void member(benchmark::State& state, const char* name, render::ChartProject project) {
    const MemberInfo& m = *findMember(name);
    const std::vector<cv::Mat> frames = twoFrames(project, m.bits);
    MemberFrameReport report;
    int k = 0;
    for (auto _ : state) {
        const cv::Mat& f = frames[static_cast<std::size_t>(++k % 2)];
        measureMemberFrame(m, f.ptr<std::uint16_t>(), f.cols, f.rows, SFRParam{0.0f, 80, 100}, {},
                           report);
    }
    state.counters["frames/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void BM_TrackHLX6C(benchmark::State& s) {
    track(s, "talonvireoSFR_raw10_HLX6C", render::ChartProject::HLX6C, false);
}
void BM_TrackHLX6CPrecise(benchmark::State& s) {
    track(s, "talonvireoSFR_raw10_HLX6C", render::ChartProject::HLX6C, true);
}
void BM_TrackK31R22BX(benchmark::State& s) {
    track(s, "talonvireoSFR/K31R22BX", render::ChartProject::K31R22BX, false);
}
void BM_MemberHLX6C(benchmark::State& s) {
    member(s, "talonvireoSFR_raw10_HLX6C", render::ChartProject::HLX6C);
}

BENCHMARK(BM_TrackHLX6C)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TrackHLX6CPrecise)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TrackK31R22BX)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_MemberHLX6C)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
