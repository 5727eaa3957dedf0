#include "FrameGrading.h"

#include "CliError.h"
#include "FieldPosition.h"
#include "Grading.h"
#include "RegionFigures.h"

namespace talonvireo {
namespace cli {

void checkFrameOptions(const FrameOptions& options) {
    if (options.planes && !options.precise) {
        throw CliError(kExitBadArguments, "--per-channel-raw needs --method precise");
    }
    if (options.limits && options.limits->needsCustom() && !(options.param.freqDivisor > 0.0f)) {
        throw CliError(kExitBadArguments, "the limits set sfr_custom: --freq-divisor is needed");
    }
}

GradedFrame gradeFrameFile(const Member& member, const std::string& path,
                           const FrameOptions& options, std::FILE* warnings) {
    checkFrameOptions(options);
    GradedFrame out;
    out.raw = readFrame(path, options.width, options.height, options.packing);
    validateParam(member, out.raw.cols, options.param);
    checkSampleDepth(member, out.raw, warnings);
    FrameReport& report = out.report;
    report = measureRawFrame(member, out.raw, options.param);
    report.input = path;
    requireChartFit(report, options.chartFitLimit);
    const cv::Mat grey = memberGrey(member, out.raw);
    describeField(report, grey);
    report.pixelPitchUm = options.pixelPitchUm;
    // MTF50 is measured when anything shows it: the precise figures, a limit, or units.
    const bool mtf50 =
        options.precise || (options.limits && options.limits->needsMtf50()) || report.hasPitch();
    if (mtf50) {
        addRegionFigures(report, member, out.raw, grey, {mtf50, options.precise, options.planes});
    }
    if (options.limits) {
        gradeReport(report, *options.limits);
    }
    return out;
}

}  // namespace cli
}  // namespace talonvireo
