#include "station/FrameGrading.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <string>

#include "station/CameraRawFile.h"
#include "station/Failure.h"
#include "station/FieldPosition.h"
#include "station/Grading.h"
#include "station/RegionByRegion.h"
#include "station/RegionFigures.h"

namespace talonvireo {
namespace station {

void checkFrameOptions(const FrameOptions& options) {
    if (options.planes && !options.precise) {
        throw Failure(Cause::BadInput, "--per-channel-raw needs --method precise");
    }
    if (options.limits && options.limits->needsCustom() && !(options.param.freqDivisor > 0.0f)) {
        throw Failure(Cause::BadInput, "the limits set sfr_custom: --freq-divisor is needed");
    }
}

namespace {
// MTF50 is measured when anything shows it: the precise figures, a limit, or units.
bool measuresMtf50(const FrameOptions& options) {
    return options.precise || (options.limits && options.limits->needsMtf50()) ||
           std::isfinite(options.pixelPitchUm);
}
}  // namespace

FrameReport reportLayout(const Member& member, const FrameOptions& options) {
    FrameReport report;
    report.member = member.name;
    report.param = options.param;
    report.pixelPitchUm = options.pixelPitchUm;
    report.hasMtf50 = measuresMtf50(options);
    report.hasPrecise = options.precise;
    report.hasPlanes = options.planes;
    if (options.limits) {
        report.limitsPath = options.limits->path;
        report.hasLimit = true;
    }
    return report;
}

GradedFrame gradeFrameFile(const Member& member, const std::string& path,
                           const FrameOptions& options, std::FILE* warnings) {
    checkFrameOptions(options);
    GradedFrame out;
    if (isCameraRawPath(path)) {
        const CameraRaw camera = readCameraRaw(path);
        checkCameraRawFits(camera, path, member.bits, member.name);
        out.raw = camera.mosaic;
    } else {
        out.raw = readFrame(path, options.layout);
    }
    validateParam(member, out.raw.cols, options.param);
    checkSampleDepth(member, out.raw, warnings);
    FrameReport& report = out.report;
    cv::Mat grey;
    try {
        report = measureRawFrame(member, out.raw, options.param);
    } catch (const Failure& failure) {
        if (!options.partial || !explainsMemberFailure(failure.cause())) {
            throw;
        }
        const auto start = std::chrono::steady_clock::now();
        grey = memberGrey(member, out.raw);
        report = measureRegionByRegion(member, grey, options.param);
        report.milliseconds =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                .count();
        report.memberFailure = failure.what();
        report.memberCause = failure.cause();
        report.fitResidual = chartFitResidual(member, report);
        if (report.fitResidual > options.chartFitLimit) {
            // Figures of another chart's regions would mislead: the member's failure stands.
            char residual[32];
            std::snprintf(residual, sizeof residual, "%.1f", report.fitResidual);
            throw Failure(failure.cause(),
                          std::string(failure.what()) + "; the edges found do not fit the " +
                              report.project + " chart either (fit residual " + residual + " px)");
        }
    }
    report.input = path;
    requireChartFit(report, options.chartFitLimit);
    if (grey.empty()) {
        grey = memberGrey(member, out.raw);
    }
    describeField(report, grey);
    for (EdgeRow& row : report.rows) {
        if (row.state == EdgeState::kNotLocated) {
            row.field = FieldPosition{};  // no centre, no place in the field
        }
    }
    report.pixelPitchUm = options.pixelPitchUm;
    const bool mtf50 = measuresMtf50(options);
    if (mtf50) {
        addRegionFigures(report, member, out.raw, grey, {mtf50, options.precise, options.planes});
    }
    if (options.limits) {
        gradeReport(report, *options.limits);
        for (EdgeRow& row : report.rows) {
            if (row.state != EdgeState::kMeasured) {
                row.pass = false;
                row.failedLimit = row.stateText();
                row.failedFigure.clear();
            }
        }
    }
    return out;
}

}  // namespace station
}  // namespace talonvireo
