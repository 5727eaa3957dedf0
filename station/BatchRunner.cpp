#include "station/BatchRunner.h"

#include <omp.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <new>
#include <thread>

#include "station/Failure.h"

namespace talonvireo {
namespace station {

FrameOutcome measureFrameFile(const Measurand& measurand, const FrameFileEntry& file,
                              const FrameOptions& options) {
    FrameOutcome outcome;
    outcome.file = file;
    const auto start = std::chrono::steady_clock::now();
    try {
        // Warnings are not printed: they would tear the progress line; they travel with the
        // frame into its records.
        outcome.report = gradeFrame(measurand, file.path, options).report;
    } catch (const Failure& e) {
        outcome.cause = e.cause();
        outcome.message = e.what();
        outcome.failureWarnings = e.warnings();
    } catch (const std::bad_alloc&) {
        outcome.cause = Cause::Failed;
        outcome.message = "out of memory";
    } catch (const std::exception& e) {
        outcome.cause = Cause::Failed;
        outcome.message = e.what();
    }
    outcome.milliseconds =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    return outcome;
}

void runBatch(const Measurand& measurand, const FrameOptions& options,
              const std::vector<FrameFileEntry>& frames, int jobs,
              const std::function<bool()>& stopRequested,
              const std::function<void(FrameOutcome&&)>& record) {
    jobs = std::max(1, std::min<int>(jobs, static_cast<int>(frames.size())));
    const int threadsEach = std::max(1, omp_get_num_procs() / jobs);
    std::atomic<std::size_t> next{0};
    std::atomic<bool> abandon{false};  // the recorder failed
    std::mutex mutex;
    std::condition_variable ready;
    std::deque<FrameOutcome> finished;
    int running = jobs;

    auto work = [&] {
        omp_set_num_threads(threadsEach);
        for (;;) {
            if (abandon || (stopRequested && stopRequested())) {
                break;
            }
            const std::size_t k = next++;
            if (k >= frames.size()) {
                break;
            }
            FrameOutcome outcome = measureFrameFile(measurand, frames[k], options);
            std::lock_guard<std::mutex> lock(mutex);
            finished.push_back(std::move(outcome));
            ready.notify_one();
        }
        std::lock_guard<std::mutex> lock(mutex);
        --running;
        ready.notify_one();
    };
    std::vector<std::thread> workers;
    for (int j = 0; j < jobs; ++j) {
        workers.emplace_back(work);
    }
    std::exception_ptr failure;
    for (;;) {
        std::unique_lock<std::mutex> lock(mutex);
        ready.wait(lock, [&] { return !finished.empty() || running == 0; });
        if (finished.empty()) {
            break;
        }
        FrameOutcome outcome = std::move(finished.front());
        finished.pop_front();
        lock.unlock();
        if (failure) {
            continue;  // drain without recording
        }
        try {
            record(std::move(outcome));
        } catch (...) {
            failure = std::current_exception();
            abandon = true;
        }
    }
    for (std::thread& w : workers) {
        w.join();
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

}  // namespace station
}  // namespace talonvireo
