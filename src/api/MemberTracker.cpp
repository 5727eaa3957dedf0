#include "talonvireo/MemberTracker.h"

#include <algorithm>
#include <cmath>
#include <exception>

#include "api/GreyReduction.h"
#include "api/MemberPass.h"
#include "api/MemberReport.h"
#include "api/RegionGrey.h"

namespace talonvireo {

namespace {

// The chart's shift is fitted to the edges' moves across themselves; edges that disagree by
// more than this (px, rms) mean the chart turned or changed scale: locate afresh.
constexpr double kMostShiftResidual = 0.5;
// Shifts below this (px) are the edges' own noise on a still chart: the centres stay where the
// member put them, so a still chart's figures stay the member's. Larger ones move the centres,
// and a region is re-cut where its centre crosses into another pixel.
constexpr double kFollowShift = 0.2;
// Beyond this share of the smallest region's side, an edge may have left its region.
constexpr double kMostShiftShare = 0.25;

bool knownMember(const MemberInfo* member) {
    const MemberTable table = memberTable();
    return member >= table.rows && member < table.rows + table.count;
}

// The regions the members cut round the centres (truncated toward zero), for the grey road.
std::vector<cv::Rect> regionsOf(const MemberInfo& member, const SFRParam& used,
                                const std::vector<EdgeCentre>& centres) {
    std::vector<cv::Rect> regions;
    for (std::size_t i = 0; i < centres.size(); ++i) {
        const EdgeCentre& c = centres[i];
        if (!std::isfinite(c.x) || !std::isfinite(c.y)) {
            continue;
        }
        const int side = member.regionSide(static_cast<int>(i), used.roiSize);
        const int x = static_cast<int>(c.x), y = static_cast<int>(c.y);
        regions.emplace_back(x - side / 2, y - side / 2, side, side);
    }
    return regions;
}

// The chart's shift from every measured edge's move across itself: least squares of
// normal . shift = offset when located - offset now. False when the edges do not pin both
// directions down.
bool chartShift(const std::vector<api::SlotEdgeLine>& now, const std::vector<double>& located,
                cv::Point2d& shift, double& residual) {
    cv::Matx22d m = cv::Matx22d::zeros();
    cv::Vec2d v(0, 0);
    int n = 0;
    for (std::size_t i = 0; i < now.size(); ++i) {
        if (!now[i].valid || !std::isfinite(located[i])) {
            continue;
        }
        const cv::Vec2d nrm(now[i].normal.x, now[i].normal.y);
        const double move = located[i] - now[i].offset;
        m += nrm * nrm.t();
        v += move * nrm;
        ++n;
    }
    if (n < 2 || std::abs(cv::determinant(m)) < 1e-3 * n * n) {
        return false;
    }
    const cv::Vec2d t = m.inv() * v;
    shift = {t[0], t[1]};
    double sum2 = 0.0;
    for (std::size_t i = 0; i < now.size(); ++i) {
        if (now[i].valid && std::isfinite(located[i])) {
            const double r = now[i].normal.dot(shift) - (located[i] - now[i].offset);
            sum2 += r * r;
        }
    }
    residual = std::sqrt(sum2 / n);
    return true;
}

}  // namespace

MemberTracker::MemberTracker(const MemberInfo& member, const SFRParam& param,
                             const MemberFrameOptions& options)
    : member_(&member), param_(param), options_(options) {}

int MemberTracker::locate(const std::uint16_t* raw, int width, int height,
                          MemberFrameReport& report) {
    MemberFrameReport full;
    std::vector<api::SlotEdgeLine> lines;
    const int status =
        api::memberFrame(*member_, raw, width, height, param_, options_, full, &lines);
    if (status != 0) {
        return status;
    }
    relocated_ = true;
    width_ = width;
    height_ = height;
    centres_.clear();
    lineOffsets_.clear();
    if (full.memberStatus == 0) {
        // The located centres, and where each lies from its edge: the baseline the chart's
        // moves are read against.
        for (std::size_t i = 0; i < full.slots.size(); ++i) {
            centres_.push_back(full.slots[i].centre);
            lineOffsets_.push_back(lines[i].valid ? lines[i].offset : std::nan(""));
        }
        grey_.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
    }
    report = std::move(full);
    return 0;
}

int MemberTracker::measure(const std::uint16_t* raw, int width, int height,
                           MemberFrameReport& report) {
    try {
        if (raw == nullptr || width <= 0 || height <= 0 ||
            static_cast<std::int64_t>(width) * height > INT32_MAX || !knownMember(member_)) {
            return -1;
        }
        if (centres_.empty() || width != width_ || height != height_) {
            return locate(raw, width, height, report);
        }
        const SFRParam used = api::memberParam(*member_, param_);
        convert::WordDepth depth = convert::WordDepth::k16;
        if (!api::wordDepthOf(member_->bits, depth)) {
            return -1;
        }
        const cv::Mat frame(height, width, CV_16UC1, const_cast<std::uint16_t*>(raw));
        cv::Mat grey(height, width, CV_8UC1, grey_.data());
        const int located[2] = {0, 0};
        int smallest = 1 << 30;
        for (std::size_t i = 0; i < centres_.size(); ++i) {
            smallest = std::min(smallest, member_->regionSide(static_cast<int>(i), used.roiSize));
        }
        // At most one re-cut: a chart that moved a pixel or more is measured where it now is.
        for (int pass = 0; pass < 2; ++pass) {
            api::reduceRegionsToGrey(depth, member_->road, frame,
                                     regionsOf(*member_, used, centres_), grey);
            std::vector<api::SlotEdgeLine> lines;
            MemberFrameReport out = api::reportOnCentres(*member_, used, options_, frame, grey,
                                                         centres_, located, &lines);
            cv::Point2d shift;
            double residual = 0.0;
            if (out.memberStatus != 0 || !chartShift(lines, lineOffsets_, shift, residual) ||
                residual > kMostShiftResidual ||
                std::hypot(shift.x, shift.y) > kMostShiftShare * smallest) {
                return locate(raw, width, height, report);
            }
            if (pass == 1 || std::hypot(shift.x, shift.y) < kFollowShift) {
                relocated_ = false;
                report = std::move(out);
                return 0;
            }
            bool recut = false;
            for (std::size_t i = 0; i < centres_.size(); ++i) {
                EdgeCentre& c = centres_[i];
                const int x = static_cast<int>(c.x), y = static_cast<int>(c.y);
                c.x += static_cast<float>(shift.x);
                c.y += static_cast<float>(shift.y);
                recut = recut || static_cast<int>(c.x) != x || static_cast<int>(c.y) != y;
                out.slots[i].centre = c;
            }
            if (!recut) {
                relocated_ = false;
                report = std::move(out);
                return 0;
            }
        }
        return -1;  // not reached
    } catch (const std::exception&) {
        return -1;
    }
}

}  // namespace talonvireo
