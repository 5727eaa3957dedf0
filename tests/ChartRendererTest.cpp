// The synthetic charts: their design (squares apart, clean edge regions), the exact
// rendering (areas, edges through the true corners, flat regions, noise) and the truth.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "render/ChartDesign.h"
#include "render/ChartRenderer.h"
#include "render/ChartTruth.h"
#include "render/SlantedEdgeRenderer.h"

namespace {
using namespace talonvireo::render;

constexpr double kPi = 3.141592653589793;
const ChartProject kProjects[] = {ChartProject::K74T16BX, ChartProject::K83P09BQ,
                                  ChartProject::HLX6C, ChartProject::K31R22BX};

double bilinear(const cv::Mat& m, cv::Point2d p) {
    const int x = static_cast<int>(std::floor(p.x));
    const int y = static_cast<int>(std::floor(p.y));
    const double fx = p.x - x, fy = p.y - y;
    auto at = [&](int r, int c) { return m.at<double>(r, c); };
    return (1 - fy) * ((1 - fx) * at(y, x) + fx * at(y, x + 1)) +
           fy * ((1 - fx) * at(y + 1, x) + fx * at(y + 1, x + 1));
}

// ---- Design ----

TEST(ChartDesign, EveryChartKeepsItsSquaresFortyPixelsApart) {
    for (const ChartProject p : kProjects) {
        const ChartDesign d = designChart(p);
        for (std::size_t i = 0; i < d.squares.size(); ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                EXPECT_GE(squareDistance(d.squares[i], d.squares[j]), kSquareClearance)
                    << projectName(p) << " squares " << i << " and " << j;
            }
        }
    }
}

TEST(ChartDesign, EverySquareIsTurnedAwayFromThePixelGrid) {
    for (const ChartProject p : kProjects) {
        const ChartDesign d = designChart(p);
        for (const ChartSquare& s : d.squares) {
            const double turn = std::abs(s.angleRad) * 180.0 / kPi;
            EXPECT_GE(turn, 3.0 - 1e-9) << projectName(p);
            EXPECT_LE(turn, 45.0) << projectName(p);
            if (p != ChartProject::K31R22BX) {
                EXPECT_LE(turn, 12.0) << projectName(p);
                EXPECT_GE(s.side, 150.0) << projectName(p);
                EXPECT_LE(s.side, 200.0) << projectName(p);
            }
        }
    }
}

TEST(ChartDesign, LayoutsGiveOneEdgePerIndexTheLocatorWouldKeep) {
    for (const ChartProject p : kProjects) {
        const ChartDesign d = designChart(p);
        ASSERT_EQ(d.layouts.size(), 2u);
        for (int l = 0; l < 2; ++l) {
            const LayoutTruth t = layoutTruth(d, l, {});
            const bool big = p == ChartProject::K31R22BX;
            EXPECT_EQ(t.corners.size(), big ? 56u : 26u);
            EXPECT_EQ(t.edges.size(), big ? 34u : 26u);
        }
    }
}

TEST(ChartDesign, ListedCornersOfLoneSquaresAreExact) {
    for (const ChartProject p :
         {ChartProject::K74T16BX, ChartProject::K83P09BQ, ChartProject::HLX6C}) {
        const ChartDesign d = designChart(p);
        for (int l = 0; l < 2; ++l) {
            const LayoutTruth t = layoutTruth(d, l, {});
            for (std::size_t i = 0; i < t.corners.size(); ++i) {
                const ChartRow& row = d.layouts[l].rows[i];
                EXPECT_NEAR(t.corners[i].position.x, row.x, 1e-9);
                EXPECT_NEAR(t.corners[i].position.y, row.y, 1e-9);
            }
        }
    }
}

TEST(ChartDesign, FittedSquaresStayNearTheirListedCorners) {
    const ChartDesign d = designChart(ChartProject::K31R22BX);
    for (int l = 0; l < 2; ++l) {
        const LayoutTruth t = layoutTruth(d, l, {});
        for (std::size_t i = 0; i < t.corners.size(); ++i) {
            const ChartRow& row = d.layouts[l].rows[i];
            // Within the locator's corner search reach (half of a 300 px region at half scale).
            EXPECT_LT(std::hypot(t.corners[i].position.x - row.x, t.corners[i].position.y - row.y),
                      60.0)
                << d.layouts[l].name << " row " << i;
        }
    }
}

TEST(ChartDesign, MarkSquaresAreCentredOnTheReferencePoint) {
    const ChartDesign d = designChart(ChartProject::K31R22BX);
    ASSERT_EQ(d.markSquares.size(), 2u);
    const ChartSquare& a = d.squares[d.markSquares[0]];
    const ChartSquare& b = d.squares[d.markSquares[1]];
    EXPECT_NEAR(0.5 * (a.cx + b.cx), kMarkReferenceX, 1e-9);
    EXPECT_NEAR(0.5 * (a.cy + b.cy), kMarkReferenceY, 1e-9);
    // They are the two nearest the reference point.
    const double farther = std::max(std::hypot(a.cx - kMarkReferenceX, a.cy - kMarkReferenceY),
                                    std::hypot(b.cx - kMarkReferenceX, b.cy - kMarkReferenceY));
    for (std::size_t i = 0; i < d.squares.size(); ++i) {
        if (static_cast<int>(i) == d.markSquares[0] || static_cast<int>(i) == d.markSquares[1]) {
            continue;
        }
        EXPECT_GT(std::hypot(d.squares[i].cx - kMarkReferenceX, d.squares[i].cy - kMarkReferenceY),
                  farther);
    }
}

// Clips segment a-b to the rectangle; true when any part of it lies inside.
bool segmentMeetsRect(cv::Point2d a, cv::Point2d b, const cv::Rect2d& r) {
    double t0 = 0.0, t1 = 1.0;
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double p[4] = {-dx, dx, -dy, dy};
    const double q[4] = {a.x - r.x, r.x + r.width - a.x, a.y - r.y, r.y + r.height - a.y};
    for (int i = 0; i < 4; ++i) {
        if (p[i] == 0.0) {
            if (q[i] < 0.0) {
                return false;
            }
            continue;
        }
        const double t = q[i] / p[i];
        if (p[i] < 0.0) {
            t0 = std::max(t0, t);
        } else {
            t1 = std::min(t1, t);
        }
        if (t0 > t1) {
            return false;
        }
    }
    return true;
}

TEST(ChartDesign, EveryEdgeRegionHoldsOneStraightEdgeAndNothingElse) {
    // Blur reach added round each region.
    constexpr double kMargin = 4.0;
    for (const ChartProject p : kProjects) {
        const ChartDesign d = designChart(p);
        for (int l = 0; l < 2; ++l) {
            const LayoutTruth t = layoutTruth(d, l, {});
            for (const double ring : {90.0, 100.0, 120.0}) {
                for (const double roi : {60.0, 80.0, 90.0}) {
                    for (const EdgeTruth& e : t.edges) {
                        const cv::Point2d c = edgeCentre(d, t, e, {}, ring);
                        const double half = 0.5 * roi + kMargin;
                        const cv::Rect2d region(c.x - half, c.y - half, 2 * half, 2 * half);
                        const ChartSide own = edgeSide(d, t, e, {}, ring);
                        int sidesMet = 0;
                        bool ownMet = false;
                        for (std::size_t s = 0; s < d.squares.size(); ++s) {
                            const auto outline = d.squares[s].outline();
                            for (int k = 0; k < 4; ++k) {
                                EXPECT_FALSE(region.contains(outline[k]))
                                    << d.layouts[l].name << " edge " << e.edgeIndex << " ring "
                                    << ring << " roi " << roi << ": a corner of square " << s;
                                const cv::Point2d a = outline[k], b = outline[(k + 1) % 4];
                                if (segmentMeetsRect(a, b, region)) {
                                    ++sidesMet;
                                    const cv::Point2d mid = 0.5 * (a + b);
                                    const cv::Point2d ownMid = 0.5 * (own.from + own.to);
                                    ownMet = ownMet || (static_cast<int>(s) == e.square &&
                                                        std::hypot(mid.x - ownMid.x,
                                                                   mid.y - ownMid.y) < 1e-6);
                                }
                            }
                        }
                        EXPECT_EQ(sidesMet, 1) << d.layouts[l].name << " edge " << e.edgeIndex
                                               << " ring " << ring << " roi " << roi;
                        EXPECT_TRUE(ownMet) << d.layouts[l].name << " edge " << e.edgeIndex;
                    }
                }
            }
        }
    }
}

// ---- Rendering ----

// A frame holding the whole chart: shifted so that every square lies inside with room for
// the blur.
struct WholeChart {
    ChartTransform transform;
    int width;
    int height;
};

WholeChart frameAround(const std::vector<ChartSquare>& squares) {
    double minX = 1e300, minY = 1e300, maxX = -1e300, maxY = -1e300;
    for (const ChartSquare& s : squares) {
        for (const cv::Point2d& c : s.outline()) {
            minX = std::min(minX, c.x);
            minY = std::min(minY, c.y);
            maxX = std::max(maxX, c.x);
            maxY = std::max(maxY, c.y);
        }
    }
    WholeChart w;
    w.transform.shiftX = 20.0 - minX;
    w.transform.shiftY = 20.0 - minY;
    w.width = static_cast<int>(maxX - minX) + 40;
    w.height = static_cast<int>(maxY - minY) + 40;
    return w;
}

TEST(ChartRenderer, CoverageSumsEqualEachSquaresArea) {
    for (const ChartProject p : kProjects) {
        const ChartDesign d = designChart(p);
        for (std::size_t i = 0; i < d.squares.size(); i += 5) {
            const std::vector<ChartSquare> one = {d.squares[i]};
            const WholeChart w = frameAround(one);
            const double area = d.squares[i].side * d.squares[i].side;
            const cv::Mat cov = chartCoverage(one, w.transform, 1.0, w.width, w.height);
            EXPECT_NEAR(cv::sum(cov)[0], area, 1e-3 * area) << projectName(p) << " square " << i;
        }
    }
    // Scaled by 1.1 and turned: the area grows by 1.21.
    const ChartSquare s = designChart(ChartProject::HLX6C).squares[0];
    ChartTransform t;
    t.scale = 1.1;
    t.rotationDeg = 2.0;
    const cv::Point2d moved = applyHomography(t.homography(), {s.cx, s.cy});
    t.shiftX = 200.0 - moved.x;
    t.shiftY = 200.0 - moved.y;
    const cv::Mat cov = chartCoverage({s}, t, 0.7, 400, 400);
    EXPECT_NEAR(cv::sum(cov)[0], 1.21 * s.side * s.side, 1e-3 * 1.21 * s.side * s.side);
}

void expectCornersOnRenderedEdges(const ChartDesign& d, const ChartTransform& t, double sigma) {
    const WholeChart w = frameAround(d.squares);
    ChartTransform placed = t;
    placed.shiftX += w.transform.shiftX;
    placed.shiftY += w.transform.shiftY;
    const cv::Mat cov = chartCoverage(d.squares, placed, sigma, w.width + 60, w.height + 60);
    const cv::Matx33d h = placed.homography();
    for (int l = 0; l < 2; ++l) {
        const LayoutTruth truth = layoutTruth(d, l, placed);
        for (std::size_t i = 0; i < truth.corners.size(); ++i) {
            const CornerTruth& c = truth.corners[i];
            const ChartSquare& s = d.squares[c.square];
            for (const cv::Point2d dir : s.sidesFrom(c.kind)) {
                for (const double along : {15.0, 30.0, 45.0}) {
                    // The side through the true corner, in the image.
                    const cv::Point2d onSide = applyHomography(h, s.corner(c.kind) + along * dir);
                    EXPECT_NEAR(bilinear(cov, onSide), 0.5, 0.02)
                        << d.layouts[l].name << " row " << i << " at " << along;
                }
            }
            // And the truth is the image of the square's corner.
            const cv::Point2d expected = applyHomography(h, s.corner(c.kind));
            EXPECT_NEAR(c.position.x, expected.x, 1e-9);
            EXPECT_NEAR(c.position.y, expected.y, 1e-9);
        }
    }
}

TEST(ChartRenderer, CornerTruthLiesOnTheRenderedEdges) {
    expectCornersOnRenderedEdges(designChart(ChartProject::K74T16BX), {}, 1.0);
    ChartTransform t;
    t.shiftX = 13.3;
    t.shiftY = -7.6;
    t.rotationDeg = 1.5;
    t.scale = 0.95;
    expectCornersOnRenderedEdges(designChart(ChartProject::K31R22BX), t, 0.8);
    // A mild perspective: the blur is approximated on the chart plane, the geometry is exact.
    ChartTransform tilted;
    tilted.perspX = 3e-6;
    tilted.perspY = -2e-6;
    expectCornersOnRenderedEdges(designChart(ChartProject::HLX6C), tilted, 1.0);
}

TEST(ChartRenderer, EdgeProfileMatchesTheSingleEdgeRenderer) {
    // Away from the corners a side is one blurred straight edge: the coverage equals the dark
    // fraction of the independent single-edge renderer.
    const ChartSquare s = ChartSquare::withCorner({100.0, 100.0}, TopLeft, 200.0, 0.1);
    const double sigma = 0.9;
    const cv::Mat cov = chartCoverage({s}, {}, sigma, 400, 400);
    const QuadratureRule rule = pixelQuadrature();
    // The top side: dark below it, so the bright side's normal is -v.
    const cv::Point2d mid = 0.5 * (s.corner(TopLeft) + s.corner(TopRight));
    const EdgeLineGeometry edge{mid.x, mid.y, -s.axisV().x, -s.axisV().y, sigma};
    double worst = 0.0;
    for (int c = static_cast<int>(mid.x) - 20; c <= static_cast<int>(mid.x) + 20; ++c) {
        for (int r = static_cast<int>(mid.y) - 8; r <= static_cast<int>(mid.y) + 8; ++r) {
            worst = std::max(
                worst, std::abs(cov.at<double>(r, c) - (1.0 - brightFraction(c, r, edge, rule))));
        }
    }
    EXPECT_LT(worst, 1e-5);
}

TEST(ChartRenderer, FlatRegionsRenderFlat) {
    const ChartDesign d = designChart(ChartProject::K83P09BQ);
    const cv::Mat cov = chartCoverage(d.squares, {}, 1.0, 4000, 3000);
    ChartExposure e;
    e.dark = 0.1;
    e.light = 0.8;
    e.bits = 10;
    const cv::Mat raw = exposeChart(cov, e);
    // Background far from every square, and the inside of a square.
    const cv::Rect background(1900, 2300, 200, 100);
    const ChartSquare& s = d.squares[0];
    const cv::Rect inside(static_cast<int>(s.cx) - 40, static_cast<int>(s.cy) - 40, 80, 80);
    double lo, hi;
    cv::minMaxLoc(raw(background), &lo, &hi);
    EXPECT_EQ(lo, std::round(0.8 * 1023));
    EXPECT_EQ(hi, lo);
    cv::minMaxLoc(raw(inside), &lo, &hi);
    EXPECT_EQ(lo, std::round(0.1 * 1023));
    EXPECT_EQ(hi, lo);
}

TEST(ChartRenderer, MosaicGainsApplyPerSite) {
    const cv::Mat cov(4, 4, CV_64F, cv::Scalar(0.0));
    ChartExposure e;
    e.light = 0.5;
    e.bayer = true;
    e.gainRed = 1.5;
    e.gainGreen = 1.0;
    e.gainBlue = 0.5;
    e.bits = 14;
    const cv::Mat raw = exposeChart(cov, e);
    const double full = 16383.0;
    EXPECT_EQ(raw.at<unsigned short>(0, 0), std::round(0.75 * full));  // R
    EXPECT_EQ(raw.at<unsigned short>(0, 1), std::round(0.5 * full));   // G
    EXPECT_EQ(raw.at<unsigned short>(1, 0), std::round(0.5 * full));   // G
    EXPECT_EQ(raw.at<unsigned short>(1, 1), std::round(0.25 * full));  // B
}

TEST(ChartRenderer, OutputDepthsUseTheirFullScale) {
    const cv::Mat cov(2, 2, CV_64F, cv::Scalar(0.0));
    for (const int bits : {8, 10, 14, 16}) {
        ChartExposure e;
        e.light = 1.0;
        e.bits = bits;
        const cv::Mat out = exposeChart(cov, e);
        EXPECT_EQ(out.depth(), bits == 8 ? CV_8U : CV_16U);
        double lo, hi;
        cv::minMaxLoc(out, &lo, &hi);
        EXPECT_EQ(hi, std::ldexp(1.0, bits) - 1.0) << bits;
    }
    ChartExposure bad;
    bad.bits = 12;
    EXPECT_THROW(exposeChart(cov, bad), std::invalid_argument);
}

TEST(ChartRenderer, SameSeedRendersTheSameNoise) {
    const cv::Mat cov(64, 64, CV_64F, cv::Scalar(0.3));
    ChartExposure e;
    e.shotNoise = 20.0;
    e.readNoise = 2.0;
    e.bits = 14;
    e.seed = 42;
    const cv::Mat a = exposeChart(cov, e);
    const cv::Mat b = exposeChart(cov, e);
    EXPECT_EQ(cv::norm(a, b, cv::NORM_INF), 0.0);
    e.seed = 43;
    const cv::Mat c = exposeChart(cov, e);
    EXPECT_GT(cv::norm(a, c, cv::NORM_INF), 0.0);
    // The noise has the requested size: read 2 and shot 20 * sqrt(level / full scale).
    cv::Scalar mean, sd;
    cv::meanStdDev(a, mean, sd);
    const double level = 16383.0 * (0.8 - 0.68 * 0.3);
    EXPECT_NEAR(sd[0], std::sqrt(4.0 + 400.0 * level / 16383.0), 1.5);
}

TEST(ChartRenderer, RefusesNonPositiveSizesAndSigma) {
    const std::vector<ChartSquare> none;
    EXPECT_THROW(chartCoverage(none, {}, 1.0, 0, 10), std::invalid_argument);
    EXPECT_THROW(chartCoverage(none, {}, 0.0, 10, 10), std::invalid_argument);
}

// ---- Truth ----

TEST(ChartTruth, SingleCornerCentresLieOnTheirSideAtTheRingDistance) {
    const ChartDesign d = designChart(ChartProject::HLX6C);
    const LayoutTruth t = layoutTruth(d, 0, {});
    for (const EdgeTruth& e : t.edges) {
        ASSERT_EQ(e.cornerCount, 1);
        const cv::Point2d corner = t.corners[e.corner0].position;
        const cv::Point2d c = edgeCentre(d, t, e, {}, 100.0);
        EXPECT_NEAR(std::hypot(c.x - corner.x, c.y - corner.y), 100.0, 1e-6);
        const cv::Point2d dir = edgeDirection(d, t, e, {}, 100.0);
        const cv::Point2d off = c - corner;
        EXPECT_NEAR(off.x * dir.y - off.y * dir.x, 0.0, 1e-6);  // on the side's line
    }
    // Codes 0 and 1 of the same corner pick its upper and lower side.
    for (std::size_t i = 0; i + 1 < t.edges.size(); i += 2) {
        const EdgeTruth& a = t.edges[i];
        const EdgeTruth& b = t.edges[i + 1];
        const double ya = edgeCentre(d, t, a, {}, 100.0).y;
        const double yb = edgeCentre(d, t, b, {}, 100.0).y;
        EXPECT_EQ(a.code == 0 ? ya < yb : ya > yb, true) << i;
    }
}

TEST(ChartTruth, TwoCornerCentresAreMidpoints) {
    const ChartDesign d = designChart(ChartProject::K31R22BX);
    const LayoutTruth t = layoutTruth(d, 0, {});
    int twoCorner = 0;
    for (const EdgeTruth& e : t.edges) {
        if (e.cornerCount != 2) {
            continue;
        }
        ++twoCorner;
        const cv::Point2d c = edgeCentre(d, t, e, {}, 100.0);
        const cv::Point2d m = 0.5 * (t.corners[e.corner0].position + t.corners[e.corner1].position);
        EXPECT_NEAR(c.x, m.x, 1e-9);
        EXPECT_NEAR(c.y, m.y, 1e-9);
    }
    EXPECT_EQ(twoCorner, 22);
}

TEST(ChartTruth, EdgeAnglesFollowTheSquaresTurn) {
    const ChartDesign d = designChart(ChartProject::K74T16BX);
    const LayoutTruth t = layoutTruth(d, 0, {});
    for (const EdgeTruth& e : t.edges) {
        const double turn = std::abs(d.squares[e.square].angleRad) * 180.0 / kPi;
        EXPECT_NEAR(edgeAngleDeg(d, t, e, {}, 90.0), turn, 1e-9);
    }
}

}  // namespace
