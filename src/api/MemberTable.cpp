// The thirteen whole-frame members as rows of data. The exported functions, the command line
// and the Python module all read them; a member is nothing but its row applied to a frame.
#include "talonvireo/MemberTable.h"

#include <cstring>

#include "locate/ChartDesigns.h"

namespace talonvireo {

namespace {
using C = MemberChart;
using G = GreyRoad;
using R = MemberRecord;
using Rule = RegionRule;

constexpr MemberInfo kMembers[] = {
    {"talonvireoSFR/K31R22BX", "talonvireoSFR", "K31R22BX", C::kK31R22BX, 10, G::kEdgeDirected,
     R::kSFRResult, Rule::kRoiSize, 68, false},
    {"talonvireoSFR/K74T16BX", "talonvireoSFR", "K74T16BX", C::kK74T16BX, 10, G::kEdgeDirected,
     R::kSFRResult_HLX5, Rule::kRoiSize, 52, false},
    {"talonvireoSFR_raw14/K31R22BX", "talonvireoSFR_raw14", "K31R22BX", C::kK31R22BX, 14,
     G::kEdgeDirected, R::kSFRResult, Rule::kRoiSize, 68, false},
    {"talonvireoSFR_raw14/K74T16BX", "talonvireoSFR_raw14", "K74T16BX", C::kK74T16BX, 14,
     G::kEdgeDirected, R::kSFRResult_HLX5, Rule::kRoiSize, 52, false},
    {"talonvireoSFR_raw16", "talonvireoSFR_raw16", "K74T16BX", C::kK74T16BX, 16, G::kEdgeDirected,
     R::kSFRResult_HLX5, Rule::kRoiSize, 52, false},
    {"talonvireoSFR_raw16_HLX5_8K", "talonvireoSFR_raw16_HLX5_8K", "K74T16BX", C::kK74T16BX8K, 16,
     G::kEdgeDirected, R::kSFRResult_HLX5, Rule::kRoiSize, 52, true},
    {"talonvireoSFR_raw10_HLX6C", "talonvireoSFR_raw10_HLX6C", "HLX6C", C::kHLX6C, 10, G::kMalvar,
     R::kSFRResult_HLX5, Rule::kFixedSecondLayout, 52, false},
    {"talonvireoSFR_raw14_HLX6C", "talonvireoSFR_raw14_HLX6C", "HLX6C", C::kHLX6C, 14, G::kMalvar,
     R::kSFRResult_HLX5, Rule::kFixedSecondLayout, 52, false},
    {"talonvireoSFR_raw16_HLX6C", "talonvireoSFR_raw16_HLX6C", "HLX6C", C::kHLX6C, 16, G::kMalvar,
     R::kSFRResult_HLX5, Rule::kFixedSecondLayout, 52, false},
    {"talonvireoSFR_raw16_HLX6C_8K", "talonvireoSFR_raw16_HLX6C_8K", "HLX6C", C::kHLX6C8K, 16,
     G::kMalvar, R::kSFRResult_HLX5, Rule::kFixedSecondLayout, 52, true},
    {"talonvireoSFR_raw10_RQ8", "talonvireoSFR_raw10_RQ8", "K83P09BQ", C::kK83P09BQ, 10, G::kMalvar,
     R::kSFRResult_HLX5, Rule::kForced90, 52, false},
    {"talonvireoSFR_raw14_RQ8", "talonvireoSFR_raw14_RQ8", "K83P09BQ", C::kK83P09BQ, 14, G::kMalvar,
     R::kSFRResult_HLX5, Rule::kForced90, 52, false},
    {"talonvireoSFR_raw16_RQ8", "talonvireoSFR_raw16_RQ8", "K83P09BQ", C::kK83P09BQ, 16, G::kMalvar,
     R::kSFRResult_HLX5, Rule::kForced90, 52, false},
};
constexpr int kMemberCount = static_cast<int>(sizeof kMembers / sizeof kMembers[0]);
}  // namespace

MemberTable memberTable() {
    return {kMembers, kMemberCount};
}

const MemberInfo* findMember(const char* name) {
    if (name == nullptr) {
        return nullptr;
    }
    for (const MemberInfo& m : kMembers) {
        if (std::strcmp(m.name, name) == 0) {
            return &m;
        }
    }
    return nullptr;
}

int chartDesign(MemberChart chart, double markSearchSize, EdgeCentre* nominal, int capacity) {
    const locate::DesignSlots design = locate::designSlots(chart);
    if (nominal == nullptr || design.slots == nullptr || capacity < design.count) {
        return -1;
    }
    for (int i = 0; i < design.count; ++i) {
        const locate::DesignSlot& s = design.slots[i];
        nominal[i] = {static_cast<float>(s.x + markSearchSize * s.alongX),
                      static_cast<float>(s.y + markSearchSize * s.alongY)};
    }
    return design.count;
}

}  // namespace talonvireo
