#include "station/FrameJob.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>

#include "station/EdgePlausibility.h"
#include "station/Failure.h"

namespace talonvireo {
namespace station {

void validateParam(const Member& member, int width, const SFRParam& param) {
    const int mark = param.markSearchSize;
    if (mark < 1 || mark > width / 2) {
        throw Failure(Cause::BadInput, "--mark must be 1 .. " + std::to_string(width / 2) +
                                           " (half the frame width)");
    }
    if (member.forced90) {
        if (mark < 90) {
            throw Failure(Cause::BadInput, member.name + " needs --mark of at least 90");
        }
        return;
    }
    if (param.roiSize < 1 || param.roiSize > mark) {
        throw Failure(Cause::BadInput, "--roi must be 1 .. --mark (" + std::to_string(mark) + ")");
    }
}

namespace {
EdgeRow rowOf(int index, const SlotReport& slot) {
    EdgeRow row;
    static_cast<SlotReport&>(row) = slot;
    row.index = index;
    row.measured = {slot.x, slot.y, slot.sfrHalfNyquist, slot.sfrQuarterNyquist, slot.sfrCustom};
    return row;
}

// The member's own failure, told from the first slot that stopped it (in slot order, as the
// member walks them).
void explainMemberFailure(const MemberFrameReport& pass, FrameReport& report) {
    if (pass.layoutStatus[0] != 0 || pass.layoutStatus[1] != 0) {
        report.memberCause = Cause::NotLocated;
        report.memberFailure = pass.layoutStatus[0] != 0 && pass.layoutStatus[1] != 0
                                   ? "chart not located"
                                   : std::string("chart not located (its ") +
                                         (pass.layoutStatus[0] != 0 ? "first" : "second") +
                                         " layout was not found)";
        return;
    }
    for (const EdgeRow& row : report.rows) {
        const std::string edge = "edge " + std::to_string(row.index);
        switch (row.state) {
            case EdgeState::kMeasured:
                continue;
            case EdgeState::kNotLocated:
                report.memberCause = Cause::NotLocated;
                report.memberFailure = "chart not located: " + edge + " was not found";
                return;
            case EdgeState::kOffFrame:
                report.memberCause = Cause::RegionOutOfBounds;
                report.memberFailure = "region out of bounds: " + edge + "'s region (centre " +
                                       std::to_string(row.measured.x) + ", " +
                                       std::to_string(row.measured.y) + ", side " +
                                       std::to_string(row.side) + ") leaves the frame";
                return;
            case EdgeState::kRefused:
                report.memberCause = Cause::SfrFailed;
                report.memberFailure = "SFR calculation failed on " + edge + ": " + row.stateText();
                return;
        }
    }
    report.memberCause = Cause::Failed;
    report.memberFailure = "measurement failed (status " + std::to_string(pass.memberStatus) + ")";
}
}  // namespace

FrameReport frameReportOf(const Member& member, const MemberFrameReport& pass,
                          const SFRParam& param, const MeasureOptions& options) {
    FrameReport report;
    report.member = member.name;
    report.project = member.chartName;
    report.width = pass.width;
    report.height = pass.height;
    report.param = param;
    report.param.roiSize = pass.roiSize;  // the RQ8 members use 90 whatever was asked
    report.fitResidual = pass.fitResidual;
    report.designConsensus = pass.designConsensus;
    report.clippedShare = pass.clippedShare;
    report.whiteLevel = pass.whiteLevel;
    report.hasPrecise = options.precise;
    report.hasPlanes = options.planes;
    for (std::size_t i = 0; i < pass.slots.size(); ++i) {
        report.rows.push_back(rowOf(static_cast<int>(i), pass.slots[i]));
    }
    if (pass.memberStatus != 0) {
        explainMemberFailure(pass, report);
    }
    return report;
}

FrameReport measureRawFrame(const Member& member, const cv::Mat& raw, const SFRParam& param,
                            const MeasureOptions& options, MemberTracker* tracker) {
    if (raw.type() != CV_16UC1 || !raw.isContinuous()) {
        throw Failure(Cause::Failed, "internal: the frame is not packed 16-bit words");
    }
    validateParam(member, raw.cols, param);
    MemberFrameOptions what;
    what.precise = options.precise;
    what.rawPlanes = options.planes;
    what.whiteLevel = options.whiteLevel;
    MemberFrameReport pass;
    const auto start = std::chrono::steady_clock::now();
    const int status = tracker != nullptr
                           ? tracker->measure(raw.ptr<std::uint16_t>(), raw.cols, raw.rows, pass)
                           : measureMemberFrame(*member.info, raw.ptr<std::uint16_t>(), raw.cols,
                                                raw.rows, param, what, pass);
    if (status != 0) {
        throw Failure(Cause::Failed, "the frame could not be measured (" + member.name +
                                         " refused it or ran out of memory)");
    }
    FrameReport report = frameReportOf(member, pass, param, options);
    report.milliseconds =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    return report;
}

void requireMemberSuccess(const FrameReport& report) {
    if (report.partial()) {
        throw Failure(report.memberCause, report.memberFailure);
    }
}

void requireChartFit(const FrameReport& report, double limitPx) {
    if (!(report.fitResidual > limitPx)) {
        return;
    }
    int located = 0;
    for (const EdgeRow& row : report.rows) {
        located += std::isfinite(row.designDistance) ? 1 : 0;
    }
    char text[240];
    if (report.designConsensus >= kConsensusOfAFoundChart) {
        std::snprintf(text, sizeof text,
                      "the %s chart is in view but its edges were not all found in place: %d of "
                      "%d agree on one position of the chart, the rest do not (fit residual "
                      "%.1f px; is the chart shifted, partly out of view or covered?)",
                      report.project.c_str(), report.designConsensus, located, report.fitResidual);
        throw Failure(Cause::Misplaced, text);
    }
    std::snprintf(text, sizeof text,
                  "frame does not look like the %s chart (fit residual %.1f px; no more than %d "
                  "of %d edges agree on one position of it)",
                  report.project.c_str(), report.fitResidual, report.designConsensus, located);
    throw Failure(Cause::WrongChart, text);
}

namespace {

// The largest word of a CV_16UC1 frame: rows in parallel, each a plain loop the compiler
// vectorises (a live feed pays this on every frame).
double largestSample(const cv::Mat& raw) {
    if (raw.type() != CV_16UC1) {
        double largest = 0.0;
        cv::minMaxLoc(raw.reshape(1), nullptr, &largest);
        return largest;
    }
    int largest = 0;
#pragma omp parallel for reduction(max : largest) schedule(static)
    for (int r = 0; r < raw.rows; ++r) {
        const std::uint16_t* row = raw.ptr<std::uint16_t>(r);
        std::uint16_t most = 0;
        for (int c = 0; c < raw.cols; ++c) {
            most = std::max(most, row[c]);
        }
        largest = std::max(largest, static_cast<int>(most));
    }
    return largest;
}

}  // namespace

int checkSampleDepth(const Member& member, const cv::Mat& raw, std::vector<std::string>& warnings) {
    const double largest = largestSample(raw);
    const double fullScale = std::ldexp(1.0, member.bits) - 1.0;
    if (largest > fullScale) {
        throw Failure(Cause::SampleDepth,
                      "samples exceed " + std::to_string(member.bits) + " bits (largest " +
                          std::to_string(static_cast<long>(largest)) + ", " + member.name +
                          " takes 0 .. " + std::to_string(static_cast<long>(fullScale)) + ")");
    }
    if (largest < (fullScale + 1.0) / 16.0) {
        warnings.push_back("the largest sample, " + std::to_string(static_cast<long>(largest)) +
                           ", is below 1/16 of " + std::to_string(member.bits) +
                           "-bit full scale: is " + member.name + " the member for this frame?");
    }
    return static_cast<int>(largest);
}

}  // namespace station
}  // namespace talonvireo
