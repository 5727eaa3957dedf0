// Measuring many frame files in one process: worker threads take frames in list order and
// measure them; the calling thread records each outcome as it finishes.
#pragma once

#include <functional>
#include <vector>

#include "station/FrameGrading.h"
#include "station/FrameList.h"
#include "station/FrameOutcome.h"
#include "station/Measurand.h"

namespace talonvireo {
namespace station {

// One frame file read, measured and graded; every failure becomes the outcome's cause.
FrameOutcome measureFrameFile(const Measurand& measurand, const FrameFileEntry& file,
                              const FrameOptions& options);

// Measures `frames` on `jobs` threads and calls `record` on the calling thread with every
// outcome, in the order they finish (list order with one job). Once `stopRequested` (when
// given) answers true no
// new frame starts; the ones in flight are still recorded. An exception from `record` stops
// the workers and is rethrown. Each worker gives the library's own parallel loops an equal
// share of the cores, so N jobs do not run N times the cores' threads.
void runBatch(const Measurand& measurand, const FrameOptions& options,
              const std::vector<FrameFileEntry>& frames, int jobs,
              const std::function<bool()>& stopRequested,
              const std::function<void(FrameOutcome&&)>& record);

}  // namespace station
}  // namespace talonvireo
