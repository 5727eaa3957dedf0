// The one body behind every whole-frame member and the frame report: a member's row of data
// (depth, road, chart, region rule) applied to one frame. Members stop where their status is
// decided; the report goes on through every slot that can be measured.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "sfr/EdgeQuality.h"
#include "talonvireo/MeasurementRecords.h"
#include "talonvireo/MemberTable.h"
#include "talonvireo/RegionSfr.h"
#include "talonvireo/SfrCurve.h"

namespace talonvireo {
namespace api {

inline constexpr int kPixelFormatGrey8 = 256;
// The most record slots any member has: K31R22BX, two layouts of 34.
inline constexpr int kMostSlots = 68;

// One slot's region, as the member's region step sees it.
struct SlotPass {
    // 0 measured; -2 the region starts left of or above the frame, or is larger than it; -1
    // it runs past the right or bottom border; -3 the SFR refused it (sfrStatus).
    int regionStatus = 0;
    int sfrStatus = 0;
    SFREdgeResult entry{};  // the record entry: truncated centre, figures on success
    tagSFRResult sfr{};     // everything TalonCalSFR reports for the region
    // With quality: the edge's plateaus, noise and transition, and the raw samples counted
    // in its transition zone.
    sfr::EdgeQuality quality;
    long transitionSamples = 0;
    long clippedSamples = 0;
    // With precise options: the precise curve of the measured region, started from the line
    // the member's own pass fitted (what measureSfrCurve gives for the region), and its status.
    SfrCurve precise;
    int preciseStatus = 0;
};

// Beyond the record: the quality figures need the raw words under each region.
struct QualityRequest {
    const cv::Mat* raw = nullptr;  // CV_16UC1, the frame the grey was made from
    double whiteLevel = 0.0;
};

// Cuts a region of the member's side round every centre (truncated toward zero, NaN read as
// 0) from `grey` and measures it, in parallel; `quality` null skips the quality figures,
// `precise` null the precise curve.
std::vector<SlotPass> measureSlots(const cv::Mat& grey, const std::vector<EdgeCentre>& centres,
                                   const MemberInfo& member, int roiSize, float freqDivisor,
                                   const QualityRequest* quality,
                                   const SfrCurveOptions* precise = nullptr);

// The member's status from its slots: the first failing slot in slot order decides, as a
// one-by-one walk would.
int memberStatusOf(const std::vector<SlotPass>& slots);

// The member's parameter rules: false for a markSearchSize outside 1 .. width / 2, or (unless
// every region is 90) a roiSize outside 1 .. markSearchSize; 90 .. width / 2 for kForced90.
bool acceptsParam(const MemberInfo& member, int width, const SFRParam& param);

// The member's whole pass up to its status, for the exported members: 0 with `entries`
// holding every record entry, or -1 / -2 / -3. `raw` is CV_16UC1. Throws as OpenCV throws.
int runMember(const MemberInfo& member, const cv::Mat& raw, const SFRParam& param,
              std::vector<SFREdgeResult>& entries);

}  // namespace api
}  // namespace talonvireo
