#include "FrameJob.h"

#include <algorithm>
#include <chrono>
#include <string>

#include "CliError.h"

namespace talonvireo {
namespace cli {

namespace {
void validate(const Member& member, int width, const SFRParam& param) {
    const int mark = param.markSearchSize;
    if (mark < 1 || mark > width / 2) {
        throw CliError(kExitBadArguments, "--mark must be 1 .. " + std::to_string(width / 2) +
                                              " (half the frame width)");
    }
    if (member.forced90) {
        if (mark < 90) {
            throw CliError(kExitBadArguments, member.name + " needs --mark of at least 90");
        }
        return;
    }
    if (param.roiSize < 1 || param.roiSize > mark) {
        throw CliError(kExitBadArguments,
                       "--roi must be 1 .. --mark (" + std::to_string(mark) + ")");
    }
}

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
        throw CliError(kExitFailed, "internal: the frame is not packed 16-bit words");
    }
    validate(member, raw.cols, param);
    FrameReport report;
    report.member = member.name;
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
            throw CliError(kExitSfrFailed, "SFR calculation failed on a region");
        case -2:
        case -1:
            if (member.forced90) {
                // These members fix the region size, so the retry cannot tell.
                throw CliError(status == -2 ? kExitNotLocated : kExitFailed,
                               status == -2 ? "chart not located (or a region out of bounds)"
                                            : "measurement failed (status -1)");
            }
            if (chartWasLocated(member, raw, param)) {
                throw CliError(kExitRegionOutOfBounds,
                               "region out of bounds: an edge centre lies within a half region "
                               "of the frame border");
            }
            throw CliError(status == -2 ? kExitNotLocated : kExitFailed,
                           status == -2 ? "chart not located" : "measurement failed (status -1)");
        default:
            throw CliError(kExitFailed,
                           "measurement failed (status " + std::to_string(status) + ")");
    }
    for (std::size_t i = 0; i < edges.size(); ++i) {
        EdgeRow row;
        row.index = static_cast<int>(i);
        row.measured = edges[i];
        row.side = member.regionSide(row.index, static_cast<int>(edges.size()), param.roiSize);
        report.rows.push_back(row);
    }
    return report;
}

}  // namespace cli
}  // namespace talonvireo
