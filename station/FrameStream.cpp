#include "station/FrameStream.h"

#include <utility>
#include <vector>

#include "station/Failure.h"

namespace talonvireo {
namespace station {

FrameStream::FrameStream(Measurand measurand, FrameOptions options)
    : measurand_(std::move(measurand)), options_(std::move(options)) {
    checkFrameOptions(options_);
}

GradedFrame FrameStream::gradeFile(const std::string& path) {
    if (measurand_.chart) {
        relocated_ = true;
        return gradeChartFile(*measurand_.chart, path, options_, measurand_.samples,
                              measurand_.samplesGiven);
    }
    std::vector<std::string> warnings;
    FrameWords words;
    try {
        words = readFrameWords(*measurand_.member, path, options_, warnings);
    } catch (Failure& failure) {
        failure.addWarnings(warnings);
        throw;
    }
    return gradeMemberWords(words.raw, words.whiteLevel, path, warnings);
}

GradedFrame FrameStream::gradeWords(const cv::Mat& words, const std::string& input) {
    if (measurand_.chart) {
        relocated_ = true;
        const int bits = measurand_.samples.bits > 0 ? measurand_.samples.bits : 16;
        return gradeChartFrame(*measurand_.chart,
                               chartFrameOfSamples(words, measurand_.samples.bayer, bits, input),
                               options_, input);
    }
    if (words.type() != CV_16UC1) {
        throw Failure(Cause::BadInput, input + ": a member measures 16-bit words");
    }
    return gradeMemberWords(words, 0, input, {});
}

GradedFrame FrameStream::gradeMemberWords(const cv::Mat& words, int whiteLevel,
                                          const std::string& input,
                                          std::vector<std::string> warnings) {
    const Member& member = *measurand_.member;
    if (!tracker_ || whiteLevel != trackerWhiteLevel_) {
        MemberFrameOptions what;
        what.precise = options_.precise;
        what.rawPlanes = options_.planes;
        what.whiteLevel = whiteLevel;
        tracker_ = std::make_unique<MemberTracker>(*member.info, options_.param, what);
        trackerWhiteLevel_ = whiteLevel;
    }
    relocated_ = true;
    GradedFrame graded = gradeFrameWords(member, words, whiteLevel, options_, input, tracker_.get(),
                                         std::move(warnings));
    relocated_ = tracker_->relocated();
    return graded;
}

}  // namespace station
}  // namespace talonvireo
