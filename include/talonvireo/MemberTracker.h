// A member's chart followed through a stream of frames (a lens being focused or aligned): the
// first frame is located as the member locates it; every next frame reads only the raw words
// under the regions (with the demosaic's margin), reduces only them to grey, bit for bit as the
// whole-frame road does, and measures each region where the chart now is. The chart is followed
// by the shift its edges show; it is located afresh when an edge is lost or refused, or moves
// further than the regions allow.
#pragma once

#include <cstdint>
#include <vector>

#include "talonvireo/Export.h"
#include "talonvireo/MemberFrameReport.h"

namespace talonvireo {

/// One stream's tracker: not shared between threads (one tracker per stream, as many streams
/// as threads).
class TALONVIREO_API MemberTracker {
public:
    /// `member` a row of memberTable(); `param` as the member takes it.
    MemberTracker(const MemberInfo& member, const SFRParam& param,
                  const MemberFrameOptions& options = {});

    /// Measures one frame into `report`, exactly what measureMemberFrame gives for a frame
    /// whose located centres are the tracked ones (on a still chart: the member's own record,
    /// bit for bit). Returns 0, or -1 for what measureMemberFrame refuses (report untouched).
    /// Never throws.
    int measure(const std::uint16_t* raw, int width, int height, MemberFrameReport& report);

    /// Whether the last frame was located afresh (the first, and any after the chart was lost).
    bool relocated() const { return relocated_; }

    /// The tracked edge centres (NaN where an edge is not followed); empty before a frame
    /// was located.
    const std::vector<EdgeCentre>& centres() const { return centres_; }

private:
    int locate(const std::uint16_t* raw, int width, int height, MemberFrameReport& report);

    const MemberInfo* member_;
    SFRParam param_;
    MemberFrameOptions options_;
    int width_ = 0;
    int height_ = 0;
    bool relocated_ = false;
    std::vector<EdgeCentre> centres_;
    std::vector<double> lineOffsets_;  // each centre's distance from its edge when located
    std::vector<unsigned char> grey_;  // the regions' grey, reused frame after frame
};

}  // namespace talonvireo
