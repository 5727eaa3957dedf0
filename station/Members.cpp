#include "station/Members.h"

#include <iterator>

namespace talonvireo {
namespace station {

namespace {
using render::ChartProject;

template <class Record>
using Entry = int (*)(const std::uint16_t*, int, int, const SFRParam&, Record&);

// Adapts one member to the uniform call; the record is copied out only on success.
template <class Record>
auto uniform(Entry<Record> entry) {
    return [entry](const std::uint16_t* raw, int width, int height, const SFRParam& param,
                   std::vector<SFREdgeResult>& edges) {
        Record record{};
        const int status = entry(raw, width, height, param, record);
        if (status == 0) {
            edges.assign(std::begin(record.edges), std::end(record.edges));
        }
        return status;
    };
}

// The HLX6C and RQ8 members take the Malvar road, the others the edge-directed one.
Member member(std::string name, ChartProject project, int bits, bool eightK, bool fixedSecondSet,
              bool forced90, decltype(Member::measure) measure) {
    const bool malvar = project == ChartProject::HLX6C || project == ChartProject::K83P09BQ;
    return {std::move(name),
            project,
            bits,
            eightK,
            fixedSecondSet,
            forced90,
            malvar ? GreyRoad::kMalvar : GreyRoad::kEdgeDirected,
            std::move(measure)};
}
}  // namespace

int Member::regionSide(int index, int count, int roiSize) const {
    if (forced90 || (fixedSecondSet && index >= count / 2)) {
        return 90;
    }
    return roiSize;
}

MemberChart Member::chart() const {
    switch (project) {
        case ChartProject::K31R22BX:
            return MemberChart::kK31R22BX;
        case ChartProject::K74T16BX:
            return eightK ? MemberChart::kK74T16BX8K : MemberChart::kK74T16BX;
        case ChartProject::HLX6C:
            return eightK ? MemberChart::kHLX6C8K : MemberChart::kHLX6C;
        case ChartProject::K83P09BQ:
            return MemberChart::kK83P09BQ;
    }
    return MemberChart::kK74T16BX;
}

std::vector<Member> allMembers() {
    using P = ChartProject;
    const Entry<SFRResult> full10 = talonvireoSFR;
    const Entry<SFRResult_HLX5> hlx10 = talonvireoSFR;
    const Entry<SFRResult> full14 = talonvireoSFR_raw14;
    const Entry<SFRResult_HLX5> hlx14 = talonvireoSFR_raw14;
    return {
        member("talonvireoSFR/K31R22BX", P::K31R22BX, 10, false, false, false, uniform(full10)),
        member("talonvireoSFR/K74T16BX", P::K74T16BX, 10, false, false, false, uniform(hlx10)),
        member("talonvireoSFR_raw14/K31R22BX", P::K31R22BX, 14, false, false, false,
               uniform(full14)),
        member("talonvireoSFR_raw14/K74T16BX", P::K74T16BX, 14, false, false, false,
               uniform(hlx14)),
        member("talonvireoSFR_raw16", P::K74T16BX, 16, false, false, false,
               uniform<SFRResult_HLX5>(talonvireoSFR_raw16)),
        member("talonvireoSFR_raw16_HLX5_8K", P::K74T16BX, 16, true, false, false,
               uniform<SFRResult_HLX5>(talonvireoSFR_raw16_HLX5_8K)),
        member("talonvireoSFR_raw10_HLX6C", P::HLX6C, 10, false, true, false,
               uniform<SFRResult_HLX5>(talonvireoSFR_raw10_HLX6C)),
        member("talonvireoSFR_raw14_HLX6C", P::HLX6C, 14, false, true, false,
               uniform<SFRResult_HLX5>(talonvireoSFR_raw14_HLX6C)),
        member("talonvireoSFR_raw16_HLX6C", P::HLX6C, 16, false, true, false,
               uniform<SFRResult_HLX5>(talonvireoSFR_raw16_HLX6C)),
        member("talonvireoSFR_raw16_HLX6C_8K", P::HLX6C, 16, true, true, false,
               uniform<SFRResult_HLX5>(talonvireoSFR_raw16_HLX6C_8K)),
        member("talonvireoSFR_raw10_RQ8", P::K83P09BQ, 10, false, false, true,
               uniform<SFRResult_HLX5>(talonvireoSFR_raw10_RQ8)),
        member("talonvireoSFR_raw14_RQ8", P::K83P09BQ, 14, false, false, true,
               uniform<SFRResult_HLX5>(talonvireoSFR_raw14_RQ8)),
        member("talonvireoSFR_raw16_RQ8", P::K83P09BQ, 16, false, false, true,
               uniform<SFRResult_HLX5>(talonvireoSFR_raw16_RQ8)),
    };
}

const Member* findMember(const std::vector<Member>& members, const std::string& name) {
    for (const Member& m : members) {
        if (m.name == name) {
            return &m;
        }
    }
    return nullptr;
}

const Member* memberFor(const std::vector<Member>& members, render::ChartProject project, int bits,
                        bool eightK) {
    for (const Member& m : members) {
        if (m.project == project && m.bits == bits && m.eightK == eightK) {
            return &m;
        }
    }
    return nullptr;
}

}  // namespace station
}  // namespace talonvireo
