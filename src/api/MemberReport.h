// The frame report of a member's pass from its located centres on: every slot's region cut
// from the grey image and measured, its quality, and the chart design fitted to the centres.
// The whole-frame report and the tracker share it, so a tracked frame's figures are the
// member's own.
#pragma once

#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

#include "talonvireo/MemberFrameReport.h"

namespace talonvireo {
namespace api {

// The parameters the member works with: roiSize 90 where it forces 90.
SFRParam memberParam(const MemberInfo& member, const SFRParam& param);

// Where a slot's centre lies from the edge its region's SFR fitted: the line's unit normal and
// the centre's signed distance along it, px (frame axes). `valid` only for a measured slot.
struct SlotEdgeLine {
    bool valid = false;
    cv::Point2d normal;
    double offset = 0.0;
};

// `frame`: the raw words (CV_16UC1); `grey`: its grey reduction, needed only under the regions
// the centres cut; `used`: memberParam's; `layoutStatus`: the search's per layout. `lines`,
// when given, gets one SlotEdgeLine per centre.
MemberFrameReport reportOnCentres(const MemberInfo& member, const SFRParam& used,
                                  const MemberFrameOptions& options, const cv::Mat& frame,
                                  const cv::Mat& grey, const std::vector<EdgeCentre>& centres,
                                  const int layoutStatus[2],
                                  std::vector<SlotEdgeLine>* lines = nullptr);

// measureMemberFrame (same checks, same return), with each slot's edge line when `lines` is
// given: a tracker's baseline from the same pass.
int memberFrame(const MemberInfo& member, const std::uint16_t* raw, int width, int height,
                const SFRParam& param, const MemberFrameOptions& options, MemberFrameReport& report,
                std::vector<SlotEdgeLine>* lines);

}  // namespace api
}  // namespace talonvireo
