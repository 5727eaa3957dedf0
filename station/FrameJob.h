// Measuring one raw frame with one member, turning every failure into its own exit status
// and a one-line reason.
#pragma once

#include <cstdio>

#include <opencv2/core.hpp>

#include "station/EdgeReport.h"
#include "station/Members.h"

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
// warns on `warnings` (unless null) when the largest sample is below 1/16 of that full scale.
void checkSampleDepth(const Member& member, const cv::Mat& raw, std::FILE* warnings);

// validateParam, then measures `raw` (CV_16UC1) and returns the report with one row per
// entry and the chart fit of its centres. Throws Failure: bad arguments, chart not
// located, region out of bounds, SFR calculation failed.
FrameReport measureRawFrame(const Member& member, cv::Mat& raw, SFRParam param);

// The root-mean-square residual (px) of the best similarity fit of the report's located
// centres onto the member's chart design, slot by slot; NaN with fewer than two centres.
double chartFitResidual(const Member& member, const FrameReport& report);

// Throws Failure (wrong chart) when the report's chart fit exceeds `limitPx`.
void requireChartFit(const FrameReport& report, double limitPx = kChartFitLimitPx);

}  // namespace station
}  // namespace talonvireo
