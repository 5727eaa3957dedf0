// The whole-frame body driven by stand-in locate functions, so that every centre is placed
// exactly where a case needs it: on a rendered slanted edge, on a flat patch, or a pixel
// either side of a border limit.
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "TestRegions.h"

#include "api/MeasurementPipeline.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;
using api::GreyRoad;
using api::RegionRule;
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

// Centres the stand-in locators hand out: every one on the edge unless a case moves one.
struct Placement {
    std::array<K74T16BX::Centre, 52> centres;
};

Placement allOnEdge() {
    Placement p;
    p.centres.fill(kOnEdge);
    return p;
}

// The locate signature has no room for a context pointer; each test sets this before the
// call and nothing else runs on its thread meanwhile.
thread_local Placement tPlacement = allOnEdge();

int locateFirst(const api::LocateImages&, K74T16BX::Param, K74T16BX::Result& r) {
    for (int k = 0; k < 26; ++k)
        r.centres[k] = tPlacement.centres[k];
    return 0;
}

int locateSecond(const api::LocateImages&, K74T16BX::Param, K74T16BX::Result& r) {
    for (int k = 0; k < 26; ++k)
        r.centres[k] = tPlacement.centres[26 + k];
    return 0;
}

using StandInPair = api::LocatePair<K74T16BX::Param, K74T16BX::Result, 26>;
constexpr StandInPair kStandIn{&locateFirst, &locateSecond, 0.5};

struct Outcome {
    int status;
    bool untouched;  // the record still holds the sentinel pattern
    SFRResult_HLX5 record;
};

Outcome run(const Placement& placement, RegionRule rule, int roiSize) {
    tPlacement = placement;
    cv::Mat raw = edgeFrame();
    SFRResult_HLX5 record;
    std::memset(&record, 0xA5, sizeof record);
    SFRResult_HLX5 sentinel;
    std::memcpy(&sentinel, &record, sizeof record);
    const int status =
        api::measureFrame(convert::WordDepth::k16, GreyRoad::kImageTransform, kStandIn, rule,
                          raw.data, kWidth, kHeight, SFRParam{4.0f, roiSize, 100}, record);
    return {status, std::memcmp(&record, &sentinel, sizeof record) == 0, record};
}

TEST(MeasurementPipeline, EveryRegionOnTheEdgeIsMeasured) {
    const Outcome out = run(allOnEdge(), RegionRule::kRoiSize, 80);
    ASSERT_EQ(out.status, 0);
    for (const SFREdgeResult& e : out.record.edges) {
        EXPECT_EQ(e.x, 45);
        EXPECT_EQ(e.y, 150);
        EXPECT_GT(e.sfrQuarterNyquist, 0.5f);
    }
}

TEST(MeasurementPipeline, AFailingLastRegionReturnsMinus3AndLeavesTheResultUntouched) {
    Placement p = allOnEdge();
    p.centres[51] = kOnFlat;  // a flat patch: TalonCalSFR refuses it for lack of contrast
    const Outcome out = run(p, RegionRule::kRoiSize, 80);
    EXPECT_EQ(out.status, -3);
    EXPECT_TRUE(out.untouched);
}

TEST(MeasurementPipeline, AFailingFirstRegionReturnsMinus3AndLeavesTheResultUntouched) {
    Placement p = allOnEdge();
    p.centres[0] = kOnFlat;
    const Outcome out = run(p, RegionRule::kRoiSize, 80);
    EXPECT_EQ(out.status, -3);
    EXPECT_TRUE(out.untouched);
}

// Second-set regions of the HLX6C members are 90 px whatever roiSize says, so their centres
// need 45 px on the left and top.
TEST(MeasurementPipeline, FixedSecondSetCentreLessThan45FromTheLeftReturnsMinus2) {
    Placement p = allOnEdge();
    p.centres[40] = {45.0f, 150.0f};
    EXPECT_EQ(run(p, RegionRule::kFixedSecondSet, 40).status, 0);

    p.centres[40] = {44.0f, 150.0f};
    const Outcome out = run(p, RegionRule::kFixedSecondSet, 40);
    EXPECT_EQ(out.status, -2);
    EXPECT_TRUE(out.untouched);
}

TEST(MeasurementPipeline, FixedSecondSetCentreLessThan45FromTheTopReturnsMinus2) {
    // On the edge near row 45: the lean moves it about 9 px right of row 150's x.
    const K74T16BX::Centre nearTop{54.0f, 44.0f};
    const K74T16BX::Centre justInside{54.0f, 45.0f};
    Placement p = allOnEdge();
    p.centres[51] = justInside;
    EXPECT_EQ(run(p, RegionRule::kFixedSecondSet, 40).status, 0);

    p.centres[51] = nearTop;
    const Outcome out = run(p, RegionRule::kFixedSecondSet, 40);
    EXPECT_EQ(out.status, -2);
    EXPECT_TRUE(out.untouched);
}

TEST(MeasurementPipeline, FixedSecondSetUsesNinetyPixelRegionsWhateverRoiSizeSays) {
    // With 40-px regions a second-set centre 35 px from the left fits; with 90 it does not.
    Placement p = allOnEdge();
    p.centres[30] = {35.0f, 150.0f};
    EXPECT_EQ(run(p, RegionRule::kRoiSize, 40).status, 0);
    EXPECT_EQ(run(p, RegionRule::kFixedSecondSet, 40).status, -2);
}

}  // namespace
