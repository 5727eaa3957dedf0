#include "station/BatchTally.h"

#include <cmath>

namespace talonvireo {
namespace station {

void BatchTally::add(const FrameOutcome& outcome) {
    ++done;
    count(outcome.measured(), outcome.failure());
}

void BatchTally::addRecorded(bool wasMeasured, const std::string& failure) {
    ++skipped;
    count(wasMeasured, failure);
}

void BatchTally::count(bool wasMeasured, const std::string& failure) {
    measured += wasMeasured ? 1 : 0;
    if (failure.empty()) {
        ++passed;
    } else {
        ++(wasMeasured ? limitFailures : errors)[failure];
    }
}

double BatchTally::yieldPercent() const {
    return counted() > 0 ? 100.0 * passed / counted() : std::nan("");
}

void BatchTally::print(std::FILE* out) const {
    std::fprintf(out, "batch: %d frame%s", listed, listed == 1 ? "" : "s");
    if (skipped > 0) {
        std::fprintf(out, ", %d already recorded (skipped)", skipped);
    }
    std::fprintf(out, ", %d done now in %.1f s (%.2f frames/s, %d job%s)%s\n", done, seconds,
                 seconds > 0.0 ? done / seconds : 0.0, jobs, jobs == 1 ? "" : "s",
                 interrupted ? ", INTERRUPTED: run it again to finish" : "");
    std::fprintf(out, "  measured  %d\n", measured);
    if (graded) {
        std::fprintf(out, "  passed    %d\n", passed);
        std::fprintf(out, "  failed    %d (limits)\n", measured - passed);
        for (const auto& [cause, count] : limitFailures) {
            std::fprintf(out, "    %4d  %s\n", count, cause.c_str());
        }
    }
    std::fprintf(out, "  errors    %d\n", counted() - measured);
    for (const auto& [cause, count] : errors) {
        std::fprintf(out, "    %4d  %s\n", count, cause.c_str());
    }
    if (counted() > 0) {
        std::fprintf(out, "  yield     %.1f %% (%d of %d)\n", yieldPercent(), passed, counted());
    }
}

}  // namespace station
}  // namespace talonvireo
