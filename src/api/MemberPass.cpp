#include "api/MemberPass.h"

#include <cstdint>
#include <exception>

#include "api/ChartLocate.h"
#include "api/GreyReduction.h"
#include "locate/IntConversion.h"
#include "sfr/RegionMeasurement.h"
#include "sfr/SfrCurveMeasurement.h"
#include "sfr/SfrStatus.h"

namespace talonvireo {
namespace api {

namespace {

void measureSlot(const cv::Mat& grey, int side, float freqDivisor, const QualityRequest* quality,
                 const SfrCurveOptions* precise, SlotPass& slot) {
    const std::int64_t left = static_cast<std::int64_t>(slot.entry.x) - side / 2;
    const std::int64_t top = static_cast<std::int64_t>(slot.entry.y) - side / 2;
    // Only the top-left corner and the side are tested first, as the members always have;
    // a region past the right or bottom border then fails as OpenCV's sub-region check did.
    if (left < 0 || top < 0 || side > grey.cols || side > grey.rows) {
        slot.regionStatus = -2;
        return;
    }
    if (left + side > grey.cols || top + side > grey.rows) {
        slot.regionStatus = -1;
        return;
    }
    const cv::Rect cut(static_cast<int>(left), static_cast<int>(top), side, side);
    const cv::Mat region = grey(cut).clone();
    slot.sfr.nyquistDivisor = static_cast<double>(freqDivisor);
    sfr::SfrContext ctx;
    try {
        slot.sfrStatus = sfr::measurePreparedRegion(region, slot.sfr, ctx);
    } catch (const std::exception&) {
        slot.sfrStatus = sfr::kSfrFailed;  // TalonCalSFR's answer to any internal failure
    }
    if (slot.sfrStatus != sfr::kSfrOk) {
        slot.sfr = tagSFRResult{};
        slot.regionStatus = -3;
        return;
    }
    // Narrowed to the record's floats exactly as the members always have.
    slot.entry.sfrHalfNyquist = static_cast<float>(slot.sfr.sfrHalfNyquist[0]);
    slot.entry.sfrQuarterNyquist = static_cast<float>(slot.sfr.sfrQuarterNyquist[0]);
    slot.entry.sfrCustom = static_cast<float>(slot.sfr.sfrCustom[0]);
    if (precise != nullptr) {
        slot.preciseStatus = sfr::preciseCurveFromClassic(ctx, *precise, slot.precise);
    }
    if (quality != nullptr) {
        slot.quality = sfr::edgeQuality(ctx, region);
        if (quality->raw != nullptr) {
            sfr::countClipped((*quality->raw)(cut), slot.quality, quality->whiteLevel,
                              slot.transitionSamples, slot.clippedSamples);
        }
    }
}
}  // namespace

std::vector<SlotPass> measureSlots(const cv::Mat& grey, const std::vector<EdgeCentre>& centres,
                                   const MemberInfo& member, int roiSize, float freqDivisor,
                                   const QualityRequest* quality, const SfrCurveOptions* precise) {
    const int n = static_cast<int>(centres.size());
    std::vector<SlotPass> slots(centres.size());
    for (int i = 0; i < n; ++i) {
        slots[i].entry.x = RegularSFR::truncateToInt(centres[i].x);
        slots[i].entry.y = RegularSFR::truncateToInt(centres[i].y);
    }
    // Each region into its own slot; an exception in one (memory) ends the whole call.
    bool failed = false;
#pragma omp parallel for schedule(dynamic, 2)
    for (int i = 0; i < n; ++i) {
        try {
            measureSlot(grey, member.regionSide(i, roiSize), freqDivisor, quality, precise,
                        slots[i]);
        } catch (...) {
#pragma omp atomic write
            failed = true;
        }
    }
    if (failed) {
        throw std::bad_alloc();
    }
    return slots;
}

int memberStatusOf(const std::vector<SlotPass>& slots) {
    for (const SlotPass& s : slots) {
        if (s.regionStatus != 0) {
            return s.regionStatus;
        }
    }
    return 0;
}

bool acceptsParam(const MemberInfo& member, int width, const SFRParam& param) {
    const int mark = param.markSearchSize;
    if (mark < 1 || mark > width / 2) {
        return false;
    }
    if (member.regionRule == RegionRule::kForced90) {
        return mark >= 90;
    }
    return param.roiSize >= 1 && param.roiSize <= mark;
}

int runMember(const MemberInfo& member, const cv::Mat& raw, const SFRParam& param,
              std::vector<SFREdgeResult>& entries) {
    convert::WordDepth depth;
    if (!wordDepthOf(member.bits, depth) || !acceptsParam(member, raw.cols, param)) {
        return -1;
    }
    const cv::Mat grey = reduceToGrey(depth, member.road, raw);
    std::vector<EdgeCentre> centres(kMostSlots);
    int layoutStatus[2];
    const int n = locateChart(grey, member.chart, param.markSearchSize, true, centres.data(),
                              kMostSlots, layoutStatus);
    if (n != member.slots) {
        return -1;
    }
    if (layoutStatus[0] != 0 || layoutStatus[1] != 0) {
        return -2;
    }
    centres.resize(static_cast<std::size_t>(n));
    const std::vector<SlotPass> slots =
        measureSlots(grey, centres, member, param.roiSize, param.freqDivisor, nullptr);
    const int status = memberStatusOf(slots);
    if (status == 0) {
        entries.clear();
        for (const SlotPass& s : slots) {
            entries.push_back(s.entry);
        }
    }
    return status;
}

}  // namespace api
}  // namespace talonvireo
