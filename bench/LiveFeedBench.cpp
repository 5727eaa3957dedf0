// Frames per second `focus --live` keeps up with: 4000 x 3000 frames of 16-bit words piped in
// by another thread, as a capture program would (the pipe's copy included), each read,
// measured through the tracking stream and turned into its JSON line. The HLX6C member, two
// frames of independent noise alternating.
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#include "ChartFrame.h"
#include "station/LiveFocus.h"

namespace {
using namespace talonvireo;

void BM_LiveFeedHLX6C(benchmark::State& state) {
    std::vector<cv::Mat> frames;
    for (int k = 0; k < 2; ++k) {
        cv::Mat f = bench::rawChart(render::ChartProject::HLX6C, 10, 4000, 3000);
        cv::Mat noise(f.size(), CV_16UC1);
        cv::randu(noise, 0, k + 2);
        frames.push_back(f + noise);
    }
    int ends[2];
    if (pipe(ends) != 0) {
        state.SkipWithError("no pipe");
        return;
    }
    fcntl(ends[1], F_SETPIPE_SZ, 1 << 20);
    std::atomic<bool> stop{false};
    std::thread capture([&] {
        const std::size_t bytes = frames[0].total() * 2;
        for (int k = 0; !stop; ++k) {
            const char* p = reinterpret_cast<const char*>(frames[k % 2].data);
            for (std::size_t done = 0; done < bytes;) {
                const ssize_t n = write(ends[1], p + done, bytes - done);
                if (n <= 0) {
                    return;
                }
                done += static_cast<std::size_t>(n);
            }
        }
        close(ends[1]);
    });
    std::FILE* in = fdopen(ends[0], "rb");
    const std::vector<station::Member> members = station::allMembers();
    station::FrameOptions options;
    station::FrameStream stream(
        station::memberMeasurand(*station::findMember(members, "talonvireoSFR_raw10_HLX6C")),
        options);
    auto feed = std::make_unique<station::LiveFocusFeed>(in, stream, 0.125, 4000, 3000);
    std::size_t written = 0;
    int relocations = 0;
    for (auto _ : state) {
        const std::optional<station::Json> line = feed->next();
        if (!line || line->contains("error")) {
            state.SkipWithError("the feed failed");
            break;
        }
        relocations += (*line)["relocated"].get<bool>() ? 1 : 0;
        written += line->dump().size();
    }
    stop = true;
    feed.reset();
    std::vector<char> drain(1 << 20);
    while (std::fread(drain.data(), 1, drain.size(), in) > 0) {
    }
    capture.join();
    std::fclose(in);
    state.counters["frames/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["relocations"] = relocations;
    state.counters["line_bytes"] =
        static_cast<double>(written) /
        static_cast<double>(std::max<std::int64_t>(1, state.iterations()));
}
BENCHMARK(BM_LiveFeedHLX6C)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3.0);

}  // namespace
