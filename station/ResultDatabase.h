// A batch's record in SQLite: one row per run, per frame and per edge.
//
// Schema version 3 (PRAGMA user_version = 3; 3 added the chart columns of a frame measured
// with --chart: name, centre_x, centre_y, angle_deg, length_px, bow_px, region_width,
// region_height):
//   runs(id, tool_version, library_version, member, options, config_key, limits_path,
//        (member: the member's name, or "chart auto" / "chart NAME")
//        limits_hash, started_at, finished_at, frames, measured, passed, interrupted)
//       options: the measuring options as JSON; config_key: member + options + limits hash,
//       what "already recorded" compares; times are UTC ISO 8601; finished_at stays NULL
//       for a run that was killed.
//   frames(id, run_id, path, size_bytes, modified_ns, status, cause, message, pass, failure,
//          warnings, edges, failed_edges, width, height, chart_fit_px, duration_ms,
//          recorded_at)
//       status: "measured" or the cause's exit status name ("chart not located", ...), cause
//       its exit status; pass: 1/0, never NULL (a frame not measured does not pass);
//       failure: why it did not pass ("mtf50 in zone edge", "chart not located"), NULL when
//       it passed; warnings: what the checks found, "; "-separated, empty when nothing.
//   edges(frame_id, then every edge column of EdgeColumns.h under its own name and type)
//       NULL where a figure does not exist or the run's options do not produce it; pass
//       NULL without limits.
// A frame and its edges go in one transaction, so a killed batch loses at most the frames
// in flight; the database runs in WAL mode and survives the kill consistent.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "station/DatabaseClaim.h"
#include "station/FrameOutcome.h"

struct sqlite3;

namespace talonvireo {
namespace station {

inline constexpr int kDatabaseSchemaVersion = 3;

struct RunRecord {
    std::string member;
    std::string options;     // JSON
    std::string limitsPath;  // empty without limits
    std::string limitsHash;  // of the limits file's bytes
    std::string configKey;
};

// A frame file's identity within one configuration.
using FrameKey = std::tuple<std::string, std::uint64_t, std::int64_t>;

// What an earlier run recorded of a frame, for the summary of a batch run again.
struct RecordedFrame {
    bool measured = false;
    std::string failure;  // FrameOutcome::failure
    std::int64_t frameId = 0;
};

class ResultDatabase {
public:
    // Claims the database for this writer (DatabaseClaim), then opens or creates it. Throws
    // Failure: another batch writes it or it cannot be opened (Cause::Failed), or a database
    // of another schema version or not this tool's (bad input).
    explicit ResultDatabase(const std::string& path);
    ~ResultDatabase();
    ResultDatabase(const ResultDatabase&) = delete;
    ResultDatabase& operator=(const ResultDatabase&) = delete;

    // The frames earlier runs of this configuration recorded.
    std::map<FrameKey, RecordedFrame> recordedFrames(const std::string& configKey) const;
    // A recorded frame's edges as report rows (slot, centre, side, field position, zone, SFR
    // at Nyquist/4 and /2, MTF50, pass), for a summary over frames measured earlier.
    std::vector<EdgeRow> recordedEdges(std::int64_t frameId) const;
    // Starts a run; returns its id.
    std::int64_t beginRun(const RunRecord& run);
    // Records one frame and its edges, in one transaction. Throws Failure (Cause::Failed).
    void recordFrame(std::int64_t runId, const FrameOutcome& outcome);
    void finishRun(std::int64_t runId, int frames, int measured, int passed, bool interrupted);

private:
    void execute(const char* sql) const;
    // The first column of the first row.
    std::int64_t single(const char* sql) const;
    // Held before the database is opened, for as long as it is: one writer at a time.
    DatabaseClaim claim_;
    sqlite3* db_ = nullptr;
    std::string path_;
};

// A short, stable hash of a file's bytes (FNV-1a 64, hex), for telling limits files apart.
std::string fileHash(const std::string& path);

}  // namespace station
}  // namespace talonvireo
