// A tray graded by the batch command's pieces: 50 rendered 4000 x 3000 HLX6C frames (5
// renderings of different blur and position, each linked under 10 names) read from files,
// measured against limits and recorded. Frames per second with 1 and 2 jobs, and what the
// SQLite record costs against CSV.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ChartFrame.h"
#include "station/BatchRecordFiles.h"
#include "station/BatchRunner.h"
#include "station/FrameFile.h"
#include "station/FrameGrading.h"
#include "station/FrameList.h"
#include "station/Limits.h"
#include "station/Members.h"
#include "station/ResultDatabase.h"

namespace {
using namespace talonvireo;
namespace fs = std::filesystem;

constexpr int kRenderings = 5;
constexpr int kLinks = 10;

// The tray on disk, made once per process and removed at its end.
struct Tray {
    fs::path folder = fs::temp_directory_path() / ("talonvireo-tray-" + std::to_string(getpid()));
    std::vector<station::FrameFileEntry> frames;
    Tray();
    ~Tray() { fs::remove_all(folder); }
};

Tray::Tray() {
    fs::create_directories(folder);
    for (int k = 0; k < kRenderings; ++k) {
        render::ChartExposure exposure;
        exposure.bayer = true;
        exposure.bits = 10;
        exposure.readNoise = 8.0;
        exposure.seed = static_cast<std::uint32_t>(k + 1);
        render::ChartTransform shift;
        shift.shiftX = 7.0 * k;
        shift.shiftY = -5.0 * k;
        const render::ChartDesign design = render::designChart(render::ChartProject::HLX6C);
        const cv::Mat frame = render::exposeChart(
            render::chartCoverage(design.squares, shift, 0.7 + 0.15 * k, 4000, 3000), exposure);
        const fs::path first = folder / ("frame" + std::to_string(k) + "-0.raw");
        station::writeRawFrame(first.string(), frame,
                               {4000, 3000, station::Packing::Words16, 0, 0});
        for (int l = 1; l < kLinks; ++l) {
            fs::create_hard_link(
                first, folder / ("frame" + std::to_string(k) + "-" + std::to_string(l) + ".raw"));
        }
    }
    frames = station::listFrameFiles({folder.string()});
}

const std::vector<station::FrameFileEntry>& tray() {
    static const Tray made;
    return made.frames;
}

enum Record { kNone, kCsv, kDatabase };

void BM_Batch(benchmark::State& state) {
    const int jobs = static_cast<int>(state.range(0));
    const Record record = static_cast<Record>(state.range(1));
    const std::vector<station::Member> members = station::allMembers();
    const station::Member& member = *station::findMember(members, "talonvireoSFR_raw10_HLX6C");
    station::FrameOptions options;
    options.layout = {4000, 3000, station::Packing::Words16, 0, 0};
    station::Limits limits;
    limits.path = "bench";
    limits.zones = {{"all", 100, {}, {}, {}}};
    limits.zones[0].figures.sfrQuarterNyquist = 0.3;
    options.limits = limits;
    const auto& frames = tray();
    const fs::path scratch =
        fs::temp_directory_path() / ("talonvireo-bench-" + std::to_string(getpid()));
    fs::create_directories(scratch);
    int failed = 0;
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove(scratch / "r.sqlite");
        fs::remove(scratch / "r.sqlite-wal");
        fs::remove(scratch / "r.sqlite-shm");
        fs::remove(scratch / "r.csv");
        state.ResumeTiming();
        std::optional<station::ResultDatabase> db;
        std::int64_t run = 0;
        if (record == kDatabase) {
            db.emplace((scratch / "r.sqlite").string());
            run = db->beginRun({member.name, "{}", "", "", "bench"});
        }
        station::BatchRecordFiles files(station::reportLayout(member, options),
                                        record == kCsv ? (scratch / "r.csv").string() : "", "");
        station::runBatch(station::memberMeasurand(member), options, frames, jobs, {},
                          [&](station::FrameOutcome&& outcome) {
                              failed += outcome.passes() ? 0 : 1;
                              if (db) {
                                  db->recordFrame(run, outcome);
                              }
                              files.write(outcome);
                          });
        files.close();
    }
    if (failed != 0) {
        state.SkipWithError("a frame of the tray failed");
    }
    state.counters["frames_per_s"] = benchmark::Counter(
        static_cast<double>(frames.size()) * static_cast<double>(state.iterations()),
        benchmark::Counter::kIsRate);
    fs::remove_all(scratch);
}
BENCHMARK(BM_Batch)
    ->ArgNames({"jobs", "record"})
    ->Args({1, kNone})
    ->Args({2, kNone})
    ->Args({2, kCsv})
    ->Args({2, kDatabase})
    ->Unit(benchmark::kSecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(3);

}  // namespace
