#include "station/LiveFocus.h"

#include <fcntl.h>

#include <chrono>
#include <cstdint>
#include <string>

#include "station/Failure.h"
#include "station/FocusJson.h"

namespace talonvireo {
namespace station {

namespace {

// A pipe's 64 KiB default buffer costs the writer and the reader a switch every 64 KiB; at a
// megabyte (what an unprivileged process may ask) a 4000 x 3000 feed flows about three times
// faster. Anything but a pipe refuses, and is read as it is.
void widenPipe(std::FILE* in) {
#ifdef F_SETPIPE_SZ
    fcntl(fileno(in), F_SETPIPE_SZ, 1 << 20);
#else
    (void)in;
#endif
}

}  // namespace

LiveFocusFeed::LiveFocusFeed(std::FILE* in, FrameStream& stream, double frequency, int width,
                             int height)
    : in_(in), stream_(stream), frequency_(frequency) {
    if (width <= 0 || height <= 0 || static_cast<std::int64_t>(width) * height > INT32_MAX) {
        throw Failure(Cause::BadInput, "a live feed needs a frame size of 1 to 2^31 pixels");
    }
    words_.create(height, width, CV_16UC1);
    widenPipe(in_);
}

std::optional<Json> LiveFocusFeed::next() {
    if (shortFrame_) {
        return std::nullopt;
    }
    const std::size_t bytes = words_.total() * words_.elemSize();
    const std::size_t got = std::fread(words_.data, 1, bytes, in_);
    if (got == 0 && !std::ferror(in_)) {
        return std::nullopt;
    }
    const long frame = frame_++;
    if (got < bytes) {
        shortFrame_ = true;
        return focusFrameErrorJson(
            frame, std::ferror(in_) ? std::string("the input could not be read")
                                    : "the input ended " + std::to_string(got) + " bytes into a " +
                                          std::to_string(bytes) + "-byte frame");
    }
    const auto start = std::chrono::steady_clock::now();
    try {
        const GradedFrame graded = stream_.gradeWords(words_, "frame " + std::to_string(frame));
        const double ms =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                .count();
        return focusFrameJson(graded.report, frequency_, frame, stream_.relocated(), ms);
    } catch (const Failure& f) {
        return focusFrameErrorJson(frame, f.what());
    }
}

}  // namespace station
}  // namespace talonvireo
