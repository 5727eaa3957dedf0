#include "station/BatchRecordFiles.h"

#include <cstring>
#include <fstream>

#include "station/CsvField.h"
#include "station/EdgeColumns.h"
#include "station/Failure.h"
#include "station/JsonDocument.h"

namespace talonvireo {
namespace station {

namespace {
const char* const kFrameColumns = "file,status,message,";

// The first line of a file; empty when it does not exist or is empty.
std::string firstLine(const std::string& path) {
    std::ifstream in(path);
    std::string line;
    std::getline(in, line);
    return line;
}
}  // namespace

BatchRecordFiles::BatchRecordFiles(const FrameReport& layout, const std::string& csvPath,
                                   const std::string& jsonlPath)
    : layout_(layout), csvHeader_(kFrameColumns + csvHeader(layout)) {
    if (!csvPath.empty()) {
        const std::string existing = firstLine(csvPath);
        if (!existing.empty() && existing != csvHeader_) {
            throw Failure(Cause::BadInput,
                          csvPath +
                              " already holds other columns (another member or other "
                              "options): name a new file");
        }
        csv_ = std::make_unique<OutputFile>(csvPath, true);
        if (existing.empty()) {
            std::fprintf(csv_->get(), "%s\n", csvHeader_.c_str());
            csv_->flush();
        }
    }
    if (!jsonlPath.empty()) {
        jsonl_ = std::make_unique<OutputFile>(jsonlPath, true);
    }
}

void BatchRecordFiles::write(const FrameOutcome& outcome) {
    const std::string status = causeName(outcome.cause);
    if (csv_) {
        std::FILE* out = csv_->get();
        const std::string frame = csvField(outcome.file.path) + "," + csvField(status) + "," +
                                  csvField(outcome.message) + ",";
        if (outcome.report) {
            for (const EdgeRow& row : outcome.report->rows) {
                std::fputs(frame.c_str(), out);
                printCsvRow(out, *outcome.report, row);
            }
        } else {
            // The frame's own columns, every edge column empty but its verdict (a frame that
            // could not be measured fails), then the warnings it gathered before it failed.
            std::string line = frame;
            bool first = true;
            for (const EdgeColumn* c : columnsOf(layout_)) {
                line +=
                    (first ? "" : ",") + std::string(std::strcmp(c->name, "pass") == 0 ? "0" : "");
                first = false;
            }
            line += "," + csvField(joinWarnings(outcome.warnings()));
            std::fprintf(out, "%s\n", line.c_str());
        }
        csv_->flush();
    }
    if (jsonl_) {
        Json doc =
            outcome.report ? frameJson(*outcome.report) : documentHead("frame", outcome.file.path);
        doc["status"] = status;
        doc["exit_status"] = static_cast<int>(outcome.cause);
        if (!outcome.message.empty()) {
            doc["message"] = outcome.message;
        }
        doc["duration_ms"] = outcome.milliseconds;
        doc["file_size_bytes"] = outcome.file.size;
        doc["modified_ns"] = outcome.file.modifiedNs;
        // Never null: a frame that could not be measured does not pass.
        doc["pass"] = outcome.passes();
        doc["warnings"] = outcome.warnings();
        const std::string line = doc.dump(-1, ' ', false, Json::error_handler_t::replace);
        std::fprintf(jsonl_->get(), "%s\n", line.c_str());
        jsonl_->flush();
    }
}

void BatchRecordFiles::close() {
    if (csv_) {
        csv_->close();
    }
    if (jsonl_) {
        jsonl_->close();
    }
}

}  // namespace station
}  // namespace talonvireo
