// A batch's progress line on stderr: frames done, rate and time left. Drawn only when stderr
// is a terminal, so logs and pipes stay clean.
#pragma once

#include <chrono>
#include <cstdio>

namespace talonvireo {
namespace cli {

class BatchProgress {
public:
    BatchProgress(int total, std::FILE* out);
    // After every frame; redraws at most ten times a second (and on the last frame).
    void update(int done, int failed);
    // Ends the line.
    void finish();
    bool shown() const { return shown_; }

private:
    int total_;
    std::FILE* out_;
    bool shown_;
    bool drawn_ = false;
    std::chrono::steady_clock::time_point start_;
    std::chrono::steady_clock::time_point lastDrawn_;
};

}  // namespace cli
}  // namespace talonvireo
