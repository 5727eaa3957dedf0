// A batch's counts, kept as frames come in and printed at the end: frames, passes, failures
// by cause, yield.
#pragma once

#include <cstdio>
#include <map>
#include <string>

#include "station/FrameOutcome.h"

namespace talonvireo {
namespace station {

// Counts cover every frame listed: those measured now and those an earlier run recorded.
struct BatchTally {
    int listed = 0;   // frames the arguments named
    int skipped = 0;  // already recorded in the database
    int done = 0;     // measured (or tried) this run
    int measured = 0;
    int passed = 0;
    int jobs = 1;
    bool graded = false;  // limits were given
    bool interrupted = false;
    double seconds = 0.0;
    // Frames not measured, by cause ("chart not located"); measured frames that failed
    // their limits, by the first failing edge's figure and zone ("mtf50 in zone edge").
    std::map<std::string, int> errors;
    std::map<std::string, int> limitFailures;

    void add(const FrameOutcome& outcome);
    // A frame an earlier run recorded: `failure` as FrameOutcome::failure gave it.
    void addRecorded(bool wasMeasured, const std::string& failure);
    int counted() const { return done + skipped; }
    int failed() const { return counted() - passed; }
    // Passing frames among those measured and not, in %; NaN before any frame.
    double yieldPercent() const;
    void print(std::FILE* out) const;

private:
    void count(bool wasMeasured, const std::string& failure);
};

}  // namespace station
}  // namespace talonvireo
