// Measuring one raw frame with one member: the library's frame report laid out as the
// station's, every failure turned into its cause and a one-line reason.
#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "station/EdgeReport.h"
#include "station/Members.h"
#include "talonvireo/MemberTracker.h"

namespace talonvireo {
namespace station {

// Above this root-mean-square residual (px) of the chart fit, a frame is taken for another
// chart. Measured on rendered 4000 x 3000 frames, sigma 0.9: the right chart fits within
// 1.1 px shifted, turned and noisy, 2.9 px scaled by 3 %, 9 to 25 px under a perspective of
// 1e-5 per pixel (which a similarity cannot follow); every wrong chart that a member still
// "locates" leaves 61 px (an HLX6C frame read as K83P09BQ) to 164 px (K31R22BX as K74T16BX).
inline constexpr double kChartFitLimitPx = 35.0;

// Throws Failure (bad input) for parameters the member would refuse, naming the reason.
void validateParam(const Member& member, int width, const SFRParam& param);

// Refuses (Failure, sample depth) a frame whose largest sample exceeds the member's depth;
// adds a warning to `warnings` when the largest sample is below 1/16 of that full scale.
// Returns the largest sample.
int checkSampleDepth(const Member& member, const cv::Mat& raw, std::vector<std::string>& warnings);

// What to measure beyond the member's own pass.
struct MeasureOptions {
    bool precise = false;  // the precise method on every grey region
    bool planes = false;   // and on each raw colour plane
    int whiteLevel = 0;    // raw level counted as clipped; 0: the member's full scale
};

// validateParam, then one pass of the member over `raw` (CV_16UC1): a row per record slot with
// what became of it and every figure the pass gives. When the member fails, the report is
// still whole and says why (FrameReport::memberFailure, memberCause); requireMemberSuccess
// turns that into a Failure. Throws Failure for bad arguments or an internal failure. With a
// tracker (made with `param` and `options`), its pass replaces the member's.
FrameReport measureRawFrame(const Member& member, const cv::Mat& raw, const SFRParam& param,
                            const MeasureOptions& options = {}, MemberTracker* tracker = nullptr);

// The station's report of one pass of `member` (measureMemberFrame's, or a tracker's): a row
// per record slot, and the member's failure explained when it failed.
FrameReport frameReportOf(const Member& member, const MemberFrameReport& pass,
                          const SFRParam& param, const MeasureOptions& options = {});

// Throws the member's failure (Failure with its cause) when the report holds one.
void requireMemberSuccess(const FrameReport& report);

// Throws Failure when the report's chart fit exceeds `limitPx`: misplaced when most located
// edges still sit on the fitted design (the chart is there, the locator was misled by a
// shift or something in view), wrong chart when they do not.
void requireChartFit(const FrameReport& report, double limitPx = kChartFitLimitPx);

}  // namespace station
}  // namespace talonvireo
