// The frame report: a member's pass that goes on through every slot, with the figures read
// off the same regions.
#include "talonvireo/MemberFrameReport.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <exception>

#include "api/ChartLocate.h"
#include "api/GreyReduction.h"
#include "api/MemberPass.h"
#include "api/MemberReport.h"
#include "api/RegionFigures.h"
#include "locate/ChartFit.h"
#include "talonvireo/PixelFormat.h"
#include "talonvireo/SfrCurve.h"

namespace talonvireo {

namespace {

bool knownMember(const MemberInfo& member) {
    const MemberTable table = memberTable();
    return &member >= table.rows && &member < table.rows + table.count;
}

// What the precise method reads off every region: Nyquist/4, Nyquist/2 and the custom
// frequency.
SfrCurveOptions preciseOptions(const SFRParam& param) {
    SfrCurveOptions precise;
    precise.method = SfrMethod::kPrecise;
    precise.frequencies = {0.125, 0.25};
    if (param.freqDivisor > 0.0f) {
        precise.frequencies.push_back(0.5 / static_cast<double>(param.freqDivisor));
    }
    return precise;
}

// Every located centre proposes the design's shift that puts its own slot where it was found;
// the largest group of centres placed within kAgreementPx by one proposal.
int shiftConsensus(const std::vector<cv::Point2d>& nominal,
                   const std::vector<cv::Point2d>& located) {
    constexpr double kAgreementPx = 8.0;
    int best = 0;
    for (std::size_t i = 0; i < nominal.size(); ++i) {
        const cv::Point2d shift = located[i] - nominal[i];
        int agree = 0;
        for (std::size_t k = 0; k < nominal.size(); ++k) {
            const cv::Point2d miss = located[k] - nominal[k] - shift;
            agree += std::hypot(miss.x, miss.y) <= kAgreementPx ? 1 : 0;
        }
        best = std::max(best, agree);
    }
    return best;
}

// Distances of the located centres from the chart design fitted to them.
void fitDesign(const MemberInfo& member, int markSearchSize, MemberFrameReport& report) {
    EdgeCentre nominal[api::kMostSlots];
    const int n = chartDesign(member.chart, markSearchSize, nominal, api::kMostSlots);
    std::vector<cv::Point2d> from, to;
    std::vector<std::size_t> index;
    for (std::size_t i = 0; i < report.slots.size() && static_cast<int>(i) < n; ++i) {
        const EdgeCentre c = report.slots[i].centre;
        if (std::isfinite(c.x) && std::isfinite(c.y)) {
            from.emplace_back(nominal[i].x, nominal[i].y);
            to.emplace_back(c.x, c.y);
            index.push_back(i);
        }
    }
    if (from.size() < 2) {
        return;
    }
    report.designConsensus = shiftConsensus(from, to);
    const locate::ChartFit fit = locate::fitChartRobustly(from, to);
    report.fitResidual = fit.rmsResidual;
    report.fitMaxResidual = fit.maxResidual;
    report.fitScale = fit.scale;
    report.fitRotationDeg = fit.rotationDeg;
    for (std::size_t k = 0; k < index.size(); ++k) {
        report.slots[index[k]].designDistance = fit.residuals[k];
    }
}

SlotReport slotReport(const api::SlotPass& pass, const EdgeCentre& centre, bool located, int side) {
    SlotReport s;
    s.centre = centre;
    s.x = pass.entry.x;
    s.y = pass.entry.y;
    s.side = side;
    if (!located) {
        s.state = SlotState::kNotLocated;
        return s;
    }
    switch (pass.regionStatus) {
        case 0:
            s.state = SlotState::kMeasured;
            break;
        case -3:
            s.state = SlotState::kRefused;
            s.sfrStatus = pass.sfrStatus;
            return s;
        default:
            s.state = SlotState::kOffFrame;
            return s;
    }
    s.sfrQuarterNyquist = pass.entry.sfrQuarterNyquist;
    s.sfrHalfNyquist = pass.entry.sfrHalfNyquist;
    s.sfrCustom = pass.entry.sfrCustom;
    s.mtf50 = pass.sfr.mtf50[0];
    s.edgeAngle = pass.sfr.edgeAngle;
    const sfr::EdgeQuality& q = pass.quality;
    if (q.a != 0.0 || q.b != 0.0) {
        double normal = std::atan2(q.b, q.a) * 180.0 / 3.141592653589793;
        normal += normal > 90.0 ? -180.0 : normal <= -90.0 ? 180.0 : 0.0;
        s.normalDeg = normal;
    }
    s.darkLevel = q.darkLevel;
    s.lightLevel = q.lightLevel;
    // A dark side at 0 would make the ratio infinite; half a level is as dark as 8 bits see.
    s.contrast = q.lightLevel / std::max(q.darkLevel, 0.5);
    s.snr = (q.lightLevel - q.darkLevel) / q.noise;
    s.transitionSamples = pass.transitionSamples;
    s.clippedShare = pass.transitionSamples > 0
                         ? static_cast<double>(pass.clippedSamples) / pass.transitionSamples
                         : SlotReport::kNaN;
    return s;
}
}  // namespace

namespace api {

SFRParam memberParam(const MemberInfo& member, const SFRParam& param) {
    SFRParam used = param;
    if (member.regionRule == RegionRule::kForced90) {
        used.roiSize = 90;
    }
    return used;
}

MemberFrameReport reportOnCentres(const MemberInfo& member, const SFRParam& used,
                                  const MemberFrameOptions& options, const cv::Mat& frame,
                                  const cv::Mat& grey, const std::vector<EdgeCentre>& centres,
                                  const int layoutStatus[2], std::vector<SlotEdgeLine>* lines) {
    MemberFrameReport out;
    out.width = frame.cols;
    out.height = frame.rows;
    out.roiSize = used.roiSize;
    const int fullScale = (1 << member.bits) - 1;
    out.whiteLevel = options.whiteLevel > 0 ? options.whiteLevel : fullScale;
    out.layoutStatus[0] = layoutStatus[0];
    out.layoutStatus[1] = layoutStatus[1];
    const int n = static_cast<int>(centres.size());
    api::QualityRequest quality{&frame, static_cast<double>(out.whiteLevel)};
    // The grey region's precise curve comes with the member's pass, from the line it fitted.
    const SfrCurveOptions precise = preciseOptions(used);
    const std::vector<api::SlotPass> passes =
        api::measureSlots(grey, centres, member, used.roiSize, used.freqDivisor, &quality,
                          options.precise ? &precise : nullptr);
    const bool located = out.layoutStatus[0] == 0 && out.layoutStatus[1] == 0;
    out.memberStatus = located ? api::memberStatusOf(passes) : -2;

    long zone = 0, clipped = 0;
    for (int i = 0; i < n; ++i) {
        const EdgeCentre& c = centres[static_cast<std::size_t>(i)];
        const bool found = std::isfinite(c.x) && std::isfinite(c.y);
        SlotReport s = slotReport(passes[static_cast<std::size_t>(i)], c, found,
                                  member.regionSide(i, used.roiSize));
        if (s.state == SlotState::kMeasured) {
            zone += passes[static_cast<std::size_t>(i)].transitionSamples;
            clipped += passes[static_cast<std::size_t>(i)].clippedSamples;
        }
        if (lines != nullptr) {
            SlotEdgeLine line;
            const sfr::EdgeQuality& q = passes[static_cast<std::size_t>(i)].quality;
            if (s.state == SlotState::kMeasured && (q.a != 0.0 || q.b != 0.0)) {
                // The region's top-left corner, as measureSlots cut it.
                const double left = s.x - s.side / 2, top = s.y - s.side / 2;
                line.valid = true;
                line.normal = {q.a, q.b};
                line.offset = q.distance(c.x - left, c.y - top);
            }
            lines->push_back(line);
        }
        out.slots.push_back(std::move(s));
    }
    out.clippedShare =
        zone > 0 ? static_cast<double>(clipped) / static_cast<double>(zone) : SlotReport::kNaN;
    for (int i = 0; options.precise && i < n; ++i) {
        SlotReport& s = out.slots[static_cast<std::size_t>(i)];
        const api::SlotPass& pass = passes[static_cast<std::size_t>(i)];
        if (s.state == SlotState::kMeasured) {
            s.precise = pass.preciseStatus == 0
                            ? api::curveFigures(pass.precise.channels.at(0), "grey")
                            : CurveFigures{};
            s.precise.channel = "grey";
            s.precise.status = pass.preciseStatus;
        }
    }
    if (options.rawPlanes) {
        const int count = static_cast<int>(out.slots.size());
#pragma omp parallel for schedule(dynamic)
        for (int i = 0; i < count; ++i) {
            SlotReport& s = out.slots[static_cast<std::size_t>(i)];
            if (s.state == SlotState::kMeasured) {
                const int half = s.side / 2;
                s.planes =
                    api::rawPlaneFigures(frame, PixelFormat::Bayer16, PixelFormat::PhaseRG,
                                         cv::Rect(s.x - half, s.y - half, s.side, s.side), precise);
            }
        }
    }
    fitDesign(member, used.markSearchSize, out);
    return out;
}

}  // namespace api

namespace api {

int memberFrame(const MemberInfo& member, const std::uint16_t* raw, int width, int height,
                const SFRParam& param, const MemberFrameOptions& options, MemberFrameReport& report,
                std::vector<SlotEdgeLine>* lines) {
    try {
        if (raw == nullptr || width <= 0 || height <= 0 ||
            static_cast<std::int64_t>(width) * height > INT32_MAX || !knownMember(member)) {
            return -1;
        }
        const SFRParam used = memberParam(member, param);
        convert::WordDepth depth;
        if (!wordDepthOf(member.bits, depth) || !acceptsParam(member, width, used) ||
            options.whiteLevel < 0) {
            return -1;
        }
        const cv::Mat frame(height, width, CV_16UC1, const_cast<std::uint16_t*>(raw));
        const cv::Mat grey = reduceToGrey(depth, member.road, frame);

        std::vector<EdgeCentre> centres(kMostSlots);
        int layoutStatus[2] = {-1, -1};
        const int n = locateChart(grey, member.chart, used.markSearchSize, false, centres.data(),
                                  kMostSlots, layoutStatus);
        if (n != member.slots) {
            return -1;
        }
        centres.resize(static_cast<std::size_t>(n));
        std::vector<SlotEdgeLine> found;
        MemberFrameReport out = reportOnCentres(member, used, options, frame, grey, centres,
                                                layoutStatus, lines != nullptr ? &found : nullptr);
        report = std::move(out);
        if (lines != nullptr) {
            *lines = std::move(found);
        }
        return 0;
    } catch (const std::exception&) {
        return -1;
    }
}

}  // namespace api

int measureMemberFrame(const MemberInfo& member, const std::uint16_t* raw, int width, int height,
                       const SFRParam& param, const MemberFrameOptions& options,
                       MemberFrameReport& report) {
    return api::memberFrame(member, raw, width, height, param, options, report, nullptr);
}

}  // namespace talonvireo
