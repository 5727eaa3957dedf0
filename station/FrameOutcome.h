// What became of one frame of a batch: its report, or the cause that stopped it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "station/EdgeReport.h"
#include "station/Failure.h"
#include "station/FrameList.h"

namespace talonvireo {
namespace station {

struct FrameOutcome {
    FrameFileEntry file;
    Cause cause = Cause::None;          // Cause::None: measured; else why it was not
    std::string message;                // the one-line reason of a frame that was not measured
    std::optional<FrameReport> report;  // every measured frame's
    double milliseconds = 0.0;          // reading, measuring and grading
    // What was found worth saying about a frame that was not measured (a measured frame's
    // own are its report's).
    std::vector<std::string> failureWarnings;

    const std::vector<std::string>& warnings() const {
        return measured() ? report->warnings : failureWarnings;
    }

    bool measured() const { return report.has_value(); }
    // Measured, and every edge within its limits.
    bool passes() const { return measured() && report->failures() == 0; }
    // Why the frame did not pass, as summaries count it: the cause of a frame not measured
    // ("chart not located"), or the first failing edge's figure and zone ("mtf50 in zone
    // edge"); empty for a frame that passed.
    std::string failure() const {
        if (!measured()) {
            return causeName(cause);
        }
        for (const EdgeRow& row : report->rows) {
            if (!report->passes(row)) {
                if (row.state != EdgeState::kMeasured) {
                    return row.stateText();
                }
                if (!row.flags.empty()) {
                    return row.flags.front();
                }
                const std::string figure =
                    row.failedFigure.empty() ? "sfr_quarter_nyquist" : row.failedFigure;
                return figure + (row.zone.empty() ? "" : " in zone " + row.zone);
            }
        }
        return "";
    }
};

}  // namespace station
}  // namespace talonvireo
