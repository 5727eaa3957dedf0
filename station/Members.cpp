#include "station/Members.h"

namespace talonvireo {
namespace station {

std::vector<Member> allMembers() {
    const MemberTable table = memberTable();
    std::vector<Member> members;
    for (int i = 0; i < table.count; ++i) {
        const MemberInfo& row = table.rows[i];
        members.push_back({&row, row.name, row.chartName, row.bits, row.eightK,
                           row.regionRule == RegionRule::kForced90, row.road});
    }
    return members;
}

const Member* findMember(const std::vector<Member>& members, const std::string& name) {
    for (const Member& m : members) {
        if (m.name == name) {
            return &m;
        }
    }
    return nullptr;
}

const Member* memberFor(const std::vector<Member>& members, const std::string& chartName, int bits,
                        bool eightK) {
    for (const Member& m : members) {
        if (m.chartName == chartName && m.bits == bits && m.eightK == eightK) {
            return &m;
        }
    }
    return nullptr;
}

}  // namespace station
}  // namespace talonvireo
