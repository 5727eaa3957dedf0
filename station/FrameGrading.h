// One frame file measured, placed and graded: what `measure` prints and what the Python
// module's measure_files returns, from the same code.
#pragma once

#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "station/EdgeReport.h"
#include "station/FrameFile.h"
#include "station/FrameJob.h"
#include "station/Limits.h"
#include "station/Members.h"

namespace talonvireo {
namespace station {

struct FrameOptions {
    SFRParam param{0.0f, 80, 100};
    RawLayout layout;  // of a raw file
    double chartFitLimit = kChartFitLimitPx;
    bool precise = false;  // add the precise figures
    bool planes = false;   // and each raw colour plane's
    std::optional<Limits> limits;
    double pixelPitchUm = std::numeric_limits<double>::quiet_NaN();
    // When the member fails (chart not located, a region off the frame or refused), measure
    // region by region instead and return that diagnosis (FrameReport::partial) rather than
    // throwing.
    bool partial = false;
    // Clipped edges are warned about but not flagged (they then pass on their figures).
    bool acceptClipped = false;
    // The method of a chart's edges (--chart): precise unless --method says classic.
    SfrMethod chartMethod = SfrMethod::kPrecise;
};

// Throws Failure (bad input) for options that cannot go together: raw planes without the
// precise method, a custom-frequency limit without a custom frequency.
void checkFrameOptions(const FrameOptions& options);

// An empty report with the flags a frame graded with these options gets (which figures,
// units and verdicts it carries): the columns of a batch's tables before any frame is in.
FrameReport reportLayout(const Member& member, const FrameOptions& options);

struct GradedFrame {
    cv::Mat raw;  // the frame's words, for pictures
    // A chart's frame as 8-bit grey, for pictures; empty for a member's (greyView of raw).
    cv::Mat grey;
    // The frame as pictures show it: `grey`, or the member's words demosaiced at its depth.
    cv::Mat pictureGrey(int memberBits) const;
    FrameReport report;
};

// A frame file's words, with what its file says about them: a camera raw file's declared
// white level (0 when none is below the member's full scale).
struct FrameWords {
    cv::Mat raw;
    int whiteLevel = 0;
};

// Reads `path` as gradeFrameFile does, adding what is odd about its samples to `warnings`.
// Throws Failure.
FrameWords readFrameWords(const Member& member, const std::string& path,
                          const FrameOptions& options, std::vector<std::string>& warnings);

// Reads `path` (a raw file in options.layout, a 16-bit image, or a camera raw file such as
// DNG, whose mosaic must be RGGB and no deeper than the member's), checks it against the member,
// measures it in one pass, checks the chart fit, fills every edge's field position, flags the
// edges that cannot be trusted and, with limits, gives every edge its verdict. Warnings go
// into the report (or the Failure). Throws Failure with the cause of a failure, except for a
// member failure under options.partial. An edge not measured fails any limit, with its state
// as the reason; a flagged edge fails any limit, with its flags.
GradedFrame gradeFrameFile(const Member& member, const std::string& path,
                           const FrameOptions& options);

// gradeFrameFile's work after reading: `raw` (CV_16UC1 words, `whiteLevel` 0 for the member's
// full scale) graded as the frame `input` names, with the warnings reading it gave. With a
// tracker, the member's pass is the tracker's: the chart followed from the stream's previous
// frame (the tracker must have been made with these options' parameters).
GradedFrame gradeFrameWords(const Member& member, const cv::Mat& raw, int whiteLevel,
                            const FrameOptions& options, const std::string& input,
                            MemberTracker* tracker = nullptr,
                            std::vector<std::string> warnings = {});

}  // namespace station
}  // namespace talonvireo
