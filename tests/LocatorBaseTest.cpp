// The locator base: scale bookkeeping, the chart model built from a layout table, the
// perspective, prepare and the edge-centre read-out.
#include <gtest/gtest.h>

#include <cmath>

#include "ChartFrames.h"
#include "TestLocator.h"
#include "render/ChartSquare.h"

namespace {
using talonvireo::render::ChartSquare;
using talonvireo::testing::renderGreySquares;
using talonvireo::testing::TestLocator;
using Row = TestLocator::Row;

constexpr double kDeg = 3.141592653589793 / 180.0;

// One dark square of side 150 turned 5 degrees in a 600 x 600 frame.
ChartSquare square() {
    return {300.0, 300.0, 150.0, 5.0 * kDeg};
}
cv::Mat squareFrame() {
    return renderGreySquares({square()}, 600, 600, 0.8);
}
Row cornerRow(int role, int edge, int code = 0) {
    const cv::Point2d c = square().corner(role);
    return {static_cast<int>(std::lround(c.x)), static_cast<int>(std::lround(c.y)), edge, role,
            code};
}

TEST(LocatorBase, ConstructorSharesTheSourceAndSearchesACopy) {
    const cv::Mat image = squareFrame();
    TestLocator loc(image);
    EXPECT_EQ(loc.sourceImage.data, image.data);
    EXPECT_NE(loc.workImage.data, image.data);
    EXPECT_EQ(cv::norm(loc.workImage, image, cv::NORM_INF), 0.0);
    EXPECT_EQ(loc.scale, 1.0);
    EXPECT_FALSE(loc.scaled);
    EXPECT_EQ(loc.cornerSearchSize, 0);
    EXPECT_EQ(loc.markSearchSize, 0);
    EXPECT_FALSE(loc.initialized);
    EXPECT_TRUE(loc.perspective.empty());
}

TEST(LocatorBase, ScaleOneLeavesTheLocatorUnscaledAndPrepareWorksAtFullResolution) {
    const cv::Mat image = squareFrame();
    TestLocator loc(image);
    loc.setScale(1.0);
    EXPECT_FALSE(loc.scaled);
    EXPECT_EQ(loc.scale, 1.0);
    loc.describe({cornerRow(0, 0), cornerRow(2, 0)});
    loc.cornerSearchSize = 600;
    loc.markSearchSize = 25;
    EXPECT_EQ(loc.prepare(), 0);
    EXPECT_EQ(loc.cornerSearchSize, 600);
    EXPECT_EQ(loc.markSearchSize, 25);
    EXPECT_EQ(cv::norm(loc.perspective, cv::Mat::eye(3, 3, CV_64F), cv::NORM_INF), 0.0);
    EXPECT_EQ(loc.workImage.size(), image.size());
    EXPECT_NE(loc.workImage.data, image.data);
    EXPECT_EQ(cv::norm(loc.workImage, image, cv::NORM_INF), 0.0);
}

TEST(LocatorBase, HalfScaleTruncatesBothSearchSizesAndScalesTheMatrix) {
    const cv::Mat image = squareFrame();
    TestLocator loc(image);
    loc.setScale(0.5);
    EXPECT_TRUE(loc.scaled);
    loc.describe({cornerRow(0, 0), cornerRow(2, 0)});
    loc.cornerSearchSize = 600;
    loc.markSearchSize = 25;
    loc.prepare();
    EXPECT_EQ(loc.cornerSearchSize, 300);
    EXPECT_EQ(loc.markSearchSize, 12);  // 12.5 truncated
    const cv::Matx33d expected(1, 0, 0, 0, 1, 0, 0, 0, 2);
    EXPECT_EQ(cv::norm(loc.perspective, cv::Mat(expected), cv::NORM_INF), 0.0);
    EXPECT_EQ(loc.workImage.size(), cv::Size(300, 300));
}

TEST(LocatorBase, ThreeCornersNamingOneEdgeKeepTheFirstTwoAndTheThirdIsStillRefined) {
    const cv::Mat image = squareFrame();
    TestLocator loc(image);
    loc.describe({cornerRow(0, 0), cornerRow(2, 0), cornerRow(3, 0)});
    ASSERT_EQ(loc.edges.size(), 1u);
    EXPECT_EQ(loc.edges[0].cornerCount, 2);
    EXPECT_EQ(loc.edges[0].corner0, 0);
    EXPECT_EQ(loc.edges[0].corner1, 1);
    ASSERT_EQ(loc.corners.size(), 3u);
    loc.cornerSearchSize = 600;
    loc.markSearchSize = 25;
    EXPECT_EQ(loc.prepare(), 0);
    const cv::Point2d truth = square().corner(3);
    EXPECT_TRUE(loc.corners[2].found);
    EXPECT_LE(std::hypot(loc.corners[2].x - truth.x, loc.corners[2].y - truth.y), 1.0);
}

TEST(LocatorBase, ACornerWithAnEdgeIndexOutOfRangeJoinsNoEdge) {
    TestLocator loc(squareFrame());
    const int x[] = {10, 20, 30}, y[] = {11, 21, 31}, kind[] = {0, 1, 2}, code[] = {0, 0, 5};
    const int edge[] = {-1, 3, 1};  // 3 == count
    loc.initEdgeAndcorner(3, x, y, kind, edge, code);
    ASSERT_EQ(loc.corners.size(), 3u);
    EXPECT_EQ(loc.corners[0].chartX, 10.0f);
    EXPECT_EQ(loc.corners[1].chartY, 21.0f);
    EXPECT_EQ(loc.corners[1].kind, 1);
    ASSERT_EQ(loc.edges.size(), 1u);
    EXPECT_EQ(loc.edges[0].cornerCount, 1);
    EXPECT_EQ(loc.edges[0].corner0, 2);
    EXPECT_EQ(loc.edges[0].corner1, 0);
    EXPECT_EQ(loc.edges[0].edgeCode, 5);
    EXPECT_TRUE(loc.initialized);
}

TEST(LocatorBase, UnnamedEdgesAreDroppedAndTheRestKeepTheirIndexOrder) {
    TestLocator loc(squareFrame());
    const int x[] = {0, 1, 2, 3, 4, 5}, y[] = {0, 1, 2, 3, 4, 5}, kind[] = {0, 0, 0, 0, 0, 0};
    const int edge[] = {5, 1, 3, 1, 5, 3};
    const int code[] = {7, 8, 9, 1, 2, 3};
    loc.initEdgeAndcorner(6, x, y, kind, edge, code);
    ASSERT_EQ(loc.edges.size(), 3u);
    // Edge 1 (corners 1, 3), edge 3 (corners 2, 5), edge 5 (corners 0, 4).
    EXPECT_EQ(loc.edges[0].corner0, 1);
    EXPECT_EQ(loc.edges[0].corner1, 3);
    EXPECT_EQ(loc.edges[0].edgeCode, 8);
    EXPECT_EQ(loc.edges[1].corner0, 2);
    EXPECT_EQ(loc.edges[1].corner1, 5);
    EXPECT_EQ(loc.edges[1].edgeCode, 9);
    EXPECT_EQ(loc.edges[2].corner0, 0);
    EXPECT_EQ(loc.edges[2].corner1, 4);
    EXPECT_EQ(loc.edges[2].edgeCode, 7);
    for (const auto& e : loc.edges) {
        EXPECT_EQ(e.cornerCount, 2);
        EXPECT_FALSE(e.found);
    }
}

TEST(LocatorBase, ASecondTableReplacesTheFirstAndCutsTheCornerList) {
    TestLocator loc(squareFrame());
    loc.describe({{1, 1, 0, 0, 0}, {2, 2, 1, 0, 0}, {3, 3, 2, 0, 0}});
    loc.describe({{9, 9, 0, 3, 1}});
    ASSERT_EQ(loc.corners.size(), 1u);
    EXPECT_EQ(loc.corners[0].chartX, 9.0f);
    EXPECT_EQ(loc.corners[0].kind, 3);
    ASSERT_EQ(loc.edges.size(), 1u);
    EXPECT_EQ(loc.edges[0].edgeCode, 1);
}

TEST(LocatorBase, BadTablesRaiseCodeOneAtLine89AndChangeNothing) {
    TestLocator loc(squareFrame());
    loc.describe({{1, 2, 0, 0, 0}});
    const int a[] = {1};
    const auto expectRefused = [&](int count, const int* x, const int* y, const int* kind,
                                   const int* edge, const int* code) {
        try {
            loc.initEdgeAndcorner(count, x, y, kind, edge, code);
            ADD_FAILURE() << "no exception";
        } catch (const cv::Exception& e) {
            EXPECT_EQ(e.code, 1);
            EXPECT_TRUE(e.err.empty());
            EXPECT_EQ(e.func, "RegularSFR::RegularSFRLocate::initEdgeAndcorner");
            EXPECT_EQ(e.file, "RegularSFRLocate");
            EXPECT_EQ(e.line, 89);
        }
        ASSERT_EQ(loc.corners.size(), 1u);
        EXPECT_EQ(loc.corners[0].chartY, 2.0f);
        EXPECT_EQ(loc.edges.size(), 1u);
    };
    expectRefused(0, a, a, a, a, a);
    expectRefused(-3, a, a, a, a, a);
    expectRefused(1, nullptr, a, a, a, a);
    expectRefused(1, a, nullptr, a, a, a);
    expectRefused(1, a, a, nullptr, a, a);
    expectRefused(1, a, a, a, nullptr, a);
    expectRefused(1, a, a, a, a, nullptr);
}

TEST(LocatorBase, ComputePerspectiveWithOtherThanFourPointsFailsInsideOpenCV) {
    TestLocator loc(squareFrame());
    const int x[] = {0, 100, 100, 0, 50}, y[] = {0, 0, 100, 100, 30};
    EXPECT_THROW(loc.computePerspective(3, x, y, x, y), cv::Exception);
    EXPECT_THROW(loc.computePerspective(5, x, y, x, y), cv::Exception);
    EXPECT_TRUE(loc.perspective.empty());
    EXPECT_TRUE(loc.computePerspective(4, x, y, x, y));
    EXPECT_LE(cv::norm(loc.perspective, cv::Mat::eye(3, 3, CV_64F), cv::NORM_INF), 1e-12);
}

TEST(LocatorBase, ComputePerspectiveRefusesAnEmptyListAndKeepsTheMatrix) {
    TestLocator loc(squareFrame());
    const int x[] = {0, 100, 100, 0}, y[] = {0, 0, 100, 100};
    const int tx[] = {10, 110, 110, 10};
    ASSERT_TRUE(loc.computePerspective(4, x, y, tx, y));
    const cv::Mat before = loc.perspective.clone();
    EXPECT_FALSE(loc.computePerspective(0, x, y, x, y));
    EXPECT_FALSE(loc.computePerspective(4, nullptr, y, x, y));
    EXPECT_FALSE(loc.computePerspective(4, x, y, x, nullptr));
    EXPECT_EQ(cv::norm(loc.perspective, before, cv::NORM_INF), 0.0);
    EXPECT_NEAR(loc.perspective.at<double>(0, 2), 10.0, 1e-9);
}

TEST(LocatorBase, ALaterEdgeFailingFailsPrepareYetTheReadOutStillListsEveryEdge) {
    TestLocator loc(squareFrame());
    // Edge 0 between two corners; edge 1 a ring-crossing edge whose ring (radius 250 round
    // a corner of a 150 square) passes outside the square and crosses nothing.
    loc.describe({cornerRow(0, 0), cornerRow(2, 0), cornerRow(3, 1)});
    loc.cornerSearchSize = 600;
    loc.markSearchSize = 250;
    EXPECT_EQ(loc.prepare(), -1);
    ASSERT_EQ(loc.edges.size(), 2u);
    EXPECT_TRUE(loc.edges[0].found);
    EXPECT_FALSE(loc.edges[1].found);
    const std::vector<cv::Point> centres = loc.getEdgeCenters();
    ASSERT_EQ(centres.size(), 2u);
    const cv::Point2d mid = 0.5 * (square().corner(0) + square().corner(2));
    EXPECT_LE(std::abs(centres[0].x - mid.x), 1.5);
    EXPECT_LE(std::abs(centres[0].y - mid.y), 1.5);
    EXPECT_EQ(centres[1], cv::Point(0, 0));
}

TEST(LocatorBase, TwoCornerEdgeCentreIsTheMidpointAndNeedsBothCorners) {
    TestLocator loc(squareFrame());
    loc.describe({{0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}});
    loc.corners[0] = {10.0f, 20.0f, 0, 0, 0, true};
    loc.corners[1] = {13.0f, 25.0f, 0, 0, 0, false};
    EXPECT_FALSE(loc.computeEdgeCenters());
    EXPECT_FALSE(loc.edges[0].found);
    loc.corners[1].found = true;
    EXPECT_TRUE(loc.computeEdgeCenters());
    EXPECT_EQ(loc.edges[0].x, 11.5f);
    EXPECT_EQ(loc.edges[0].y, 22.5f);
    EXPECT_TRUE(loc.edges[0].found);
}

TEST(LocatorBase, AnEdgeThatFailsLeavesTheEdgesAfterItUntouched) {
    // Edges are worked out side by side, yet the walk stops at the first failure: edge 0
    // lacks a corner, so edge 1 stays as it was although both its corners are placed.
    TestLocator loc(squareFrame());
    loc.describe({{0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 1, 0, 0}, {0, 0, 1, 0, 0}});
    loc.corners[0] = {10.0f, 20.0f, 0, 0, 0, false};
    loc.corners[1] = {13.0f, 25.0f, 0, 0, 0, true};
    loc.corners[2] = {30.0f, 40.0f, 0, 0, 0, true};
    loc.corners[3] = {34.0f, 44.0f, 0, 0, 0, true};
    ASSERT_EQ(loc.edges.size(), 2u);
    EXPECT_FALSE(loc.computeEdgeCenters());
    EXPECT_FALSE(loc.edges[1].found);
    EXPECT_EQ(loc.edges[1].x, 0.0f);
    EXPECT_EQ(loc.edges[1].y, 0.0f);
    loc.corners[0].found = true;
    EXPECT_TRUE(loc.computeEdgeCenters());
    EXPECT_EQ(loc.edges[1].x, 32.0f);
    EXPECT_EQ(loc.edges[1].y, 42.0f);
}

TEST(LocatorBase, EdgeCentresTruncateTowardZeroAndNeedOnlyTheFirstEdgeFound) {
    TestLocator loc(squareFrame());
    EXPECT_TRUE(loc.getEdgeCenters().empty());
    loc.edges.resize(2);
    loc.edges[0] = {10.9f, -0.7f, 1, 0, 0, 0, false};
    loc.edges[1] = {3.99f, 7.5f, 1, 0, 0, 0, true};
    EXPECT_TRUE(loc.getEdgeCenters().empty());
    loc.edges[0].found = true;
    loc.edges[1].found = false;
    const std::vector<cv::Point> centres = loc.getEdgeCenters();
    ASSERT_EQ(centres.size(), 2u);
    EXPECT_EQ(centres[0], cv::Point(10, 0));
    EXPECT_EQ(centres[1], cv::Point(3, 7));
}

TEST(LocatorBase, CornerRefinementRefusesAMissingModel) {
    TestLocator loc(squareFrame());
    loc.cornerSearchSize = 600;
    loc.markSearchSize = 25;
    EXPECT_FALSE(loc.refineCorners());  // no corners, no perspective
    loc.describe({cornerRow(0, 0)});
    loc.perspective.release();
    EXPECT_FALSE(loc.refineCorners());
    EXPECT_EQ(loc.prepare(), -1);
    loc.perspective = cv::Mat::eye(3, 3, CV_64F);
    loc.cornerSearchSize = 0;
    EXPECT_FALSE(loc.refineCorners());
    EXPECT_FALSE(loc.corners[0].found);
    loc.cornerSearchSize = 600;
    EXPECT_TRUE(loc.refineCorners());
    EXPECT_TRUE(loc.corners[0].found);
}

TEST(LocatorBase, AScaledLocatorWithoutAMatrixFailsCleanly) {
    TestLocator loc(squareFrame());
    loc.setScale(0.5);
    loc.describe({cornerRow(0, 0)});
    loc.perspective.release();
    loc.cornerSearchSize = 600;
    EXPECT_EQ(loc.prepare(), -1);
    EXPECT_TRUE(loc.perspective.empty());
}

}  // namespace
