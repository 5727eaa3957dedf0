// Ring crossings of single-corner edges, and the threshold of the ring's darker half.
#include <gtest/gtest.h>

#include <cmath>

#include <opencv2/imgproc.hpp>

#include "ChartFrames.h"
#include "TestLocator.h"
#include "locate/OtsuThreshold.h"
#include "render/ChartSquare.h"

namespace {
using RegularSFR::ChartEdge;
using RegularSFR::otsuThresholdBelowQuantile;
using talonvireo::render::ChartSquare;
using talonvireo::testing::kChartDark;
using talonvireo::testing::kChartLight;
using talonvireo::testing::renderGreySquares;
using talonvireo::testing::TestLocator;

constexpr double kDeg = 3.141592653589793 / 180.0;

// A locator whose single corner sits at `corner`, already placed: the ring step alone.
struct PlacedCorner {
    explicit PlacedCorner(const cv::Mat& image, cv::Point2f corner) : loc(image) {
        loc.describe({{0, 0, 0, 0, 0}});
        loc.corners[0].x = corner.x;
        loc.corners[0].y = corner.y;
        loc.corners[0].found = true;
    }
    ChartEdge edge(int code) const {
        ChartEdge e;
        e.cornerCount = 1;
        e.edgeCode = code;
        return e;
    }
    TestLocator loc;
};

cv::Mat flatFrame(cv::Size size) {
    return cv::Mat(size, CV_8UC1, cv::Scalar(kChartLight));
}

TEST(EdgeCrossing, AtHalfScaleAMarkSizeOf25BecomesARingOf24) {
    const ChartSquare sq{300.0, 300.0, 200.0, 4.0 * kDeg};
    const cv::Mat image = renderGreySquares({sq}, 600, 600, 0.8);
    const cv::Point2d tl = sq.corner(0);
    TestLocator loc(image);
    loc.setScale(0.5);
    loc.describe(
        {{static_cast<int>(std::lround(tl.x)), static_cast<int>(std::lround(tl.y)), 0, 0, 0},
         {static_cast<int>(std::lround(tl.x)), static_cast<int>(std::lround(tl.y)), 1, 0, 1}});
    loc.cornerSearchSize = 600;
    loc.markSearchSize = 25;
    ASSERT_EQ(loc.prepare(), 0);
    EXPECT_EQ(loc.markSearchSize, 12);

    // The same corner, unscaled, with rings of 24 and 25 given explicitly.
    PlacedCorner direct(image, cv::Point2f(loc.corners[0].x, loc.corners[0].y));
    for (int code : {0, 1}) {
        ChartEdge r24 = direct.edge(code), r25 = direct.edge(code);
        ASSERT_TRUE(direct.loc.findEdgeCrossing(r24, 24));
        ASSERT_TRUE(direct.loc.findEdgeCrossing(r25, 25));
        EXPECT_EQ(loc.edges[code].x, r24.x);
        EXPECT_EQ(loc.edges[code].y, r24.y);
        EXPECT_NE(cv::Point2f(r24.x, r24.y), cv::Point2f(r25.x, r25.y));
    }
}

TEST(EdgeCrossing, ACornerNearTheBorderClipsTheRegionAndMovesTheRingCentre) {
    // Top-left corner 30 px from the left border: the region would start at x = -80.
    const ChartSquare sq = ChartSquare::withCorner({30.0, 250.0}, 0, 200.0, 4.0 * kDeg);
    const cv::Mat image = renderGreySquares({sq}, 400, 500, 0.7);
    const cv::Point2d corner = sq.corner(0);
    PlacedCorner placed(image, cv::Point2f(corner));
    const auto sides = sq.sidesFrom(0);  // along the top edge, then down the left edge
    const cv::Point2d top = corner + 100.0 * sides[0];
    const cv::Point2d left = corner + 100.0 * sides[1];
    ChartEdge upper = placed.edge(0), lower = placed.edge(1);
    ASSERT_TRUE(placed.loc.findEdgeCrossing(upper, 100));
    ASSERT_TRUE(placed.loc.findEdgeCrossing(lower, 100));
    EXPECT_LE(std::hypot(upper.x - top.x, upper.y - top.y), 2.0);
    EXPECT_LE(std::hypot(lower.x - left.x, lower.y - left.y), 2.0);
}

// A slim dark triangle inside the ring whose tip reaches (cx + r + reach, cy); the ring's
// rightmost pixel (cx + r, cy) stands out from its column, so with reach 0 the tip is the
// only pixel the two share.
cv::Mat triangleFrame(cv::Point c, int r, int reach) {
    cv::Mat image = flatFrame(cv::Size(2 * c.x, 2 * c.y));
    const cv::Point tip(c.x + r + reach, c.y);
    const std::vector<cv::Point> triangle = {{c.x + r - 30, c.y - 4}, tip, {c.x + r - 30, c.y + 4}};
    cv::fillConvexPoly(image, triangle, cv::Scalar(kChartDark), cv::LINE_8);
    return image;
}

TEST(EdgeCrossing, ARingMeetingTheBoundaryAtOnePixelOnlyFails) {
    const cv::Point c(100, 100);
    const int r = 60;
    const cv::Mat image = triangleFrame(c, r, 0);
    // Precondition: the ring and the dark triangle share exactly one pixel, its tip.
    cv::Mat ring = cv::Mat::zeros(image.size(), CV_8UC1);
    cv::circle(ring, c, r, cv::Scalar(1), 1, cv::LINE_8, 0);
    ASSERT_EQ(cv::countNonZero(ring & (image == kChartDark)), 1);

    PlacedCorner placed(image, cv::Point2f(c));
    ChartEdge edge = placed.edge(0);
    const ChartEdge before = edge;
    EXPECT_FALSE(placed.loc.findEdgeCrossing(edge, r));
    EXPECT_EQ(edge.x, before.x);
    EXPECT_FALSE(edge.found);

    // Reaching ten pixels further, the triangle's sides cross the ring: three crossings.
    PlacedCorner crossing(triangleFrame(c, r, 10), cv::Point2f(c));
    ChartEdge through = crossing.edge(0);
    EXPECT_TRUE(crossing.loc.findEdgeCrossing(through, r));
}

TEST(EdgeCrossing, ARingRunningAlongTheBoundaryPicksTopmostForCodeZeroElseBottommost) {
    // A dark quarter disc of the ring's own radius: its arc is ring and boundary at once,
    // from (cx + r, cy) round to (cx, cy + r).
    const cv::Point c(100, 100);
    const int r = 60;
    cv::Mat image = flatFrame(cv::Size(200, 200));
    cv::Mat disc = cv::Mat::zeros(image.size(), CV_8UC1);
    cv::circle(disc, c, r, cv::Scalar(1), cv::FILLED, cv::LINE_8, 0);
    cv::circle(disc, c, r, cv::Scalar(1), 1, cv::LINE_8, 0);
    disc(cv::Rect(0, 0, 200, c.y)).setTo(0);
    disc(cv::Rect(0, 0, c.x, 200)).setTo(0);
    image.setTo(kChartDark, disc);

    PlacedCorner placed(image, cv::Point2f(c));
    ChartEdge top = placed.edge(0), bottom = placed.edge(1);
    ASSERT_TRUE(placed.loc.findEdgeCrossing(top, r));
    ASSERT_TRUE(placed.loc.findEdgeCrossing(bottom, r));
    EXPECT_EQ(cv::Point2f(top.x, top.y), cv::Point2f(c.x + r, c.y));
    EXPECT_EQ(cv::Point2f(bottom.x, bottom.y), cv::Point2f(c.x, c.y + r));
}

// A square blob below-right of (150, 150) and another across the ring up-left, apart.
cv::Mat twoBlobFrame(int quadrantSide, int upLeftSide) {
    cv::Mat image = flatFrame(cv::Size(300, 300));
    image(cv::Rect(150, 150, quadrantSide, quadrantSide)).setTo(kChartDark);
    image(cv::Rect(108 - upLeftSide / 2, 108 - upLeftSide / 2, upLeftSide, upLeftSide))
        .setTo(kChartDark);
    return image;
}

TEST(EdgeCrossing, OfTwoDarkBlobsOnlyTheLargerIsUsed) {
    const cv::Point2f c(150.0f, 150.0f);
    // The quadrant is the larger: its top crossing is on row 150.
    PlacedCorner large(twoBlobFrame(140, 12), c);
    ChartEdge edge = large.edge(0);
    ASSERT_TRUE(large.loc.findEdgeCrossing(edge, 60));
    EXPECT_EQ(edge.y, 150.0f);
    EXPECT_NEAR(edge.x, 210.0f, 1.0f);

    // A quadrant blob (61 x 61 in area) smaller than the up-left square (69 x 69): the
    // crossing comes from the square.
    PlacedCorner small(twoBlobFrame(62, 70), c);
    ChartEdge other = small.edge(0);
    ASSERT_TRUE(small.loc.findEdgeCrossing(other, 60));
    EXPECT_LT(other.y, 130.0f);
    EXPECT_LT(other.x, 150.0f);
}

TEST(EdgeCrossing, EdgeCodesOneAndSevenBehaveAlike) {
    PlacedCorner placed(twoBlobFrame(140, 12), cv::Point2f(150.0f, 150.0f));
    ChartEdge zero = placed.edge(0), one = placed.edge(1), seven = placed.edge(7);
    ASSERT_TRUE(placed.loc.findEdgeCrossing(zero, 60));
    ASSERT_TRUE(placed.loc.findEdgeCrossing(one, 60));
    ASSERT_TRUE(placed.loc.findEdgeCrossing(seven, 60));
    EXPECT_EQ(cv::Point2f(one.x, one.y), cv::Point2f(seven.x, seven.y));
    EXPECT_NE(cv::Point2f(one.x, one.y), cv::Point2f(zero.x, zero.y));
    EXPECT_GT(one.y, zero.y);
}

TEST(EdgeCrossing, ZeroRadiusMeansTheMarkSizeAndBelowOneFails) {
    PlacedCorner placed(twoBlobFrame(140, 12), cv::Point2f(150.0f, 150.0f));
    placed.loc.markSearchSize = 60;
    ChartEdge byMark = placed.edge(0), explicit60 = placed.edge(0);
    ASSERT_TRUE(placed.loc.findEdgeCrossing(byMark, 0));
    ASSERT_TRUE(placed.loc.findEdgeCrossing(explicit60, 60));
    EXPECT_EQ(cv::Point2f(byMark.x, byMark.y), cv::Point2f(explicit60.x, explicit60.y));
    placed.loc.markSearchSize = 0;
    ChartEdge none = placed.edge(0);
    EXPECT_FALSE(placed.loc.findEdgeCrossing(none, 0));
    EXPECT_FALSE(placed.loc.findEdgeCrossing(none, -5));
    EXPECT_FALSE(none.found);
}

TEST(EdgeCrossing, AFlatRegionHasNoBlobAndFails) {
    PlacedCorner placed(flatFrame(cv::Size(300, 300)), cv::Point2f(150.0f, 150.0f));
    ChartEdge edge = placed.edge(0);
    EXPECT_FALSE(placed.loc.findEdgeCrossing(edge, 60));
    EXPECT_FALSE(edge.found);
}

// ---- The threshold of the darker half ----

std::vector<unsigned char> samples(std::initializer_list<std::pair<int, int>> levels) {
    std::vector<unsigned char> out;
    for (const auto& [level, count] : levels) {
        out.insert(out.end(), static_cast<std::size_t>(count), static_cast<unsigned char>(level));
    }
    return out;
}

TEST(OtsuBelowQuantile, OnlyTheDarkerHalfTakesPart) {
    // 20 samples, limit 10: the running count passes 10 at level 50, so the 200s are left
    // out and the split falls between 10 and 50 (the smallest level of the tie).
    EXPECT_EQ(otsuThresholdBelowQuantile(samples({{10, 6}, {50, 6}, {200, 8}}), 0.5f), 10);
    // With every sample taking part (limit 19) the split moves up between 50 and 200.
    EXPECT_EQ(otsuThresholdBelowQuantile(samples({{10, 6}, {50, 6}, {200, 8}}), 0.99f), 50);
    // No running count exceeds the whole set: nothing takes part.
    EXPECT_EQ(otsuThresholdBelowQuantile(samples({{10, 6}, {50, 6}, {200, 8}}), 1.0f), 0);
}

TEST(OtsuBelowQuantile, TheQuantileBinJoinsWhole) {
    // Limit 10 is passed inside the 200 bin, which then takes part with all its samples.
    EXPECT_EQ(otsuThresholdBelowQuantile(samples({{40, 4}, {200, 16}}), 0.5f), 40);
}

TEST(OtsuBelowQuantile, NoSamplesOrOneLevelGiveZero) {
    EXPECT_EQ(otsuThresholdBelowQuantile({}, 0.5f), 0);
    EXPECT_EQ(otsuThresholdBelowQuantile(samples({{90, 50}}), 0.5f), 0);
}

TEST(OtsuBelowQuantile, SplitsABlurredRingBetweenItsLevels) {
    const int t = otsuThresholdBelowQuantile(
        samples({{40, 30}, {80, 3}, {120, 3}, {160, 3}, {200, 120}}), 0.5f);
    EXPECT_GE(t, 40);
    EXPECT_LT(t, 200);
}

}  // namespace
