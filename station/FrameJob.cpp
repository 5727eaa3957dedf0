#include "station/FrameJob.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <string>

#include "station/ChartFit.h"

#include "render/RecordTruth.h"
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

double chartFitResidual(const Member& member, const FrameReport& report) {
    const std::vector<render::EntryTruth> nominal =
        render::recordTruth(member.project, {}, 1.0, report.param.markSearchSize);
    std::vector<cv::Point2d> from, to;
    for (const EdgeRow& row : report.rows) {
        if (row.index < static_cast<int>(nominal.size()) && row.state != EdgeState::kNotLocated) {
            from.push_back(nominal[static_cast<std::size_t>(row.index)].centre);
            to.emplace_back(row.measured.x, row.measured.y);
        }
    }
    return from.size() < 2 ? std::numeric_limits<double>::quiet_NaN()
                           : fitChart(from, to).rmsResidual;
}

namespace {

// A failed call does not say which region failed or why. Measuring again with 2-px regions
// tells a chart that was found from one that was not: a found first centre lies well inside
// the frame, so its region is cut and refused by the SFR (-3), while an edge not found keeps
// its cleared centre (0, 0), whose region starts left of the frame (-2).
bool chartWasLocated(const Member& member, cv::Mat& raw, SFRParam param) {
    param.roiSize = std::min(2, param.markSearchSize);
    std::vector<SFREdgeResult> ignored;
    const int status =
        member.measure(raw.ptr<unsigned short>(), raw.cols, raw.rows, param, ignored);
    return status == 0 || status == -3;
}
}  // namespace

FrameReport measureRawFrame(const Member& member, cv::Mat& raw, SFRParam param) {
    if (raw.type() != CV_16UC1 || !raw.isContinuous()) {
        throw Failure(Cause::Failed, "internal: the frame is not packed 16-bit words");
    }
    validateParam(member, raw.cols, param);
    FrameReport report;
    report.member = member.name;
    report.project = render::projectName(member.project);
    report.width = raw.cols;
    report.height = raw.rows;
    std::vector<SFREdgeResult> edges;
    const auto start = std::chrono::steady_clock::now();
    const int status = member.measure(raw.ptr<unsigned short>(), raw.cols, raw.rows, param, edges);
    report.milliseconds =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    report.param = param;  // the RQ8 members have written their region size into it
    switch (status) {
        case 0:
            break;
        case -3:
            throw Failure(Cause::SfrFailed, "SFR calculation failed on a region");
        case -2:
        case -1:
            if (member.forced90) {
                // These members fix the region size, so the retry cannot tell.
                throw Failure(status == -2 ? Cause::NotLocated : Cause::Failed,
                              status == -2 ? "chart not located (or a region out of bounds)"
                                           : "measurement failed (status -1)");
            }
            if (chartWasLocated(member, raw, param)) {
                throw Failure(Cause::RegionOutOfBounds,
                              "region out of bounds: an edge centre lies within a half region "
                              "of the frame border");
            }
            throw Failure(status == -2 ? Cause::NotLocated : Cause::Failed,
                          status == -2 ? "chart not located" : "measurement failed (status -1)");
        default:
            throw Failure(Cause::Failed,
                          "measurement failed (status " + std::to_string(status) + ")");
    }
    for (std::size_t i = 0; i < edges.size(); ++i) {
        EdgeRow row;
        row.index = static_cast<int>(i);
        row.measured = edges[i];
        row.side = member.regionSide(row.index, static_cast<int>(edges.size()), param.roiSize);
        report.rows.push_back(row);
    }
    report.fitResidual = chartFitResidual(member, report);
    return report;
}

void requireChartFit(const FrameReport& report, double limitPx) {
    if (report.fitResidual > limitPx) {
        char residual[32];
        std::snprintf(residual, sizeof residual, "%.1f", report.fitResidual);
        throw Failure(Cause::WrongChart, "frame does not look like the " + report.project +
                                             " chart (fit residual " + residual + " px)");
    }
}

void checkSampleDepth(const Member& member, const cv::Mat& raw, std::FILE* warnings) {
    double largest = 0.0;
    cv::minMaxLoc(raw, nullptr, &largest);
    const double fullScale = std::ldexp(1.0, member.bits) - 1.0;
    if (largest > fullScale) {
        throw Failure(Cause::SampleDepth,
                      "samples exceed " + std::to_string(member.bits) + " bits (largest " +
                          std::to_string(static_cast<long>(largest)) + ", " + member.name +
                          " takes 0 .. " + std::to_string(static_cast<long>(fullScale)) + ")");
    }
    if (warnings != nullptr && largest < (fullScale + 1.0) / 16.0) {
        std::fprintf(warnings,
                     "warning: the largest sample, %ld, is below 1/16 of %d-bit full scale: "
                     "is %s the member for this frame?\n",
                     static_cast<long>(largest), member.bits, member.name.c_str());
    }
}

}  // namespace station
}  // namespace talonvireo
