#include "station/ResultDatabase.h"

#include <sqlite3.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <limits>

#include "station/EdgeColumns.h"
#include "station/Failure.h"
#include "station/PixelPitch.h"
#include "station/ToolVersion.h"

namespace talonvireo {
namespace station {

namespace {
const char* const kSchema = R"sql(
CREATE TABLE IF NOT EXISTS runs (
    id INTEGER PRIMARY KEY,
    tool_version TEXT NOT NULL,
    library_version TEXT NOT NULL,
    member TEXT NOT NULL,
    options TEXT NOT NULL,
    config_key TEXT NOT NULL,
    limits_path TEXT,
    limits_hash TEXT,
    started_at TEXT NOT NULL,
    finished_at TEXT,
    frames INTEGER,
    measured INTEGER,
    passed INTEGER,
    interrupted INTEGER
);
CREATE TABLE IF NOT EXISTS frames (
    id INTEGER PRIMARY KEY,
    run_id INTEGER NOT NULL REFERENCES runs(id),
    path TEXT NOT NULL,
    size_bytes INTEGER NOT NULL,
    modified_ns INTEGER NOT NULL,
    status TEXT NOT NULL,
    cause INTEGER NOT NULL,
    message TEXT,
    pass INTEGER NOT NULL,
    failure TEXT,
    warnings TEXT NOT NULL,
    edges INTEGER NOT NULL,
    failed_edges INTEGER NOT NULL,
    width INTEGER,
    height INTEGER,
    chart_fit_px REAL,
    duration_ms REAL NOT NULL,
    recorded_at TEXT NOT NULL
);
CREATE INDEX IF NOT EXISTS frames_by_file ON frames(path, size_bytes, modified_ns);
)sql";

// The edges table: the frame's id, then every edge column, as the column table lists them.
std::string edgesSchema() {
    std::string sql =
        "CREATE TABLE IF NOT EXISTS edges (\n    frame_id INTEGER NOT NULL REFERENCES frames(id)";
    for (const EdgeColumn& c : edgeColumns()) {
        sql += std::string(",\n    ") + c.name + " " + sqlType(c.type);
        if (std::strcmp(c.name, "edge") == 0) {
            sql += " NOT NULL";
        }
    }
    return sql + ",\n    PRIMARY KEY (frame_id, edge)\n);\n";
}

std::string edgesInsert() {
    std::string sql = "INSERT INTO edges VALUES (?";
    for (std::size_t i = 0; i < edgeColumns().size(); ++i) {
        sql += ", ?";
    }
    return sql + ")";
}

std::string utcNow() {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm utc{};
    gmtime_r(&now, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return text;
}

// One prepared statement, finalised on every way out.
class Statement {
public:
    Statement(sqlite3* db, const char* sql) : db_(db) {
        if (sqlite3_prepare_v2(db, sql, -1, &statement_, nullptr) != SQLITE_OK) {
            throw Failure(Cause::Failed, std::string("database: ") + sqlite3_errmsg(db));
        }
    }
    ~Statement() { sqlite3_finalize(statement_); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    // Binds the next parameter; NaN and empty optionals become NULL.
    Statement& text(const std::string& v) {
        sqlite3_bind_text(statement_, ++bound_, v.c_str(), static_cast<int>(v.size()),
                          SQLITE_TRANSIENT);
        return *this;
    }
    Statement& textOrNull(const std::string& v) { return v.empty() ? null() : text(v); }
    Statement& integer(std::int64_t v) {
        sqlite3_bind_int64(statement_, ++bound_, v);
        return *this;
    }
    Statement& real(double v) {
        if (!std::isfinite(v)) {
            return null();
        }
        sqlite3_bind_double(statement_, ++bound_, v);
        return *this;
    }
    Statement& cell(const Cell& v) {
        if (const auto* i = std::get_if<long long>(&v)) {
            return integer(*i);
        }
        if (const auto* d = std::get_if<double>(&v)) {
            return real(*d);
        }
        if (const auto* t = std::get_if<std::string>(&v)) {
            return text(*t);
        }
        if (const auto* b = std::get_if<bool>(&v)) {
            return integer(*b ? 1 : 0);
        }
        return null();
    }
    Statement& null() {
        sqlite3_bind_null(statement_, ++bound_);
        return *this;
    }
    // Steps once; true while rows come back.
    bool step() {
        const int rc = sqlite3_step(statement_);
        if (rc == SQLITE_ROW) {
            return true;
        }
        if (rc != SQLITE_DONE) {
            throw Failure(Cause::Failed, std::string("database: ") + sqlite3_errmsg(db_));
        }
        return false;
    }
    void reset() {
        sqlite3_reset(statement_);
        sqlite3_clear_bindings(statement_);
        bound_ = 0;
    }
    std::string columnText(int k) const {
        const unsigned char* v = sqlite3_column_text(statement_, k);
        return v == nullptr ? "" : reinterpret_cast<const char*>(v);
    }
    std::int64_t columnInteger(int k) const { return sqlite3_column_int64(statement_, k); }
    // NaN for NULL.
    double columnNumber(int k) const {
        return sqlite3_column_type(statement_, k) == SQLITE_NULL
                   ? std::numeric_limits<double>::quiet_NaN()
                   : sqlite3_column_double(statement_, k);
    }
    bool columnIsNull(int k) const { return sqlite3_column_type(statement_, k) == SQLITE_NULL; }

private:
    sqlite3* db_;
    sqlite3_stmt* statement_ = nullptr;
    int bound_ = 0;
};
}  // namespace

ResultDatabase::ResultDatabase(const std::string& path) : claim_(path), path_(path) {
    if (sqlite3_open_v2(path.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) !=
        SQLITE_OK) {
        const std::string why = db_ != nullptr ? sqlite3_errmsg(db_) : "out of memory";
        sqlite3_close(db_);
        throw Failure(Cause::Failed, "cannot open the database " + path + ": " + why);
    }
    try {
        sqlite3_busy_timeout(db_, 5000);
        const std::int64_t found = single("PRAGMA user_version");
        if (found == 0 && single("SELECT count(*) FROM sqlite_master") > 0) {
            throw Failure(Cause::BadInput,
                          path + " is an SQLite database of something else (no schema version)");
        }
        if (found != 0 && found != kDatabaseSchemaVersion) {
            throw Failure(Cause::BadInput, path + " has schema version " + std::to_string(found) +
                                               "; this tool writes " +
                                               std::to_string(kDatabaseSchemaVersion));
        }
        // WAL: a killed writer leaves the last committed frame readable and the file
        // consistent; NORMAL sync keeps a commit per frame cheap.
        execute("PRAGMA journal_mode=WAL");
        execute("PRAGMA synchronous=NORMAL");
        execute("PRAGMA foreign_keys=ON");
        execute("BEGIN");
        execute(kSchema);
        execute(edgesSchema().c_str());
        execute(("PRAGMA user_version=" + std::to_string(kDatabaseSchemaVersion)).c_str());
        execute("COMMIT");
    } catch (...) {
        sqlite3_close(db_);
        throw;
    }
}

ResultDatabase::~ResultDatabase() {
    sqlite3_close(db_);
}

std::int64_t ResultDatabase::single(const char* sql) const {
    Statement query(db_, sql);
    query.step();
    return query.columnInteger(0);
}

void ResultDatabase::execute(const char* sql) const {
    char* error = nullptr;
    if (sqlite3_exec(db_, sql, nullptr, nullptr, &error) != SQLITE_OK) {
        const std::string why = error != nullptr ? error : sqlite3_errmsg(db_);
        sqlite3_free(error);
        throw Failure(Cause::Failed, "database " + path_ + ": " + why);
    }
}

std::map<FrameKey, RecordedFrame> ResultDatabase::recordedFrames(
    const std::string& configKey) const {
    Statement query(db_,
                    "SELECT f.path, f.size_bytes, f.modified_ns, f.cause = 0, f.failure, "
                    "f.id "
                    "FROM frames f JOIN runs r ON f.run_id = r.id WHERE r.config_key = ? "
                    "ORDER BY f.id");
    query.text(configKey);
    std::map<FrameKey, RecordedFrame> frames;
    while (query.step()) {
        // The latest record of a frame wins.
        frames[FrameKey{query.columnText(0), static_cast<std::uint64_t>(query.columnInteger(1)),
                        query.columnInteger(2)}] =
            RecordedFrame{query.columnInteger(3) != 0, query.columnText(4), query.columnInteger(5)};
    }
    return frames;
}

std::vector<EdgeRow> ResultDatabase::recordedEdges(std::int64_t frameId) const {
    Statement query(db_,
                    "SELECT edge, x, y, side, height_percent, azimuth_deg, orientation, zone, "
                    "sfr_quarter_nyquist, sfr_half_nyquist, mtf50, pass, failed_limit FROM edges "
                    "WHERE frame_id = ? ORDER BY edge");
    query.integer(frameId);
    std::vector<EdgeRow> rows;
    while (query.step()) {
        EdgeRow row;
        row.index = static_cast<int>(query.columnInteger(0));
        row.measured.x = static_cast<int>(query.columnInteger(1));
        row.measured.y = static_cast<int>(query.columnInteger(2));
        row.side = static_cast<int>(query.columnInteger(3));
        row.field.heightPercent = query.columnNumber(4);
        row.field.azimuthDeg = query.columnNumber(5);
        row.field.orientation = query.columnText(6);
        row.zone = query.columnText(7);
        row.measured.sfrQuarterNyquist = static_cast<float>(query.columnNumber(8));
        row.measured.sfrHalfNyquist = static_cast<float>(query.columnNumber(9));
        row.mtf50 = query.columnNumber(10);
        row.pass = query.columnIsNull(11) || query.columnInteger(11) != 0;
        row.failedLimit = query.columnText(12);
        rows.push_back(row);
    }
    return rows;
}

std::int64_t ResultDatabase::beginRun(const RunRecord& run) {
    Statement insert(db_,
                     "INSERT INTO runs (tool_version, library_version, member, options, "
                     "config_key, limits_path, limits_hash, started_at) VALUES "
                     "(?, ?, ?, ?, ?, ?, ?, ?)");
    // The tool is built with the library it ships with: one version for both.
    insert.text(kToolVersion)
        .text(kToolVersion)
        .text(run.member)
        .text(run.options)
        .text(run.configKey)
        .textOrNull(run.limitsPath)
        .textOrNull(run.limitsHash)
        .text(utcNow());
    insert.step();
    return sqlite3_last_insert_rowid(db_);
}

void ResultDatabase::recordFrame(std::int64_t runId, const FrameOutcome& outcome) {
    execute("BEGIN IMMEDIATE");
    try {
        Statement frame(db_,
                        "INSERT INTO frames (run_id, path, size_bytes, modified_ns, status, "
                        "cause, message, pass, failure, warnings, edges, failed_edges, width, "
                        "height, chart_fit_px, duration_ms, recorded_at) VALUES "
                        "(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
        const FrameReport* report = outcome.report ? &*outcome.report : nullptr;
        frame.integer(runId)
            .text(outcome.file.path)
            .integer(static_cast<std::int64_t>(outcome.file.size))
            .integer(outcome.file.modifiedNs)
            .text(causeName(outcome.cause))
            .integer(static_cast<int>(outcome.cause))
            .textOrNull(outcome.message);
        // Never NULL: a frame that could not be measured does not pass.
        frame.integer(outcome.passes() ? 1 : 0)
            .textOrNull(outcome.failure())
            .text(joinWarnings(outcome.warnings()));
        if (report != nullptr) {
            frame.integer(static_cast<std::int64_t>(report->rows.size()))
                .integer(report->failures())
                .integer(report->width)
                .integer(report->height)
                .real(report->fitResidual);
        } else {
            frame.integer(0).integer(0).null().null().null();
        }
        frame.real(outcome.milliseconds).text(utcNow());
        frame.step();
        const std::int64_t frameId = sqlite3_last_insert_rowid(db_);
        if (report != nullptr) {
            Statement edge(db_, edgesInsert().c_str());
            for (const EdgeRow& row : report->rows) {
                edge.reset();
                edge.integer(frameId);
                // Every column exists in the table; one the report does not carry is NULL.
                for (const EdgeColumn& c : edgeColumns()) {
                    edge.cell(c.present(*report) ? c.value(*report, row) : Cell());
                }
                edge.step();
            }
        }
        execute("COMMIT");
    } catch (...) {
        sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
        throw;
    }
}

void ResultDatabase::finishRun(std::int64_t runId, int frames, int measured, int passed,
                               bool interrupted) {
    Statement update(db_,
                     "UPDATE runs SET finished_at = ?, frames = ?, measured = ?, passed = ?, "
                     "interrupted = ? WHERE id = ?");
    update.text(utcNow())
        .integer(frames)
        .integer(measured)
        .integer(passed)
        .integer(interrupted ? 1 : 0)
        .integer(runId);
    update.step();
}

std::string fileHash(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::uint64_t hash = 0xcbf29ce484222325ull;
    for (std::istreambuf_iterator<char> it(in), end; it != end; ++it) {
        hash = (hash ^ static_cast<unsigned char>(*it)) * 0x100000001b3ull;
    }
    char text[32];
    std::snprintf(text, sizeof text, "fnv1a64:%016llx", static_cast<unsigned long long>(hash));
    return text;
}

}  // namespace station
}  // namespace talonvireo
