// Ctrl-C and kill, turned into a request a batch polls: the frames in flight finish and are
// recorded, no new one starts. A second signal ends the process at once.
#pragma once

#include <signal.h>

#include <atomic>
#include <thread>

namespace talonvireo {
namespace cli {

class StopSignal {
public:
    // Blocks SIGINT and SIGTERM in the calling thread (and so in every thread it starts
    // afterwards) and waits for them on a thread of its own: no handler, no global flag.
    StopSignal();
    // Restores the signal mask; a signal that came meanwhile is consumed, not re-raised.
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    bool requested() const { return requested_.load(std::memory_order_relaxed); }

private:
    void watch();
    sigset_t signals_{};
    sigset_t previous_{};
    std::atomic<bool> requested_{false};
    std::atomic<bool> done_{false};
    std::thread watcher_;
};

}  // namespace cli
}  // namespace talonvireo
