// A batch's text records: CSV (one row per edge, a row for each frame not measured) and JSON
// Lines (one frame document per line). Both are appended to, frame by frame and flushed, so
// an interrupted batch run again with the same files completes them.
#pragma once

#include <memory>
#include <string>

#include "station/EdgeReport.h"
#include "station/FrameOutcome.h"
#include "station/OutputFile.h"

namespace talonvireo {
namespace station {

class BatchRecordFiles {
public:
    // `layout` gives the columns (reportLayout). Empty paths write nothing. Throws Failure:
    // a file that cannot be written, or a CSV file that already holds other columns (bad
    // arguments).
    BatchRecordFiles(const FrameReport& layout, const std::string& csvPath,
                     const std::string& jsonlPath);
    void write(const FrameOutcome& outcome);
    void close();

private:
    FrameReport layout_;
    std::string csvHeader_;
    std::unique_ptr<OutputFile> csv_;
    std::unique_ptr<OutputFile> jsonl_;
};

}  // namespace station
}  // namespace talonvireo
