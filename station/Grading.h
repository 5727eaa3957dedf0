// Grading a measured frame against a limits file.
#pragma once

#include "station/EdgeReport.h"
#include "station/Limits.h"

namespace talonvireo {
namespace station {

// Grades every row: its zone is the first whose max_height its image height does not exceed,
// the zone's minimums overridden by its orientation's and then by the row's slot. A row beyond
// every zone (or without a position) is "unzoned": only its slot's limits grade it. A figure
// below its minimum, or missing where a minimum is set, fails the row and is named in
// row.failedLimit (row.failedFigure: its key). Sets report.limitsPath and hasLimit, and adds
// to report.warnings the zones no edge falls into and the count of unzoned edges.
// Throws Failure (bad input) for limits that do not apply to the report: a slot its member's
// chart does not have, a limit in lp/mm or LW/PH without a pixel pitch.
// The rows' field positions must be filled (describeField), and MTF50 where a limit needs it.
void gradeReport(FrameReport& report, const Limits& limits);

// After gradeReport: an edge not measured fails with its state as the reason, a flagged one
// with its first flag.
void failUnmeasuredAndFlagged(FrameReport& report);

}  // namespace station
}  // namespace talonvireo
