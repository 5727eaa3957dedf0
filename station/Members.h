// The whole-frame members as the station names them: the library's member table, with the
// lookups the command line and the Python module need.
#pragma once

#include <string>
#include <vector>

#include "talonvireo/talonVireoSFR.h"

namespace talonvireo {
namespace station {

struct Member {
    const MemberInfo* info = nullptr;  // the library's row
    std::string name;                  // info->name: "talonvireoSFR/K74T16BX", ...
    std::string chartName;             // the chart it expects: "K74T16BX"
    int bits = 0;                      // significant bits of the words it unpacks
    bool eightK = false;               // expects 7680 x 4320 frames
    bool forced90 = false;             // every region 90 px (roiSize is overwritten)
    GreyRoad road = GreyRoad::kMalvar;

    // Side of the region the member cuts round record slot `index`.
    int regionSide(int index, int roiSize) const { return info->regionSide(index, roiSize); }
    MemberChart chart() const { return info->chart; }
};

// Every row of the library's member table.
std::vector<Member> allMembers();

// nullptr when no member has that name.
const Member* findMember(const std::vector<Member>& members, const std::string& name);

// The member that measures a chart at a depth (and frame size); nullptr if none.
const Member* memberFor(const std::vector<Member>& members, const std::string& chartName, int bits,
                        bool eightK);

}  // namespace station
}  // namespace talonvireo
