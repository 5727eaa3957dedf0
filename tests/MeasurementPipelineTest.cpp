// The whole-frame body's region step on centres placed exactly where a case needs them: on a
// rendered slanted edge, on a flat patch, or a pixel either side of a border limit.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include "TestRegions.h"

#include "api/MemberPass.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;
using talonvireo::testing::renderGrey8;
using talonvireo::testing::widen16;

constexpr int kWidth = 400;
constexpr int kHeight = 300;

// The edge runs top to bottom through (45, 149.5), its upper end leaning 5 degrees right;
// everything right of x = 70 is flat light.
cv::Mat edgeFrame() {
    render::SlantedEdgeScene scene;
    scene.width = kWidth;
    scene.height = kHeight;
    scene.sigma = 0.8;
    scene.angleDeg = -5.0;
    scene.shiftX = 45.0 - (kWidth - 1) / 2.0;
    return widen16(renderGrey8(scene));
}

constexpr K74T16BX::Centre kOnEdge{45.0f, 150.0f};
constexpr K74T16BX::Centre kOnFlat{320.0f, 150.0f};

// Every centre on the edge unless a case moves one.
struct Placement {
    std::array<K74T16BX::Centre, 52> centres;
};

Placement allOnEdge() {
    Placement p;
    p.centres.fill(kOnEdge);
    return p;
}

struct Outcome {
    int status;
    std::vector<api::SlotPass> slots;
};

// The region step of a 52-slot member under `rule`, on centres placed by the case.
Outcome run(const Placement& placement, RegionRule rule, int roiSize) {
    const cv::Mat raw = edgeFrame();
    cv::Mat grey(raw.rows, raw.cols, CV_8UC1);
    EXPECT_EQ(rawFrameToGrey(raw.ptr<std::uint16_t>(), raw.cols, raw.rows, 16,
                             GreyRoad::kEdgeDirected, grey.data),
              0);
    MemberInfo member = memberTable().rows[4];  // talonvireoSFR_raw16: 52 slots
    member.regionRule = rule;
    std::vector<EdgeCentre> centres;
    for (const K74T16BX::Centre& c : placement.centres) {
        centres.push_back({c.x, c.y});
    }
    std::vector<api::SlotPass> slots =
        api::measureSlots(grey, centres, member, roiSize, 4.0f, nullptr);
    return {api::memberStatusOf(slots), std::move(slots)};
}

TEST(MeasurementPipeline, EveryRegionOnTheEdgeIsMeasured) {
    const Outcome out = run(allOnEdge(), RegionRule::kRoiSize, 80);
    ASSERT_EQ(out.status, 0);
    for (const api::SlotPass& slot : out.slots) {
        const SFREdgeResult& e = slot.entry;
        EXPECT_EQ(e.x, 45);
        EXPECT_EQ(e.y, 150);
        EXPECT_GT(e.sfrQuarterNyquist, 0.5f);
    }
}

TEST(MeasurementPipeline, AFailingLastRegionReturnsMinus3) {
    Placement p = allOnEdge();
    p.centres[51] = kOnFlat;  // a flat patch: TalonCalSFR refuses it for lack of contrast
    const Outcome out = run(p, RegionRule::kRoiSize, 80);
    EXPECT_EQ(out.status, -3);
}

TEST(MeasurementPipeline, AFailingFirstRegionReturnsMinus3) {
    Placement p = allOnEdge();
    p.centres[0] = kOnFlat;
    const Outcome out = run(p, RegionRule::kRoiSize, 80);
    EXPECT_EQ(out.status, -3);
}

// Second-set regions of the HLX6C members are 90 px whatever roiSize says, so their centres
// need 45 px on the left and top.
TEST(MeasurementPipeline, FixedSecondSetCentreLessThan45FromTheLeftReturnsMinus2) {
    Placement p = allOnEdge();
    p.centres[40] = {45.0f, 150.0f};
    EXPECT_EQ(run(p, RegionRule::kFixedSecondLayout, 40).status, 0);

    p.centres[40] = {44.0f, 150.0f};
    const Outcome out = run(p, RegionRule::kFixedSecondLayout, 40);
    EXPECT_EQ(out.status, -2);
}

TEST(MeasurementPipeline, FixedSecondSetCentreLessThan45FromTheTopReturnsMinus2) {
    // On the edge near row 45: the lean moves it about 9 px right of row 150's x.
    const K74T16BX::Centre nearTop{54.0f, 44.0f};
    const K74T16BX::Centre justInside{54.0f, 45.0f};
    Placement p = allOnEdge();
    p.centres[51] = justInside;
    EXPECT_EQ(run(p, RegionRule::kFixedSecondLayout, 40).status, 0);

    p.centres[51] = nearTop;
    const Outcome out = run(p, RegionRule::kFixedSecondLayout, 40);
    EXPECT_EQ(out.status, -2);
}

TEST(MeasurementPipeline, FixedSecondSetUsesNinetyPixelRegionsWhateverRoiSizeSays) {
    // With 40-px regions a second-set centre 35 px from the left fits; with 90 it does not.
    Placement p = allOnEdge();
    p.centres[30] = {35.0f, 150.0f};
    EXPECT_EQ(run(p, RegionRule::kRoiSize, 40).status, 0);
    EXPECT_EQ(run(p, RegionRule::kFixedSecondLayout, 40).status, -2);
}

}  // namespace
