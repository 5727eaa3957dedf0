// Grading a measured frame against a limits file.
#pragma once

#include "station/EdgeReport.h"
#include "station/Limits.h"

namespace talonvireo {
namespace station {

// Grades every row: its zone is the first whose max_height its image height does not exceed
// (the last zone beyond them all), the zone's minimums overridden by its orientation's and
// then by the row's slot. A figure below its minimum, or missing where a minimum is set,
// fails the row and is named in row.failedLimit. Sets report.limitsPath and hasLimit.
// The rows' field positions must be filled (describeField), and MTF50 where a limit needs it.
void gradeReport(FrameReport& report, const Limits& limits);

}  // namespace station
}  // namespace talonvireo
