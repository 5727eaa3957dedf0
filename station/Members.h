// The whole-frame measurement members as the command line names them, each with the chart
// and sample depth it expects and one uniform way to call it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "render/ChartDesign.h"
#include "talonvireo/talonVireoSFR.h"

namespace talonvireo {
namespace station {

struct Member {
    std::string name;  // the function's name; "/PROJECT" where it is overloaded
    render::ChartProject project;
    int bits;             // significant bits of the words it unpacks
    bool eightK;          // expects 7680 x 4320 frames
    bool fixedSecondSet;  // second-set regions are 90 px whatever roiSize says
    bool forced90;        // every region 90 px (roiSize is overwritten)
    GreyRoad road;        // how the member turns the mosaic grey
    // Measures `raw` (width x height 16-bit words); on status 0 `edges` holds every entry.
    std::function<int(const std::uint16_t* raw, int width, int height, const SFRParam& param,
                      std::vector<SFREdgeResult>& edges)>
        measure;

    // Side of the region the member cuts round entry `index` of `count`.
    int regionSide(int index, int count, int roiSize) const;
    // The chart and working scale the member locates (for locateMemberEdges).
    MemberChart chart() const;
};

std::vector<Member> allMembers();

// nullptr when no member has that name.
const Member* findMember(const std::vector<Member>& members, const std::string& name);

// The member that measures a project's chart at a depth (and frame size); nullptr if none.
const Member* memberFor(const std::vector<Member>& members, render::ChartProject project, int bits,
                        bool eightK);

}  // namespace station
}  // namespace talonvireo
