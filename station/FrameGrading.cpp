#include "station/FrameGrading.h"

#include <cmath>
#include <string>
#include <vector>

#include "station/CameraRawFile.h"
#include "station/EdgePlausibility.h"
#include "station/Failure.h"
#include "station/FieldPosition.h"
#include "station/Grading.h"

namespace talonvireo {
namespace station {

void checkFrameOptions(const FrameOptions& options) {
    if (options.planes && !options.precise) {
        throw Failure(Cause::BadInput, "--per-channel-raw needs --method precise");
    }
    if (options.limits && options.limits->needsCustom() && !(options.param.freqDivisor > 0.0f)) {
        throw Failure(Cause::BadInput, "the limits set sfr_custom: --freq-divisor is needed");
    }
    if (options.limits) {
        checkLimitUnits(*options.limits, options.pixelPitchUm);
    }
}

namespace {
// MTF50 is shown when anything asks for it: the precise figures, a limit, or units.
bool showsMtf50(const FrameOptions& options) {
    return options.precise || (options.limits && options.limits->needsMtf50()) ||
           std::isfinite(options.pixelPitchUm);
}

}  // namespace

FrameWords readFrameWords(const Member& member, const std::string& path,
                          const FrameOptions& options, std::vector<std::string>& warnings) {
    FrameWords out;
    const int fullScale = (1 << member.bits) - 1;
    if (isCameraRawPath(path)) {
        const CameraRaw camera = readCameraRaw(path);
        checkCameraRawFits(camera, path, member.bits, member.name);
        out.raw = camera.mosaic;
        if (camera.whiteLevel > 0 && camera.whiteLevel < fullScale) {
            out.whiteLevel = camera.whiteLevel;
            double largest = 0.0;
            cv::minMaxLoc(out.raw, nullptr, &largest);
            if (largest > camera.whiteLevel) {
                warnings.push_back(
                    "samples reach " + std::to_string(static_cast<long>(largest)) +
                    ", above the file's declared white level " + std::to_string(camera.whiteLevel) +
                    ": its metadata is wrong or the data were scaled; clipping is counted at " +
                    std::to_string(camera.whiteLevel));
            }
        }
        return out;
    }
    out.raw = readFrame(path, options.layout);
    if (options.layout.packing == Packing::Raw8 && member.bits > 8) {
        warnings.push_back("8-bit samples (raw8) are measured as " + std::to_string(member.bits) +
                           "-bit codes by " + member.name + ": full scale is " +
                           std::to_string(fullScale) + ", the frame reaches 255 at most");
    }
    return out;
}

FrameReport reportLayout(const Member& member, const FrameOptions& options) {
    FrameReport report;
    report.member = member.name;
    report.param = options.param;
    report.pixelPitchUm = options.pixelPitchUm;
    report.hasMtf50 = showsMtf50(options);
    report.hasPrecise = options.precise;
    report.hasPlanes = options.planes;
    if (options.limits) {
        report.limitsPath = options.limits->path;
        report.hasLimit = true;
    }
    return report;
}

GradedFrame gradeFrameFile(const Member& member, const std::string& path,
                           const FrameOptions& options) {
    checkFrameOptions(options);
    std::vector<std::string> warnings;
    FrameWords words;
    try {
        words = readFrameWords(member, path, options, warnings);
    } catch (Failure& failure) {
        failure.addWarnings(warnings);
        throw;
    }
    return gradeFrameWords(member, words.raw, words.whiteLevel, options, path, nullptr, warnings);
}

GradedFrame gradeFrameWords(const Member& member, const cv::Mat& raw, int whiteLevel,
                            const FrameOptions& options, const std::string& input,
                            MemberTracker* tracker, std::vector<std::string> warnings) {
    checkFrameOptions(options);
    try {
        GradedFrame out;
        out.raw = raw;
        validateParam(member, out.raw.cols, options.param);
        const int largest = checkSampleDepth(member, out.raw, warnings);
        MeasureOptions what;
        what.precise = options.precise;
        what.planes = options.planes;
        what.whiteLevel = whiteLevel;
        FrameReport& report = out.report;
        report = measureRawFrame(member, out.raw, options.param, what, tracker);
        report.largestSample = largest;
        report.warnings.insert(report.warnings.begin(), warnings.begin(), warnings.end());
        warnings = report.warnings;
        report.input = input;
        if (!options.partial) {
            requireMemberSuccess(report);
        }
        try {
            requireChartFit(report, options.chartFitLimit);
        } catch (const Failure& fit) {
            if (!report.partial()) {
                throw;
            }
            // Figures of another chart's regions would mislead: the member's failure stands.
            throw Failure(report.memberCause, report.memberFailure + "; and " + fit.what());
        }
        describeField(report);
        report.pixelPitchUm = options.pixelPitchUm;
        report.hasMtf50 = showsMtf50(options);
        PlausibilityOptions plausibility;
        plausibility.acceptClipped = options.acceptClipped;
        flagImplausibleEdges(report, plausibility);
        if (options.limits) {
            gradeReport(report, *options.limits);
            failUnmeasuredAndFlagged(report);
        }
        return out;
    } catch (Failure& failure) {
        failure.addWarnings(warnings);
        throw;
    }
}

cv::Mat GradedFrame::pictureGrey(int memberBits) const {
    return grey.empty() ? greyView(raw, memberBits) : grey;
}

}  // namespace station
}  // namespace talonvireo
