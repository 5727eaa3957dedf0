// Corner candidates in one search region and the placement of chart corners.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include <opencv2/imgproc.hpp>

#include "ChartFrames.h"
#include "TestLocator.h"
#include "locate/CornerCandidateFinder.h"
#include "render/ChartSquare.h"

namespace {
using RegularSFR::CornerCandidateFinder;
using talonvireo::render::ChartSquare;
using talonvireo::testing::kChartDark;
using talonvireo::testing::kChartLight;
using talonvireo::testing::renderGreySquares;
using talonvireo::testing::TestLocator;

constexpr double kDeg = 3.141592653589793 / 180.0;

int rounded(double v) {
    return static_cast<int>(std::lround(v));
}

cv::Mat flatRegion(cv::Size size) {
    return cv::Mat(size, CV_8UC1, cv::Scalar(kChartLight));
}

TEST(CornerRefinement, WithoutDownscalingEveryCornerLandsOnAWholePixel) {
    const ChartSquare sq{300.0, 300.0, 150.0, 7.0 * kDeg};
    TestLocator loc(renderGreySquares({sq}, 600, 600, 0.9));
    std::vector<TestLocator::Row> rows;
    for (int role = 0; role < 4; ++role) {
        const cv::Point2d c = sq.corner(role);
        rows.push_back({rounded(c.x), rounded(c.y), -1, role, 0});
    }
    loc.describe(rows);
    loc.cornerSearchSize = 600;
    loc.markSearchSize = 25;
    ASSERT_TRUE(loc.refineCorners());
    for (int role = 0; role < 4; ++role) {
        const auto& c = loc.corners[role];
        EXPECT_TRUE(c.found);
        EXPECT_EQ(c.x, std::round(c.x));
        EXPECT_EQ(c.y, std::round(c.y));
        const cv::Point2d truth = sq.corner(role);
        EXPECT_LE(std::hypot(c.x - truth.x, c.y - truth.y), 1.0) << "role " << role;
    }
}

TEST(CornerRefinement, AProjectionNearTheBorderClipsTheRegionAndTheHintCountsFromItsOrigin) {
    // Two top-left corners 270 px apart. The search window round the first (half size 300)
    // is clipped at x = 0, so the hint is x = 60 and the first corner is the nearer one;
    // counted from the unclipped origin (-240) the hint would be 300, nearer the second.
    const ChartSquare a = ChartSquare::withCorner({60.0, 150.0}, 0, 100.0, 4.0 * kDeg);
    const ChartSquare b = ChartSquare::withCorner({330.0, 150.0}, 0, 100.0, 4.0 * kDeg);
    const cv::Mat image = renderGreySquares({a, b}, 700, 400, 0.8);
    CornerCandidateFinder both(image(cv::Rect(0, 0, 360, 400)), 25);
    ASSERT_EQ(both.findCandidates(0).size(), 2u);

    TestLocator loc(image);
    loc.describe({{60, 150, -1, 0, 0}});
    loc.cornerSearchSize = 600;
    loc.markSearchSize = 25;
    ASSERT_TRUE(loc.refineCorners());
    EXPECT_LE(std::hypot(loc.corners[0].x - 60.0, loc.corners[0].y - 150.0), 1.0);
}

// Two top-left corners in a 200 x 200 region: one near its top-left, one near its centre.
cv::Mat twoCornerRegion() {
    const ChartSquare a = ChartSquare::withCorner({30.0, 30.0}, 0, 50.0, 5.0 * kDeg);
    const ChartSquare b = ChartSquare::withCorner({105.0, 105.0}, 0, 50.0, 5.0 * kDeg);
    return renderGreySquares({a, b}, 200, 200, 0.8);
}

TEST(CornerRefinement, AHintOnTheRegionsTopOrLeftEdgeIsReplacedByTheCentre) {
    CornerCandidateFinder finder(twoCornerRegion(), 25);
    cv::Point fair(40, 40);
    const cv::Point2f nearA = finder.refineCorner(0, fair);
    EXPECT_EQ(fair, cv::Point(40, 40));
    EXPECT_LE(cv::norm(nearA - cv::Point2f(30, 30)), 1.5);
    for (cv::Point hint : {cv::Point(0, 40), cv::Point(40, 0), cv::Point(-3, 40)}) {
        const cv::Point2f p = finder.refineCorner(0, hint);
        EXPECT_EQ(hint, cv::Point(100, 100));  // overwritten for the caller
        EXPECT_LE(cv::norm(p - cv::Point2f(105, 105)), 1.5);
    }
}

TEST(CornerRefinement, TheMinimumCornerDistanceIsAQuarterOfTheMarkSizeUnrounded) {
    // On noise, corners crowd: a mark size of 12 allows corners 3.0 apart, 13 (3.25) not.
    cv::Mat noise(64, 64, CV_8UC1);
    cv::RNG rng(1);
    rng.fill(noise, cv::RNG::UNIFORM, 0, 256);
    const auto closest = [&](int size) {
        CornerCandidateFinder finder(noise, size);
        double m = 1e9;
        for (std::size_t i = 0; i < finder.detectedCorners.size(); ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                m = std::min(m, cv::norm(finder.detectedCorners[i] - finder.detectedCorners[j]));
            }
        }
        return m;
    };
    EXPECT_EQ(closest(12), 3.0);
    EXPECT_GE(closest(13), 3.25);
}

// Two top-left corners on one row; the darker square gives the stronger corner.
cv::Mat equalDistanceRegion(int leftDark, int rightDark) {
    cv::Mat region = flatRegion(cv::Size(220, 140));
    region(cv::Rect(40, 50, 50, 50)).setTo(leftDark);
    region(cv::Rect(130, 50, 50, 50)).setTo(rightDark);
    return region;
}

TEST(CornerRefinement, OfTwoCandidatesAtEqualCityBlockDistanceTheFirstDetectedWins) {
    for (const bool leftStronger : {true, false}) {
        CornerCandidateFinder finder(
            equalDistanceRegion(leftStronger ? 20 : 60, leftStronger ? 60 : 20), 25);
        const std::vector<cv::Point> candidates = finder.findCandidates(0);
        ASSERT_EQ(candidates.size(), 2u);
        // Detection order is strength order; the two lie on one row, 90 px apart.
        const cv::Point first = candidates[0], second = candidates[1];
        ASSERT_EQ(first.y, second.y);
        EXPECT_EQ(std::abs(first.x - second.x), 90);
        EXPECT_EQ(first.x < second.x, leftStronger);
        cv::Point hint((first.x + second.x) / 2, first.y);
        const cv::Point2f chosen = finder.refineCorner(0, hint);
        EXPECT_LE(cv::norm(chosen - cv::Point2f(first)), 1.5);
    }
}

TEST(CornerRefinement, ACornerOnASmallDarkSpeckIsRejected) {
    // Mark size 40: blobs need an area of 200. The speck (12 x 12, area 121) does not count.
    cv::Mat region = flatRegion(cv::Size(200, 200));
    region(cv::Rect(30, 30, 12, 12)).setTo(kChartDark);
    cv::Mat withSquare = region.clone();
    withSquare(cv::Rect(100, 100, 60, 60)).setTo(kChartDark);

    CornerCandidateFinder finder(withSquare, 40);
    const std::vector<cv::Point> candidates = finder.findCandidates(0);
    ASSERT_EQ(candidates.size(), 1u);
    EXPECT_LE(cv::norm(candidates[0] - cv::Point(100, 100)), 1.5);

    CornerCandidateFinder speckOnly(region, 40);
    EXPECT_FALSE(speckOnly.detectedCorners.empty());   // detected ...
    EXPECT_TRUE(speckOnly.findCandidates(0).empty());  // ... and rejected
    cv::Point hint(36, 36);
    EXPECT_THROW(speckOnly.refineCorner(0, hint), cv::Exception);
}

TEST(CornerRefinement, KindZeroRejectsAZeroSideSumWhereKindTwoAccepts) {
    // The apex of a symmetric dark wedge: light on both sides equally (Sx = 0) and above
    // (Sy < 0). Kind 0 wants Sx < 0; kind 2 accepts Sx >= 0.
    cv::Mat region(120, 121, CV_8UC1, cv::Scalar(kChartLight));
    region.rowRange(80, 120).setTo(kChartDark);
    const std::vector<cv::Point> wedge = {{60, 40}, {40, 80}, {80, 80}};
    cv::fillConvexPoly(region, wedge, cv::Scalar(kChartDark));
    CornerCandidateFinder finder(region, 25);
    const auto hasApex = [](const std::vector<cv::Point>& points) {
        return std::any_of(points.begin(), points.end(),
                           [](const cv::Point& p) { return p.x == 60 && std::abs(p.y - 40) <= 2; });
    };
    EXPECT_FALSE(hasApex(finder.findCandidates(0)));
    EXPECT_TRUE(hasApex(finder.findCandidates(2)));
}

TEST(CornerRefinement, AKindOutsideZeroToThreeRejectsEveryCandidate) {
    CornerCandidateFinder finder(twoCornerRegion(), 25);
    EXPECT_EQ(finder.findCandidates(0).size(), 2u);
    EXPECT_TRUE(finder.findCandidates(4).empty());
    EXPECT_TRUE(finder.findCandidates(-1).empty());
    cv::Point hint(40, 40);
    EXPECT_THROW(finder.refineCorner(4, hint), cv::Exception);
}

TEST(CornerRefinement, AnEmptyRegionOrOneWithoutCornersThrows) {
    EXPECT_THROW(CornerCandidateFinder(cv::Mat(), 25), cv::Exception);
    CornerCandidateFinder flat(flatRegion(cv::Size(100, 100)), 25);
    EXPECT_TRUE(flat.detectedCorners.empty());
    EXPECT_THROW(flat.findCandidates(0), cv::Exception);
}

TEST(CornerRefinement, EachKindFindsItsOwnCornerOfASquare) {
    const ChartSquare sq{100.0, 100.0, 100.0, 6.0 * kDeg};
    CornerCandidateFinder finder(renderGreySquares({sq}, 200, 200, 0.8), 25);
    for (int kind = 0; kind < 4; ++kind) {
        const std::vector<cv::Point> candidates = finder.findCandidates(kind);
        ASSERT_EQ(candidates.size(), 1u) << "kind " << kind;
        const cv::Point2d truth = sq.corner(kind);
        EXPECT_LE(cv::norm(cv::Point2d(candidates[0]) - truth), 1.5) << "kind " << kind;
    }
}

}  // namespace
