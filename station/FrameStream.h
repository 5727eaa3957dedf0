// The frames of one stream (a through-focus sweep, a live feed) graded with one measurand: a
// member's chart is followed from frame to frame by a MemberTracker, so that after the first
// frame only the raw words under its regions are read and reduced to grey (on a still chart
// the figures are the member's own, bit for bit); a chart description is measured afresh on
// every frame.
#pragma once

#include <memory>
#include <string>

#include <opencv2/core.hpp>

#include "station/Measurand.h"
#include "talonvireo/MemberTracker.h"

namespace talonvireo {
namespace station {

class FrameStream {
public:
    FrameStream(Measurand measurand, FrameOptions options);

    // A frame file, read as gradeFrameFile or gradeChartFile reads it. Throws Failure.
    GradedFrame gradeFile(const std::string& path);

    // A frame of raw words as a capture program gives them (CV_16UC1, or CV_8UC1 for a
    // chart); `input` names it in the report. Throws Failure.
    GradedFrame gradeWords(const cv::Mat& words, const std::string& input);

    // Whether the last frame was located afresh (always, for a chart).
    bool relocated() const { return relocated_; }

    const Measurand& measurand() const { return measurand_; }
    const FrameOptions& options() const { return options_; }

private:
    GradedFrame gradeMemberWords(const cv::Mat& words, int whiteLevel, const std::string& input,
                                 std::vector<std::string> warnings);

    Measurand measurand_;
    FrameOptions options_;
    std::unique_ptr<MemberTracker> tracker_;
    int trackerWhiteLevel_ = 0;
    bool relocated_ = true;
};

}  // namespace station
}  // namespace talonvireo
