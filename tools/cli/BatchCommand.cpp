#include "BatchCommand.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "BatchProgress.h"
#include "ExitStatus.h"
#include "FrameArguments.h"
#include "StopSignal.h"
#include "station/BatchRecordFiles.h"
#include "station/BatchRunner.h"
#include "station/BatchSummaryPlot.h"
#include "station/BatchTally.h"
#include "station/FrameList.h"
#include "station/JsonDocument.h"
#include "station/Limits.h"
#include "station/OutputFile.h"
#include "station/ResultDatabase.h"

namespace talonvireo {
namespace cli {

// The commands are thin: what they run is the station's.
using namespace station;

namespace {
constexpr int kMaxJobs = 256;

void declare(OptionValues& o) {
    o.operands("FRAMES",
               "frame files, globs ('trays/*.raw', quoted) or folders (their .raw .bin .dat "
               ".png .pgm .tif files)");
    declareFrameArguments(o);
    o.option("--jobs", "N", "frames measured at once (default: one per core)");
    o.option("--db", "FILE.sqlite",
             "record every run, frame and edge in an SQLite database; frames it already holds "
             "for the same member and options are skipped");
    o.option("--csv", "FILE.csv", "append one row per edge (and per frame not measured)");
    o.option("--jsonl", "FILE.jsonl", "append one JSON document per frame, one per line");
    o.option("--summary-plot", "OUT.png",
             "SFR at Nyquist/4 per field zone across every frame, tangential and sagittal apart");
    o.flag("--quiet", "no summary on stdout");
    o.command().footer(
        "A progress line is drawn on stderr when it is a terminal. Ctrl-C (or SIGTERM) lets the\n"
        "frames in flight finish and be recorded, then stops; run the same command again to\n"
        "finish the batch.\n"
        "exit status: 0 every frame measured (and passed its limits), 1 a frame failed its\n"
        "limits or could not be measured (the summary says why), 2 bad arguments, 8 a record\n"
        "could not be written, 130 interrupted");
}

// What the run measures with, as the record keeps it; with the limits' hash it is the key a
// later run compares to skip frames.
Json optionsJson(const Measurand& measurand, const FrameOptions& options) {
    Json j;
    j["member"] = measurand.name();
    j["roi_size"] = options.param.roiSize;
    j["mark_search_size"] = options.param.markSearchSize;
    j["freq_divisor"] = options.param.freqDivisor;
    j["method"] = measurand.chart
                      ? (options.chartMethod == SfrMethod::kPrecise ? "precise" : "classic")
                  : options.precise ? "precise"
                                    : "classic";
    if (measurand.chart) {
        j["bayer"] = measurand.samples.bayer;
        j["bits"] = measurand.samples.bits;
    }
    j["per_channel_raw"] = options.planes;
    j["pixel_pitch_um"] = figure(options.pixelPitchUm);
    j["chart_fit_limit_px"] = options.chartFitLimit;
    j["width"] = options.layout.width;
    j["height"] = options.layout.height;
    j["packing"] = static_cast<int>(options.layout.packing);
    j["stride"] = options.layout.stride;
    j["offset"] = options.layout.offset;
    return j;
}

int run(const OptionValues& o) {
    const std::vector<Member> members = allMembers();
    const Measurand measurand =
        o.has("--chart") && !o.has("--member")
            ? chartMeasurand(chooseChart(o.text("--chart")), chartSamples(o), o.has("--bayer"))
            : memberMeasurand(memberArgument(o, members));
    const FrameOptions options = frameArguments(o);
    if (options.limits) {
        // Before any frame: otherwise every frame of the batch would fail on them alone.
        checkLimitSlots(*options.limits, measurand.name(), measurand.slotCount());
        checkLimitUnits(*options.limits, options.pixelPitchUm);
    }
    const int cores = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    const int jobs = o.integer("--jobs", cores, 1, kMaxJobs);
    for (const char* output : {"--db", "--csv", "--jsonl"}) {
        if (o.has(output)) {
            checkOutputPath(output, o.text(output));
        }
    }
    if (o.has("--summary-plot")) {
        checkImageOutputPath("--summary-plot", o.text("--summary-plot"));
    }
    const std::vector<FrameFileEntry> listed = listFrameFiles(o.list("FRAMES"));

    RunRecord runRecord;
    runRecord.member = measurand.name();
    runRecord.options = optionsJson(measurand, options).dump();
    if (options.limits) {
        runRecord.limitsPath = std::filesystem::absolute(options.limits->path).string();
        runRecord.limitsHash = fileHash(options.limits->path);
    }
    runRecord.configKey = runRecord.options + "|" + runRecord.limitsHash;

    std::optional<ResultDatabase> db;
    BatchTally tally;
    std::vector<FrameFileEntry> frames;
    std::vector<FrameReport> reports;  // for the summary plot: the whole tray
    const bool plot = o.has("--summary-plot");
    if (o.has("--db")) {
        db.emplace(o.text("--db"));
        const std::map<FrameKey, RecordedFrame> recorded = db->recordedFrames(runRecord.configKey);
        for (const FrameFileEntry& f : listed) {
            const auto it = recorded.find(FrameKey{f.path, f.size, f.modifiedNs});
            if (it == recorded.end()) {
                frames.push_back(f);
                continue;
            }
            tally.addRecorded(it->second.measured, it->second.failure);
            if (plot && it->second.measured) {
                FrameReport earlier;
                earlier.input = f.path;
                earlier.rows = db->recordedEdges(it->second.frameId);
                reports.push_back(std::move(earlier));
            }
        }
    } else {
        frames = listed;
    }
    tally.listed = static_cast<int>(listed.size());
    tally.jobs = jobs;
    tally.graded = options.limits.has_value();
    BatchRecordFiles files(reportLayout(measurand, options), o.text("--csv"), o.text("--jsonl"));
    const std::int64_t runId = db ? db->beginRun(runRecord) : 0;

    const auto start = std::chrono::steady_clock::now();
    {
        const StopSignal stop;
        BatchProgress progress(static_cast<int>(frames.size()), stderr);
        runBatch(
            measurand, options, frames, jobs, [&stop] { return stop.requested(); },
            [&](FrameOutcome&& outcome) {
                if (db) {
                    db->recordFrame(runId, outcome);
                }
                files.write(outcome);
                tally.add(outcome);
                progress.update(tally.done, tally.failed());
                if (plot && outcome.report) {
                    reports.push_back(std::move(*outcome.report));
                }
            });
        progress.finish();
        tally.interrupted = stop.requested();
    }
    tally.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (db) {
        db->finishRun(runId, tally.done, tally.measured, tally.passed, tally.interrupted);
    }
    files.close();
    if (!o.has("--quiet")) {
        tally.print(stdout);
    }
    if (plot) {
        writeImage(o.text("--summary-plot"),
                   plotBatchSummary(reports, options.limits ? &*options.limits : nullptr,
                                    measurand.name(), tally));
    }
    if (tally.interrupted) {
        return kExitInterrupted;
    }
    return tally.passed == tally.counted() ? kExitOk : kExitBelowLimit;
}
}  // namespace

Command batchCommand() {
    return {"batch", "grade many frame files with one member, recorded and summarised", declare,
            run};
}

}  // namespace cli
}  // namespace talonvireo
