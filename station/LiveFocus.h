// A live feed of raw frames (a capture program piping W x H 16-bit words per frame) measured
// frame by frame through one stream, each frame turned into its JSON line as soon as it is
// measured. Frames are read and measured in turn: reading the next one while measuring this
// one was measured slower on two cores, where the capture program needs the other core.
#pragma once

#include <cstdio>
#include <optional>

#include <opencv2/core.hpp>

#include "station/FrameStream.h"
#include "station/JsonDocument.h"

namespace talonvireo {
namespace station {

class LiveFocusFeed {
public:
    // Frames of width x height words from `in`. Throws Failure (bad input) for a frame size of
    // no pixels or over 2^31 of them.
    LiveFocusFeed(std::FILE* in, FrameStream& stream, double frequency, int width, int height);
    // The next frame's line: focusFrameJson, or focusFrameErrorJson for a frame that could not
    // be measured (the feed goes on). Nothing at the clean end of the input; a short last
    // frame is an error line, after which shortFrame() holds and the feed ends.
    std::optional<Json> next();

    bool shortFrame() const { return shortFrame_; }

private:
    std::FILE* in_;
    FrameStream& stream_;
    double frequency_;
    cv::Mat words_;
    long frame_ = 0;
    bool shortFrame_ = false;
};

}  // namespace station
}  // namespace talonvireo
