// The chart description renderer against geometry it must reproduce: the exact square
// renderer where the two meet, each edge's half-level crossing and blur on the truth's line
// and sigma under barrel and pincushion distortion, the bow of a distorted side, the frame
// distance to a side's image, levels, fall-off, noise and mosaic gains on flat patches,
// clutter where it was asked for, defocus over the field against its closed form, the grid
// builders, and the settings it refuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "render/ChartRenderer.h"
#include "render/DescriptionRenderer.h"
#include "render/DescriptionTruth.h"
#include "render/FocusField.h"
#include "render/FrameLine.h"
#include "render/GridChart.h"
#include "render/SfrTruth.h"
#include "render/Undistortion.h"
#include "talonvireo/ChartRegistration.h"

namespace {
using namespace talonvireo::render;
using talonvireo::ChartDescription;
using talonvireo::ChartEdge;
using talonvireo::ChartMark;
using talonvireo::ChartPoint;
using talonvireo::ChartRegistration;
using talonvireo::ChartShape;
using talonvireo::ChartSlot;
using talonvireo::chartToFrame;

constexpr double kPi = 3.141592653589793;

double valueAt(const cv::Mat& m, int r, int c) {
    switch (m.type()) {
        case CV_64F:
            return m.at<double>(r, c);
        case CV_16U:
            return m.at<std::uint16_t>(r, c);
        default:
            return m.at<std::uint8_t>(r, c);
    }
}

// A chart point `t` of the way from a to b.
ChartPoint along(ChartPoint a, ChartPoint b, double t) {
    return {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
}

// The cubic through (-1, v[0]), (0, v[1]), (1, v[2]), (2, v[3]) at s.
double cubic(const double* v, double s) {
    return -s * (s - 1) * (s - 2) / 6 * v[0] + (s + 1) * (s - 1) * (s - 2) / 2 * v[1] -
           (s + 1) * s * (s - 2) / 2 * v[2] + (s + 1) * s * (s - 1) / 6 * v[3];
}

// Where samples v cross `half` between the bracketing pair nearest `guess` (sample units),
// from the cubic through the four samples about it; NaN when nothing crosses.
double profileCrossing(const std::vector<double>& v, double half, double guess) {
    int best = -1;
    for (int k = 1; k + 2 < static_cast<int>(v.size()); ++k) {
        if ((v[k] - half) * (v[k + 1] - half) <= 0.0 && v[k] != v[k + 1] &&
            (best < 0 || std::abs(k + 0.5 - guess) < std::abs(best + 0.5 - guess))) {
            best = k;
        }
    }
    if (best < 0) {
        return std::nan("");
    }
    const double* p = &v[best - 1];
    const double sign = v[best + 1] > v[best] ? 1.0 : -1.0;
    double lo = 0.0, hi = 1.0;
    for (int i = 0; i < 60; ++i) {
        const double mid = 0.5 * (lo + hi);
        (sign * (cubic(p, mid) - half) < 0.0 ? lo : hi) = mid;
    }
    return best + 0.5 * (lo + hi);
}

// What one row (for an edge nearer the vertical) or column through an edge point shows.
struct Probe {
    bool ok = false;
    double offset = 0.0;  // of the half-level crossing from the true line, px
    double sigma = 0.0;   // of the blur, from the spread of the profile's differences
};

// Probes `frame` across the edge through `m` with tangent (tx, ty), `halfWidth` samples either
// side, the crossing at level `half`.
Probe probeEdge(const cv::Mat& frame, ChartPoint m, double tx, double ty, double half,
                int halfWidth) {
    Probe probe;
    const double norm = std::hypot(tx, ty);
    tx /= norm;
    ty /= norm;
    const bool rowwise = std::abs(ty) >= std::abs(tx);
    const int fixed = static_cast<int>(std::lround(rowwise ? m.y : m.x));
    const double expect = rowwise ? m.x + (fixed - m.y) * tx / ty : m.y + (fixed - m.x) * ty / tx;
    const int start = static_cast<int>(std::floor(expect)) - halfWidth;
    const int count = 2 * halfWidth + 2;
    const int limit = rowwise ? frame.cols : frame.rows;
    if (start < 0 || start + count > limit || fixed < 0 ||
        fixed >= (rowwise ? frame.rows : frame.cols)) {
        return probe;
    }
    std::vector<double> v(count);
    for (int k = 0; k < count; ++k) {
        v[k] = rowwise ? valueAt(frame, fixed, start + k) : valueAt(frame, start + k, fixed);
    }
    const double at = profileCrossing(v, half, expect - start);
    if (!std::isfinite(at)) {
        return probe;
    }
    const double x = rowwise ? start + at : fixed, y = rowwise ? fixed : start + at;
    probe.offset = (x - m.x) * ty - (y - m.y) * tx;
    // Spread of the differences, each at its pair's middle: the line spread across the
    // sampling line plus 1/12 for the differencing. Across the edge it is sigma^2 + 1/12 (the
    // pixel's aperture), stretched by 1 / cos a along the sampling line.
    double mass = 0.0, first = 0.0, second = 0.0;
    for (int k = 0; k + 1 < count; ++k) {
        const double d = v[k + 1] - v[k];
        mass += d;
        first += d * (k + 0.5);
        second += d * (k + 0.5) * (k + 0.5);
    }
    const double mean = first / mass;
    const double spread = second / mass - mean * mean;
    const double cosA = rowwise ? std::abs(ty) : std::abs(tx);
    probe.sigma = std::sqrt((spread - 1.0 / 12.0) * cosA * cosA - 1.0 / 12.0);
    probe.ok = true;
    return probe;
}

// The tangent of the image of chart segment a -> b at `t` of the way, from the model.
ChartPoint modelTangent(const ChartRegistration& placement, ChartPoint a, ChartPoint b, double t) {
    const ChartPoint p = chartToFrame(placement, along(a, b, t + 1e-4));
    const ChartPoint q = chartToFrame(placement, along(a, b, t - 1e-4));
    return {p.x - q.x, p.y - q.y};
}

// The chart segment an edge truth stands for.
void edgeEnds(const ChartDescription& d, const DescriptionEdgeTruth& t, ChartPoint& a,
              ChartPoint& b) {
    if (t.shape >= 0) {
        a = d.shapes[t.shape].corners[t.side];
        b = d.shapes[t.shape].corners[(t.side + 1) % 4];
    } else {
        a = d.edges[t.edge].from;
        b = d.edges[t.edge].to;
    }
}

DescriptionRenderSettings wordsFrame(int width, int height) {
    DescriptionRenderSettings s = settingsForFrame(width, height);
    s.bits = 16;
    return s;
}

double fullScale(const DescriptionRenderSettings& s) {
    return std::ldexp(1.0, s.bits) - 1.0;
}

// ---- The exact square renderer where the two meet ----

TEST(DescriptionRenderer, AnUndistortedGridMatchesTheExactSquareRenderer) {
    const GridChartSettings g;
    const ChartDescription grid = gridChart(g);
    std::vector<ChartSquare> squares;
    for (int k = 0; k < g.rows * g.columns; ++k) {
        const ChartPoint c = gridCellCentre(g, k);
        squares.push_back({c.x, c.y, g.side, gridCellTurnDeg(g, k) * kPi / 180.0});
    }
    DescriptionRenderSettings s = wordsFrame(4000, 3000);
    const cv::Mat coverage = chartCoverage(squares, {}, s.sigmaCentre, s.width, s.height);
    const cv::Mat levels = renderDescriptionLevels(grid, s);
    // Where the square renderer integrates, the two agree to the quadrature's rounding; where
    // it calls a pixel 0 or 1 outright (beyond 5.5 sigma) it is itself within 2e-8.
    double worstIntegrated = 0.0, worstOutright = 0.0;
    for (int r = 0; r < s.height; ++r) {
        for (int c = 0; c < s.width; ++c) {
            const double expected = coverage.at<double>(r, c);
            const double got = (s.light - levels.at<double>(r, c)) / (s.light - s.dark);
            double& worst = expected > 0.0 && expected < 1.0 ? worstIntegrated : worstOutright;
            worst = std::max(worst, std::abs(got - expected));
        }
    }
    std::printf(
        "[ accuracy ] coverage against the square renderer: %.2e integrated, %.2e "
        "outright\n",
        worstIntegrated, worstOutright);
    EXPECT_LE(worstIntegrated, 1e-9);
    EXPECT_LE(worstOutright, 2e-8);

    ChartExposure exposure;
    exposure.bits = 16;
    exposure.dark = s.dark;
    exposure.light = s.light;
    const cv::Mat expected = exposeChart(coverage, exposure);
    const cv::Mat got = renderDescription(grid, s);
    ASSERT_EQ(got.type(), CV_16U);
    EXPECT_LE(cv::norm(got, expected, cv::NORM_INF), 1.0);
}

// ---- Edges under distortion: crossing, blur and bow against the truth ----

struct DistortedGrid {
    ChartDescription chart;
    DescriptionRenderSettings settings;
    cv::Mat frame;
    std::vector<DescriptionEdgeTruth> truth;
};

DistortedGrid distortedGrid(double k1, double scale) {
    DistortedGrid g;
    g.chart = gridChart();
    g.settings = wordsFrame(4000, 3000);
    ChartRegistration& p = g.settings.placement;
    p.k1 = k1;
    // Scale about the frame centre, so that a pincushion keeps the grid inside the frame.
    p.homography[0] = scale;
    p.homography[4] = scale;
    p.homography[2] = p.centreX * (1.0 - scale);
    p.homography[5] = p.centreY * (1.0 - scale);
    g.settings.sigmaCentre = 1.0;
    g.settings.sigmaCorner = 2.0;
    g.frame = renderDescription(g.chart, g.settings);
    g.truth = descriptionTruth(g.chart, g.settings);
    return g;
}

void expectEdgesOnTheirTruth(const char* name, const DistortedGrid& g) {
    const double half = 0.5 * (g.settings.dark + g.settings.light) * fullScale(g.settings);
    const FrameField field = FrameField::of(g.settings.width, g.settings.height);
    int probed = 0;
    double worstOffset = 0.0, worstSigma = 0.0, farthest = 0.0;
    for (const DescriptionEdgeTruth& t : g.truth) {
        if (!t.inside || std::min({t.midpoint.x, t.midpoint.y, g.settings.width - t.midpoint.x,
                                   g.settings.height - t.midpoint.y}) < 30.0) {
            continue;
        }
        ChartPoint a, b;
        edgeEnds(g.chart, t, a, b);
        const ChartPoint tangent = modelTangent(g.settings.placement, a, b, 0.5);
        const Probe probe = probeEdge(g.frame, t.midpoint, tangent.x, tangent.y, half, 20);
        ASSERT_TRUE(probe.ok) << name << " shape " << t.shape << " side " << t.side;
        ++probed;
        worstOffset = std::max(worstOffset, std::abs(probe.offset));
        worstSigma = std::max(worstSigma, std::abs(probe.sigma / t.sigma - 1.0));
        farthest = std::max(farthest, std::sqrt(field.rho2(t.midpoint.x, t.midpoint.y)));
        EXPECT_LE(std::abs(probe.offset), 0.02)
            << name << " shape " << t.shape << " side " << t.side;
        EXPECT_NEAR(probe.sigma, t.sigma, 0.005 * t.sigma)
            << name << " shape " << t.shape << " side " << t.side;
    }
    std::printf(
        "[ accuracy ] %s: %d edges out to rho %.2f, crossing within %.4f px of the "
        "truth's line, sigma within %.2f %%\n",
        name, probed, farthest, worstOffset, 100.0 * worstSigma);
    EXPECT_GE(probed, 400);
    EXPECT_GE(farthest, 0.85);  // edges near the frame's corners were among them
}

TEST(DescriptionRenderer, EdgesCrossHalfLevelOnTheirTruthWithTheirSigmaUnderBarrel) {
    expectEdgesOnTheirTruth("barrel 10 %", distortedGrid(-0.10, 1.0));
}

TEST(DescriptionRenderer, EdgesCrossHalfLevelOnTheirTruthWithTheirSigmaUnderPincushion) {
    expectEdgesOnTheirTruth("pincushion 10 %", distortedGrid(0.10, 0.88));
}

TEST(DescriptionTruth, BowOfACentredSideMatchesTheDistortionInClosedForm) {
    // A horizontal chart side of length L centred over the frame centre, dy from it: its
    // middle and ends move radially by 1 + k1 rho^2, so it bows by dy k1 (L / 2)^2 / r0^2,
    // to the left of from -> to (up) when positive.
    DescriptionRenderSettings s = settingsForFrame(4000, 3000);
    for (const double k1 : {-0.10, 0.10}) {
        for (const double dy : {-1000.0, 700.0}) {
            s.placement.k1 = k1;
            const double cx = s.placement.centreX, cy = s.placement.centreY;
            const double r0 = s.placement.normRadius, l = 400.0;
            ChartDescription d;
            d.edges.push_back({{cx - 0.5 * l, cy + dy}, {cx + 0.5 * l, cy + dy}, 1});
            const DescriptionEdgeTruth t = descriptionTruth(d, s).at(0);
            EXPECT_NEAR(t.bow, dy * k1 * 0.25 * l * l / (r0 * r0), 1e-6) << k1 << " " << dy;
            EXPECT_NEAR(t.angleDeg, 0.0, 1e-9);
        }
    }
}

// Four squares of side 700 towards the frame's corners, under the distortion: sides that bow
// by pixels rather than the grid's few tenths.
DistortedGrid bigSquares(double k1, double scale) {
    DistortedGrid g;
    GridChartSettings big;
    big.rows = 2;
    big.columns = 2;
    big.pitchX = 2000.0;
    big.pitchY = 1500.0;
    big.side = 700.0;
    big.leastTurnDeg = 6.0;
    big.mostTurnDeg = 9.0;
    g.chart = gridChart(big);
    g.settings = wordsFrame(4000, 3000);
    ChartRegistration& p = g.settings.placement;
    p.k1 = k1;
    p.homography[0] = p.homography[4] = scale;
    p.homography[2] = p.centreX * (1.0 - scale);
    p.homography[5] = p.centreY * (1.0 - scale);
    g.settings.sigmaCentre = 1.0;
    g.settings.sigmaCorner = 2.0;
    g.frame = renderDescription(g.chart, g.settings);
    g.truth = descriptionTruth(g.chart, g.settings);
    return g;
}

void expectBowOfTheRenderedSides(const char* name, const DistortedGrid& g) {
    // The image's crossings all along each side follow the model's curve, and their largest
    // offset from the chord is the truth's bow.
    const double half = 0.5 * (g.settings.dark + g.settings.light) * fullScale(g.settings);
    int sides = 0;
    double worstCurve = 0.0, worstBow = 0.0, largestBow = 0.0;
    for (const DescriptionEdgeTruth& t : g.truth) {
        ASSERT_TRUE(t.inside);
        ChartPoint a, b;
        edgeEnds(g.chart, t, a, b);
        const double chord = std::hypot(t.to.x - t.from.x, t.to.y - t.from.y);
        double largest = 0.0;
        for (double u = 0.05; u <= 0.951; u += 0.01) {
            const ChartPoint m = chartToFrame(g.settings.placement, along(a, b, u));
            const ChartPoint tangent = modelTangent(g.settings.placement, a, b, u);
            const Probe probe = probeEdge(g.frame, m, tangent.x, tangent.y, half, 20);
            ASSERT_TRUE(probe.ok);
            worstCurve = std::max(worstCurve, std::abs(probe.offset));
            // The crossing, off the curve point by the probe's offset along the normal,
            // measured from the chord (positive to its left).
            const double n = std::hypot(tangent.x, tangent.y);
            const double x = m.x + probe.offset * tangent.y / n;
            const double y = m.y - probe.offset * tangent.x / n;
            const double off =
                ((x - t.from.x) * (t.to.y - t.from.y) - (y - t.from.y) * (t.to.x - t.from.x)) /
                chord;
            if (std::abs(off) > std::abs(largest)) {
                largest = off;
            }
        }
        ++sides;
        worstBow = std::max(worstBow, std::abs(largest - t.bow));
        largestBow = std::max(largestBow, std::abs(t.bow));
        EXPECT_NEAR(largest, t.bow, 0.02) << name << " shape " << t.shape << " side " << t.side;
    }
    std::printf(
        "[ accuracy ] %s: %d sides bowed up to %.2f px: crossings within %.4f px of "
        "the curve, bow within %.4f px\n",
        name, sides, largestBow, worstCurve, worstBow);
    EXPECT_EQ(sides, 16);
    EXPECT_GE(largestBow, 1.5);
    EXPECT_LE(worstCurve, 0.02);
}

TEST(DescriptionTruth, BowMatchesTheRenderedSidesUnderBarrel) {
    expectBowOfTheRenderedSides("barrel 10 %", bigSquares(-0.10, 1.0));
}

TEST(DescriptionTruth, BowMatchesTheRenderedSidesUnderPincushion) {
    expectBowOfTheRenderedSides("pincushion 10 %", bigSquares(0.10, 0.88));
}

TEST(FrameLine, DistanceToADistortedSideMatchesTheNearestPointOfItsImage) {
    // Points up to 15 px either side of a side near a frame corner, against the nearest point
    // of its image found by golden-section search along the chart line.
    for (const double k1 : {-0.10, 0.10}) {
        ChartRegistration placement = talonvireo::undistortedRegistration(4000, 3000);
        placement.k1 = k1;
        placement.homography[6] = 2e-5;  // and a little perspective
        placement.homography[8] = 1.0 - 2e-5 * 2000.0;
        const ChartPoint a{3150.0, 2550.0}, b{3330.0, 2590.0};
        const FrameLine line = frameLine(placement, a, b, {3240.0, 2700.0});
        const double bend = distortionBounds(placement, 4000, 3000).bend;
        double worstFirst = 0.0, worstRefined = 0.0;
        for (double u = 0.1; u <= 0.9; u += 0.2) {
            const ChartPoint m = chartToFrame(placement, along(a, b, u));
            const ChartPoint tangent = modelTangent(placement, a, b, u);
            const double n = std::hypot(tangent.x, tangent.y);
            for (double d = -15.0; d <= 15.0; d += 1.5) {
                const double px = m.x - d * tangent.y / n, py = m.y + d * tangent.x / n;
                UndistortedPoint up;
                ASSERT_TRUE(undistort(placement, px, py, up));
                const FrameDistance first = firstOrderDistance(line, up);
                const FrameDistance refined = refinedDistance(line, placement, px, py, first);
                // The nearest point of the image.
                auto gap = [&](double t) {
                    const ChartPoint q = chartToFrame(placement, along(a, b, t));
                    return std::hypot(q.x - px, q.y - py);
                };
                double lo = u - 0.2, hi = u + 0.2;
                for (int i = 0; i < 200; ++i) {
                    const double m1 = lo + 0.382 * (hi - lo), m2 = hi - 0.382 * (hi - lo);
                    (gap(m1) < gap(m2) ? hi : lo) = (gap(m1) < gap(m2) ? m2 : m1);
                }
                const double exact = gap(0.5 * (lo + hi));
                // The positive side is the one holding (3240, 2700) on the chart: below.
                const double signedExact = d >= 0.0 ? exact : -exact;
                worstFirst = std::max(worstFirst, std::abs(first.d - signedExact));
                worstRefined = std::max(worstRefined, std::abs(refined.d - signedExact));
                EXPECT_LE(std::abs(first.d - signedExact), d * d * bend + 1e-9);
            }
        }
        std::printf(
            "[ accuracy ] k1 %+.2f: frame distance within %.2e px first order (bound "
            "at 15 px %.2e), %.2e px refined\n",
            k1, worstFirst, 225.0 * bend, worstRefined);
        EXPECT_LE(worstRefined, 1e-5);
    }
}

// ---- Truth records ----

TEST(DescriptionTruth, UndistortedGridEdgesAreTheSquaresSides) {
    const GridChartSettings g;
    const ChartDescription grid = gridChart(g);
    DescriptionRenderSettings s = settingsForFrame(4000, 3000);
    s.sigmaCentre = 1.0;
    s.sigmaCorner = 2.0;
    const std::vector<DescriptionEdgeTruth> truth = descriptionTruth(grid, s);
    ASSERT_EQ(truth.size(), 432u);
    const FrameField field = FrameField::of(4000, 3000);
    for (std::size_t i = 0; i < truth.size(); ++i) {
        const DescriptionEdgeTruth& t = truth[i];
        const int k = static_cast<int>(i / 4), side = static_cast<int>(i % 4);
        EXPECT_EQ(t.shape, k);
        EXPECT_EQ(t.side, side);
        EXPECT_EQ(t.slot, static_cast<int>(i));
        EXPECT_EQ(t.polarity, 1);
        const ChartPoint a = grid.shapes[k].corners[side];
        const ChartPoint b = grid.shapes[k].corners[(side + 1) % 4];
        EXPECT_NEAR(t.midpoint.x, 0.5 * (a.x + b.x), 1e-9);
        EXPECT_NEAR(t.midpoint.y, 0.5 * (a.y + b.y), 1e-9);
        EXPECT_NEAR(t.length, 190.0, 1e-6);
        EXPECT_NEAR(t.bow, 0.0, 1e-9);
        // Side 0 runs along the square's turned x axis, each next side a quarter turn on.
        const double turn = gridCellTurnDeg(g, k);
        const double off = std::fmod(t.angleDeg - turn - 90.0 * side + 720.0, 180.0);
        EXPECT_NEAR(std::min(off, 180.0 - off), 0.0, 1e-6);
        EXPECT_NEAR(t.axisAngleDeg, std::abs(turn), 1e-6);
        const double rho2 = field.rho2(t.midpoint.x, t.midpoint.y);
        EXPECT_NEAR(t.sigma, 1.0 + rho2, 1e-12);
        EXPECT_TRUE(t.inside);
        for (const double f : {0.0, 0.1, 0.25, 0.5}) {
            EXPECT_EQ(t.sfr(f), trueSfr(f, t.sigma, t.axisAngleDeg));
        }
    }
}

TEST(DescriptionTruth, SlotsGiveOneRecordEachInTheirOrderAtTheirPoint) {
    ChartDescription d = gridChart();
    d.edges.push_back({{100.0, 2900.0}, {600.0, 2960.0}, -1});
    d.slots.push_back({"E07", 3, 5, 2, -1, 0.25, 0, ""});
    d.slots.push_back({"L01", 0, -1, 0, 0, 0.5, 0, ""});
    const DescriptionRenderSettings s = settingsForFrame(4000, 3000);
    const std::vector<DescriptionEdgeTruth> truth = descriptionTruth(d, s);
    ASSERT_EQ(truth.size(), 2u);
    EXPECT_EQ(truth[0].name, "E07");
    EXPECT_EQ(truth[0].slot, 3);
    EXPECT_EQ(truth[0].shape, 5);
    EXPECT_EQ(truth[0].side, 2);
    const ChartPoint a = d.shapes[5].corners[2], b = d.shapes[5].corners[3];
    EXPECT_NEAR(truth[0].centre.x, a.x + 0.25 * (b.x - a.x), 1e-9);
    EXPECT_NEAR(truth[0].centre.y, a.y + 0.25 * (b.y - a.y), 1e-9);
    EXPECT_EQ(truth[1].name, "L01");
    EXPECT_EQ(truth[1].edge, 0);
    EXPECT_EQ(truth[1].polarity, -1);
    EXPECT_NEAR(truth[1].length, std::hypot(500.0, 60.0), 1e-6);

    d.slots.push_back({"bad", 4, 200, 0, -1, 0.5, 0, ""});
    EXPECT_THROW(descriptionTruth(d, s), std::invalid_argument);
}

TEST(DescriptionTruth, InsideIsFalseForSidesPastTheFrameBorder) {
    ChartDescription d;
    ChartShape s;
    s.corners = {ChartPoint{-40.3, 100.2}, ChartPoint{150.1, 80.7}, ChartPoint{170.4, 270.9},
                 ChartPoint{-20.2, 290.6}};
    d.shapes.push_back(s);
    const std::vector<DescriptionEdgeTruth> truth =
        descriptionTruth(d, settingsForFrame(1000, 800));
    ASSERT_EQ(truth.size(), 4u);
    EXPECT_FALSE(truth[0].inside);  // from x = -40
    EXPECT_TRUE(truth[1].inside);
    EXPECT_FALSE(truth[2].inside);  // to x = -20
    EXPECT_FALSE(truth[3].inside);
}

// ---- Composition: light on dark, lone edges, marks ----

TEST(DescriptionRenderer, LightSquaresInADarkPanelAreLightOverDark) {
    const GridChartSettings g;
    const ChartDescription d = lightOnDarkGridChart(g, 25.0);
    ASSERT_EQ(d.shapes.size(), 109u);
    DescriptionRenderSettings s = wordsFrame(4000, 3000);
    const cv::Mat frame = renderDescription(d, s);
    const double full = fullScale(s);
    const double dark = std::round(s.dark * full), light = std::round(s.light * full);
    for (int k = 0; k < g.rows * g.columns; k += 7) {
        const ChartPoint c = gridCellCentre(g, k);
        EXPECT_EQ(valueAt(frame, std::lround(c.y), std::lround(c.x)), light) << k;  // a square
        // Between the square and its cell's border, on the frame centre's side: the panel.
        const double toward = c.x < 2000.0 ? 135.0 : -135.0;
        EXPECT_EQ(valueAt(frame, std::lround(c.y), std::lround(c.x + toward)), dark) << k;
    }
    EXPECT_EQ(valueAt(frame, 10, 10), light);  // outside the panel
    EXPECT_EQ(valueAt(frame, 2990, 3990), light);
    // A light square's side crosses half level on its truth, the step the other way round.
    const std::vector<DescriptionEdgeTruth> truth = descriptionTruth(d, s);
    const DescriptionEdgeTruth& t = truth[4 * 50 + 1];
    EXPECT_EQ(t.polarity, -1);
    ChartPoint a, b;
    edgeEnds(d, t, a, b);
    const ChartPoint tangent = modelTangent(s.placement, a, b, 0.5);
    const Probe probe =
        probeEdge(frame, t.midpoint, tangent.x, tangent.y, 0.5 * (s.dark + s.light) * full, 12);
    ASSERT_TRUE(probe.ok);
    EXPECT_LE(std::abs(probe.offset), 0.02);
}

TEST(DescriptionRenderer, LoneEdgesDarkenTheirDarkSideAndMarksAreDiscs) {
    ChartDescription d;
    d.edges.push_back({{100.3, 0.0}, {160.3, 800.0}, 1});   // dark on the right: x < line
    d.edges.push_back({{900.2, 0.0}, {860.2, 800.0}, -1});  // dark on the left: x > line
    d.marks.push_back({{500.3, 400.2}, 80.0, 1});
    d.marks.push_back({{500.3, 600.2}, 40.0, -1});
    DescriptionRenderSettings s = wordsFrame(1000, 800);
    s.sigmaCentre = s.sigmaCorner = 1.2;
    const cv::Mat frame = renderDescription(d, s);
    const double full = fullScale(s);
    const double dark = std::round(s.dark * full), light = std::round(s.light * full);
    // Travelling down the frame (y down), the right hand points to -x.
    EXPECT_EQ(valueAt(frame, 400, 20), dark);
    EXPECT_EQ(valueAt(frame, 400, 300), light);
    EXPECT_EQ(valueAt(frame, 400, 980), dark);
    EXPECT_EQ(valueAt(frame, 400, 500), dark);   // the dark mark
    EXPECT_EQ(valueAt(frame, 600, 500), light);  // the light mark shows nothing on light
    const double half = 0.5 * (s.dark + s.light) * full;
    // The first edge's crossing on its line, and the dark mark's rim at its radius (less the
    // blur's sigma^2 / 2R pull, 0.02 px here).
    const Probe edge = probeEdge(frame, {130.3, 400.0}, 60.0, 800.0, half, 12);
    ASSERT_TRUE(edge.ok);
    EXPECT_LE(std::abs(edge.offset), 0.02);
    EXPECT_NEAR(edge.sigma, 1.2, 0.006);
    const Probe rim = probeEdge(frame, {460.3, 400.2}, 0.0, 1.0, half, 12);
    ASSERT_TRUE(rim.ok);
    EXPECT_LE(std::abs(rim.offset), 0.05);
}

TEST(DescriptionRenderer, MarksFollowThePlacementUnderDistortion) {
    // A dark mark towards a frame corner under 10 % barrel distortion: its rim crosses half
    // level where the model puts the rim, left and right of its centre.
    ChartDescription d;
    const ChartPoint centre{3500.3, 2600.2};
    const double radius = 30.0;
    d.marks.push_back({centre, 2.0 * radius, 1});
    DescriptionRenderSettings s = wordsFrame(4000, 3000);
    s.placement.k1 = -0.10;
    s.sigmaCentre = 1.0;
    s.sigmaCorner = 1.5;
    const cv::Mat frame = renderDescription(d, s);
    const ChartPoint middle = chartToFrame(s.placement, centre);
    EXPECT_EQ(valueAt(frame, std::lround(middle.y), std::lround(middle.x)),
              std::round(s.dark * fullScale(s)));
    const double half = 0.5 * (s.dark + s.light) * fullScale(s);
    for (const double side : {-1.0, 1.0}) {
        // The rim point on the chart's horizontal through the centre, and its tangent.
        const ChartPoint rim = chartToFrame(s.placement, {centre.x + side * radius, centre.y});
        const ChartPoint above = chartToFrame(
            s.placement,
            {centre.x + side * radius * std::cos(1e-3), centre.y - radius * std::sin(1e-3)});
        const Probe probe = probeEdge(frame, rim, above.x - rim.x, above.y - rim.y, half, 12);
        ASSERT_TRUE(probe.ok);
        EXPECT_LE(std::abs(probe.offset), 0.05) << side;
    }
}

// ---- Looks on flat patches ----

// A dark square of side 500 turned 7 degrees in the middle of a 1200 x 900 frame.
ChartDescription middleSquare() {
    GridChartSettings g;
    g.rows = 1;
    g.columns = 1;
    g.pitchX = 1200.0;
    g.pitchY = 900.0;
    g.side = 500.0;
    g.leastTurnDeg = g.mostTurnDeg = 7.0;
    return gridChart(g);
}

TEST(DescriptionRenderer, LevelsAndFallOffOnFlatPatchesAreTheSettings) {
    const ChartDescription d = middleSquare();
    for (const double dark : {0.2, 0.4}) {  // 4:1 and 2:1 contrast
        DescriptionRenderSettings s = wordsFrame(1200, 900);
        s.dark = dark;
        s.light = 0.8;
        s.cornerLight = 0.5;
        const cv::Mat frame = renderDescription(d, s);
        const double full = fullScale(s);
        const FrameField field = FrameField::of(1200, 900);
        auto expected = [&](double level, int r, int c) {
            return std::round(full * level * (1.0 - 0.5 * field.rho2(c, r)));
        };
        // The light ground at the corners, the dark square about the centre.
        for (const cv::Rect patch : {cv::Rect(0, 0, 40, 40), cv::Rect(1160, 860, 40, 40),
                                     cv::Rect(0, 860, 40, 40), cv::Rect(1160, 0, 40, 40)}) {
            for (int r = patch.y; r < patch.y + patch.height; ++r) {
                for (int c = patch.x; c < patch.x + patch.width; ++c) {
                    ASSERT_NEAR(valueAt(frame, r, c), expected(0.8, r, c), 1.0) << r << " " << c;
                }
            }
        }
        for (int r = 430; r < 470; ++r) {
            for (int c = 580; c < 620; ++c) {
                ASSERT_NEAR(valueAt(frame, r, c), expected(dark, r, c), 1.0) << r << " " << c;
            }
        }
        // At the very corner the light is half the centre's.
        EXPECT_NEAR(valueAt(frame, 0, 0) / (0.8 * full), 0.5, 2e-3);
        EXPECT_NEAR(0.8 * full / valueAt(frame, 450, 600), 0.8 / dark, 1e-3);
    }
}

struct Moments {
    double mean = 0.0;
    double deviation = 0.0;
};

Moments moments(const cv::Mat& frame, cv::Rect patch) {
    cv::Mat values;
    frame(patch).convertTo(values, CV_64F);
    cv::Scalar mean, deviation;
    cv::meanStdDev(values, mean, deviation);
    return {mean[0], deviation[0]};
}

TEST(DescriptionRenderer, ReadAndShotNoiseOnFlatPatchesAreTheSettings) {
    const ChartDescription d = middleSquare();
    DescriptionRenderSettings s = wordsFrame(1200, 900);
    s.dark = 0.2;
    s.light = 0.8;
    const double full = fullScale(s);
    const cv::Rect lightPatch(20, 20, 150, 150), darkPatch(525, 375, 150, 150);
    // Rounding adds 1/12 to the variance.
    auto noiseOf = [](double sd) { return std::sqrt(sd * sd + 1.0 / 12.0); };

    s.readNoise = 20.0;
    cv::Mat frame = renderDescription(d, s);
    for (const cv::Rect patch : {lightPatch, darkPatch}) {
        const Moments m = moments(frame, patch);
        EXPECT_NEAR(m.deviation, noiseOf(20.0), 0.05 * 20.0);
        EXPECT_NEAR(m.mean, (patch == lightPatch ? s.light : s.dark) * full, 1.0);
    }

    s.readNoise = 0.0;
    s.shotNoise = 400.0;  // at full scale: sqrt(level) of it elsewhere
    s.seed = 7;
    frame = renderDescription(d, s);
    const Moments light = moments(frame, lightPatch), dark = moments(frame, darkPatch);
    EXPECT_NEAR(light.deviation, noiseOf(400.0 * std::sqrt(0.8)), 0.05 * 400.0 * std::sqrt(0.8));
    EXPECT_NEAR(dark.deviation, noiseOf(400.0 * std::sqrt(0.2)), 0.05 * 400.0 * std::sqrt(0.2));
    EXPECT_NEAR(light.mean, 0.8 * full, 10.0);

    // Seeded: the same frame again, another with another seed.
    EXPECT_EQ(cv::norm(frame, renderDescription(d, s), cv::NORM_INF), 0.0);
    s.seed = 8;
    EXPECT_GT(cv::norm(frame, renderDescription(d, s), cv::NORM_INF), 0.0);
}

TEST(DescriptionRenderer, MosaicSitesCarryTheirGains) {
    const ChartDescription d = middleSquare();
    DescriptionRenderSettings s = wordsFrame(1200, 900);
    s.bits = 10;
    s.bayer = true;
    s.gainRed = 0.55;
    s.gainGreen = 1.0;
    s.gainBlue = 0.8;
    const cv::Mat frame = renderDescription(d, s);
    ASSERT_EQ(frame.type(), CV_16U);
    const double full = fullScale(s);
    const double gains[2][2] = {{s.gainRed, s.gainGreen}, {s.gainGreen, s.gainBlue}};
    for (int r = 0; r < 2; ++r) {
        for (int c = 0; c < 2; ++c) {
            const double g = gains[r][c];
            EXPECT_EQ(valueAt(frame, 100 + r, 100 + c), std::round(s.light * g * full));
            EXPECT_EQ(valueAt(frame, 450 + r, 600 + c), std::round(s.dark * g * full));
        }
    }
}

// ---- Clutter ----

TEST(DescriptionRenderer, ClutterIsDrawnWhereAskedAndTheSpotClips) {
    const ChartDescription d = middleSquare();
    DescriptionRenderSettings s = settingsForFrame(1200, 900);
    const cv::Mat clean = renderDescription(d, s);
    s.clutter.discs.push_back({150.4, 700.3, 60.0, 1});
    s.clutter.texts.push_back({100.0, 100.0, 35.0, "F4", 0.0, 1});
    s.clutter.spots.push_back({1050.0, 150.0, 20.0, 3.0});
    const cv::Mat frame = renderDescription(d, s);
    const double dark = std::round(s.dark * 255.0), light = std::round(s.light * 255.0);

    // The disc: dark at its centre, light past its rim, its rim at its radius.
    EXPECT_EQ(valueAt(frame, 700, 150), dark);
    EXPECT_EQ(valueAt(frame, 700, 190), light);
    // The text: the F's top bar (x 100 .. 121, y 100 .. 105) is dark along its middle.
    for (int c = 103; c <= 118; ++c) {
        EXPECT_LT(valueAt(frame, 102, c), dark + 0.1 * (light - dark)) << c;
    }
    // The spot: full scale at its middle, the ground again five radii out.
    EXPECT_EQ(valueAt(frame, 150, 1050), 255.0);
    EXPECT_EQ(valueAt(frame, 150, 1150), light);

    // Nothing else changed: every changed pixel lies within reach of an item asked for.
    cv::Mat changed = frame != clean;
    const cv::Rect disc(150 - 40, 700 - 40, 81, 81);
    const cv::Rect text(100 - 8, 100 - 8, 2 * 35 + 16, 35 + 16);
    const cv::Rect spot(1050 - 9 * 20, 150 - 9 * 20, 18 * 20 + 1, 18 * 20 + 1);
    int inDisc = 0, inText = 0, inSpot = 0, elsewhere = 0;
    for (int r = 0; r < changed.rows; ++r) {
        for (int c = 0; c < changed.cols; ++c) {
            if (changed.at<std::uint8_t>(r, c) == 0) {
                continue;
            }
            const cv::Point p(c, r);
            inDisc += disc.contains(p);
            inText += text.contains(p);
            inSpot += spot.contains(p);
            elsewhere += !disc.contains(p) && !text.contains(p) && !spot.contains(p);
        }
    }
    EXPECT_GT(inDisc, 2500);  // pi 30^2 = 2827
    EXPECT_GT(inText, 150);
    EXPECT_GT(inSpot, 1000);
    EXPECT_EQ(elsewhere, 0);
}

// ---- Grid builders ----

double sideAngleDeg(ChartPoint a, ChartPoint b) {
    double angle = std::atan2(b.y - a.y, b.x - a.x) * 180.0 / kPi;
    angle = std::fmod(angle + 360.0, 90.0);
    return std::min(angle, 90.0 - angle);  // from the nearer axis
}

void expectConvexClockwise(const ChartShape& s) {
    for (int k = 0; k < 4; ++k) {
        const ChartPoint a = s.corners[k], b = s.corners[(k + 1) % 4], c = s.corners[(k + 2) % 4];
        EXPECT_GT((b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x), 0.0);
    }
}

TEST(GridChart, TheGridIsNineByTwelveSquaresTurnedFiveToTwelveDegreesEitherWay) {
    const GridChartSettings g;
    const ChartDescription d = gridChart(g);
    ASSERT_EQ(d.shapes.size(), 108u);
    int positive = 0;
    for (int k = 0; k < 108; ++k) {
        const ChartShape& s = d.shapes[k];
        EXPECT_EQ(s.polarity, 1);
        expectConvexClockwise(s);
        const double turn = gridCellTurnDeg(g, k);
        EXPECT_GE(std::abs(turn), 5.0 - 1e-9);
        EXPECT_LE(std::abs(turn), 12.0 + 1e-9);
        positive += turn > 0.0;
        // Neighbours turn opposite ways.
        if (k % 12 != 0) {
            EXPECT_LT(turn * gridCellTurnDeg(g, k - 1), 0.0);
        }
        for (int i = 0; i < 4; ++i) {
            const ChartPoint a = s.corners[i], b = s.corners[(i + 1) % 4];
            EXPECT_NEAR(std::hypot(b.x - a.x, b.y - a.y), 190.0, 1e-9);
            // Turned off the axes, so that no side runs along a pixel border.
            EXPECT_NEAR(sideAngleDeg(a, b), std::abs(turn), 1e-9);
        }
        // Inside its own cell, clear of the next.
        const ChartPoint c = gridCellCentre(g, k);
        EXPECT_NEAR(c.x, g.pitchX * (k % 12 + 0.5), 1.0);
        EXPECT_NEAR(c.y, g.pitchY * (k / 12 + 0.5), 1.0);
    }
    EXPECT_EQ(positive, 54);
    GridChartSettings crowded = g;
    crowded.side = 300.0;
    EXPECT_THROW(gridChart(crowded), std::invalid_argument);
}

TEST(GridChart, TheMixHasTrapezoidsAndRectanglesWithEverySideOffTheAxes) {
    const ChartDescription d = trapezoidRectangleChart();
    ASSERT_EQ(d.shapes.size(), 108u);
    int trapezoids = 0;
    for (const ChartShape& s : d.shapes) {
        expectConvexClockwise(s);
        const ChartPoint* p = s.corners.data();
        const double top = std::hypot(p[1].x - p[0].x, p[1].y - p[0].y);
        const double bottom = std::hypot(p[3].x - p[2].x, p[3].y - p[2].y);
        trapezoids += std::abs(top - bottom) > 1.0;
        for (int i = 0; i < 4; ++i) {
            const double angle = sideAngleDeg(p[i], p[(i + 1) % 4]);
            EXPECT_GE(angle, 5.0 - 1e-9);
            EXPECT_LE(angle, 44.0);
        }
    }
    EXPECT_EQ(trapezoids, 54);
    // It renders, every side on its truth.
    DescriptionRenderSettings s = wordsFrame(4000, 3000);
    const cv::Mat frame = renderDescription(d, s);
    const double half = 0.5 * (s.dark + s.light) * fullScale(s);
    int probed = 0;
    for (const DescriptionEdgeTruth& t : descriptionTruth(d, s)) {
        ChartPoint a, b;
        edgeEnds(d, t, a, b);
        const Probe probe = probeEdge(frame, t.midpoint, b.x - a.x, b.y - a.y, half, 10);
        ASSERT_TRUE(probe.ok);
        EXPECT_LE(std::abs(probe.offset), 0.02);
        ++probed;
    }
    EXPECT_EQ(probed, 432);
}

// ---- Defocus over the field ----

// The sigma across unit normal (nx, ny) at frame point p, straight from the focus model's
// definition: the surface, the two foci, the elliptical PSF's variance along the normal.
double modelSigmaAcross(const DescriptionRenderSettings& s, ChartPoint p, double nx, double ny) {
    const FrameField field = FrameField::of(s.width, s.height);
    const double rho2 = field.rho2(p.x, p.y);
    const double s0 = s.sigmaCentre + (s.sigmaCorner - s.sigmaCentre) * std::min(rho2, 1.0);
    const FocusSettings& f = s.focus;
    const double dx = p.x - field.centreX, dy = p.y - field.centreY;
    const double x = dx * f.pixelPitchUm / 1000.0, y = dy * f.pixelPitchUm / 1000.0;
    const double zb = f.bestFocusZ + f.slopeX * x + f.slopeY * y + f.curvature * (x * x + y * y);
    const double zT = zb + 0.5 * f.astigmatism * rho2, zS = zb - 0.5 * f.astigmatism * rho2;
    const double g = f.defocusGain;
    const double radial2 = s0 * s0 + g * g * (f.lensZ - zT) * (f.lensZ - zT);
    const double azimuthal2 = s0 * s0 + g * g * (f.lensZ - zS) * (f.lensZ - zS);
    const double cosPhi = (nx * dx + ny * dy) / std::hypot(dx, dy);
    return std::sqrt(radial2 * cosPhi * cosPhi + azimuthal2 * (1.0 - cosPhi * cosPhi));
}

// The unit normal of edge t's image at its midpoint, from the model's tangent.
ChartPoint edgeNormal(const ChartDescription& d, const DescriptionRenderSettings& s,
                      const DescriptionEdgeTruth& t) {
    ChartPoint a, b;
    edgeEnds(d, t, a, b);
    const ChartPoint tangent = modelTangent(s.placement, a, b, 0.5);
    const double norm = std::hypot(tangent.x, tangent.y);
    return {-tangent.y / norm, tangent.x / norm};
}

// The blur `levels` shows across edge t at its midpoint.
double measuredSigma(const cv::Mat& levels, const ChartDescription& d,
                     const DescriptionRenderSettings& s, const DescriptionEdgeTruth& t) {
    ChartPoint a, b;
    edgeEnds(d, t, a, b);
    const ChartPoint tangent = modelTangent(s.placement, a, b, 0.5);
    const Probe probe =
        probeEdge(levels, t.midpoint, tangent.x, tangent.y, 0.5 * (s.dark + s.light), 20);
    EXPECT_TRUE(probe.ok) << "shape " << t.shape << " side " << t.side;
    EXPECT_LE(std::abs(probe.offset), 0.02) << "shape " << t.shape << " side " << t.side;
    return probe.sigma;
}

// A focus surface tilted both ways and curved, its gain strong enough to see.
FocusSettings tiltedCurvedSurface(double astigmatism) {
    FocusSettings f;
    f.on = true;
    f.bestFocusZ = 4.0;
    f.slopeX = 3.0;
    f.slopeY = -2.0;
    f.curvature = 0.5;
    f.astigmatism = astigmatism;
    f.defocusGain = 0.2;
    f.pixelPitchUm = 1.4;
    return f;
}

TEST(DescriptionRenderer, FocusModelOffRendersExactlyAsWithoutIt) {
    ChartDescription d = gridChart();
    d.marks.push_back({{2050.0, 1480.0}, 60.0, 1});
    DescriptionRenderSettings s = wordsFrame(4000, 3000);
    s.placement.k1 = -0.05;
    s.sigmaCentre = 0.8;
    s.sigmaCorner = 1.6;
    s.clutter.discs.push_back({1000.4, 2950.3, 60.0, 1});
    s.clutter.texts.push_back({3000.0, 2940.0, 35.0, "F4", 0.0, 1});
    const cv::Mat plain = renderDescription(d, s);
    const std::vector<DescriptionEdgeTruth> plainTruth = descriptionTruth(d, s);

    // Off, whatever the model holds, nothing changes.
    s.focus = tiltedCurvedSurface(12.0);
    s.focus.on = false;
    s.focus.lensZ = 30.0;
    EXPECT_EQ(cv::norm(renderDescription(d, s), plain, cv::NORM_INF), 0.0);
    // On without a defocus gain, the frame is the one in focus.
    s.focus.on = true;
    s.focus.defocusGain = 0.0;
    EXPECT_EQ(cv::norm(renderDescription(d, s), plain, cv::NORM_INF), 0.0);
    const std::vector<DescriptionEdgeTruth> truth = descriptionTruth(d, s);
    ASSERT_EQ(truth.size(), plainTruth.size());
    for (std::size_t i = 0; i < truth.size(); ++i) {
        EXPECT_EQ(truth[i].sigma, plainTruth[i].sigma) << i;
        EXPECT_TRUE(std::isnan(plainTruth[i].bestFocusZ)) << i;  // off: no best focus
        EXPECT_TRUE(std::isfinite(truth[i].bestFocusZ)) << i;
    }
}

TEST(DescriptionRenderer, AnEdgeAtItsLocalBestFocusShowsTheFocusedSigma) {
    const ChartDescription grid = gridChart();
    DescriptionRenderSettings s = wordsFrame(4000, 3000);
    s.sigmaCentre = 0.8;
    s.sigmaCorner = 1.4;
    s.focus = tiltedCurvedSurface(0.0);
    const FrameField field = FrameField::of(s.width, s.height);
    // Squares near the centre, half way out and near the corners, each alone, rendered with the
    // lens at the best focus of its side 1 and 8 um past it.
    double nearest = 1e300, farthest = -1e300;
    for (const int shape : {50, 20, 0, 107}) {
        ChartDescription d;
        d.shapes.push_back(grid.shapes.at(shape));
        const DescriptionEdgeTruth t = descriptionTruth(d, s).at(1);
        ASSERT_TRUE(t.inside);
        nearest = std::min(nearest, t.bestFocusZ);
        farthest = std::max(farthest, t.bestFocusZ);
        const double s0 = s.sigmaCentre +
                          (s.sigmaCorner - s.sigmaCentre) * field.rho2(t.midpoint.x, t.midpoint.y);
        for (const double past : {0.0, 8.0}) {
            DescriptionRenderSettings at = s;
            at.focus.lensZ = t.bestFocusZ + past;
            const double expected = std::hypot(s0, at.focus.defocusGain * past);
            const DescriptionEdgeTruth now = descriptionTruth(d, at).at(1);
            EXPECT_NEAR(now.sigma, expected, 1e-9 * expected) << shape << " " << past;
            EXPECT_NEAR(now.bestFocusZ, t.bestFocusZ, 1e-12);
            const double measured = measuredSigma(renderDescriptionLevels(d, at), d, at, t);
            EXPECT_NEAR(measured, expected, 0.005 * expected) << shape << " " << past;
            EXPECT_NEAR(now.sfr(0.25), trueSfr(0.25, expected, now.axisAngleDeg), 1e-9);
        }
    }
    // They do lie at different places of the surface.
    EXPECT_GT(farthest - nearest, 5.0);
}

// A square of side 240 at frame point (3400, 1700), turned 5 degrees off the radial direction
// there: two sides tangential, two sagittal, all about the same field point.
ChartDescription squareAcrossTheRadius(const DescriptionRenderSettings& s) {
    const FrameField field = FrameField::of(s.width, s.height);
    const ChartPoint p{3400.0, 1700.0};
    const double turn = std::atan2(p.y - field.centreY, p.x - field.centreX) + 5.0 * kPi / 180.0;
    const double c = std::cos(turn), sn = std::sin(turn), h = 120.0;
    const ChartPoint local[4] = {{-h, -h}, {h, -h}, {h, h}, {-h, h}};
    ChartDescription d;
    ChartShape square;
    for (int k = 0; k < 4; ++k) {
        square.corners[k] = {p.x + c * local[k].x - sn * local[k].y,
                             p.y + sn * local[k].x + c * local[k].y};
    }
    d.shapes.push_back(square);
    return d;
}

TEST(DescriptionRenderer, AstigmatismBlursTangentialAndSagittalEdgesByTheirOwnSigma) {
    DescriptionRenderSettings s = wordsFrame(4000, 3000);
    s.focus = tiltedCurvedSurface(40.0);
    const ChartDescription d = squareAcrossTheRadius(s);
    // The lens at the tangential focus of the square's middle.
    const FocusField focus = FocusField::of(s.focus, s.width, s.height);
    s.focus.lensZ = focus.at(3400.0, 1700.0).tangentialZ;
    const cv::Mat levels = renderDescriptionLevels(d, s);
    const std::vector<DescriptionEdgeTruth> truth = descriptionTruth(d, s);
    const FrameField field = FrameField::of(s.width, s.height);
    double tangential = 0.0, sagittal = 0.0;
    for (const DescriptionEdgeTruth& t : truth) {
        const ChartPoint n = edgeNormal(d, s, t);
        const double dx = t.midpoint.x - field.centreX, dy = t.midpoint.y - field.centreY;
        const bool isTangential = std::abs(n.x * dx + n.y * dy) > std::hypot(dx, dy) * 0.7071;
        const double expected = modelSigmaAcross(s, t.midpoint, n.x, n.y);
        EXPECT_NEAR(t.sigma, expected, 1e-9 * expected) << "side " << t.side;
        const double measured = measuredSigma(levels, d, s, t);
        EXPECT_NEAR(measured, expected, 0.005 * expected) << "side " << t.side;
        (isTangential ? tangential : sagittal) = measured;
        std::printf("[ accuracy ] %s side %d: sigma %.4f measured, %.4f from the model\n",
                    isTangential ? "tangential" : "sagittal", t.side, measured, expected);
    }
    // In tangential focus: the tangential sides near the focused sigma, the sagittal ones
    // blurred by the astigmatism there.
    EXPECT_LT(tangential, 1.1);
    EXPECT_GT(sagittal, 2.0);
}

TEST(DescriptionTruth, BestFocusIsTheLensPositionOfLeastBlurAcrossTheEdge) {
    const ChartDescription d = gridChart();
    DescriptionRenderSettings s = wordsFrame(4000, 3000);
    s.placement.k1 = -0.05;
    s.sigmaCorner = 1.5;
    s.focus = tiltedCurvedSurface(-9.0);
    const std::vector<DescriptionEdgeTruth> truth = descriptionTruth(d, s);
    double spread = 0.0;
    for (std::size_t i = 0; i < truth.size(); i += 7) {
        const DescriptionEdgeTruth& t = truth[i];
        const ChartPoint n = edgeNormal(d, s, t);
        // Brute force over the lens position, 0.01 um apart.
        DescriptionRenderSettings at = s;
        double bestZ = 0.0, least = 1e300;
        for (int k = -4000; k <= 4000; ++k) {
            at.focus.lensZ = 0.01 * k;
            const double sigma = modelSigmaAcross(at, t.centre, n.x, n.y);
            if (sigma < least) {
                least = sigma;
                bestZ = at.focus.lensZ;
            }
        }
        EXPECT_NEAR(t.bestFocusZ, bestZ, 0.006) << i;
        EXPECT_LE(std::min(t.tangentialZ, t.sagittalZ), t.bestFocusZ + 1e-12) << i;
        EXPECT_GE(std::max(t.tangentialZ, t.sagittalZ), t.bestFocusZ - 1e-12) << i;
        spread = std::max(spread, std::abs(t.tangentialZ - t.sagittalZ));
        // Where it lies on the sensor.
        const FrameField field = FrameField::of(s.width, s.height);
        EXPECT_NEAR(t.xMm, (t.centre.x - field.centreX) * 1.4e-3, 1e-12);
        EXPECT_NEAR(t.yMm, (t.centre.y - field.centreY) * 1.4e-3, 1e-12);
    }
    EXPECT_GT(spread, 5.0);  // the astigmatism told them apart
}

TEST(FieldBlur, LargestOverBoundsTheSigmaOverRandomBoxes) {
    std::mt19937 random(12345);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    auto between = [&](double a, double b) { return a + (b - a) * unit(random); };
    int boxes = 0;
    double tightest = 1e300;
    for (int model = 0; model < 60; ++model) {
        DescriptionRenderSettings s = settingsForFrame(4000, 3000);
        s.sigmaCentre = between(0.5, 2.0);
        s.sigmaCorner = between(0.5, 3.0);
        FocusSettings& f = s.focus;
        f.on = true;
        f.lensZ = between(-30.0, 30.0);
        f.bestFocusZ = between(-10.0, 10.0);
        f.slopeX = between(-8.0, 8.0);
        f.slopeY = between(-8.0, 8.0);
        f.curvature = between(-3.0, 3.0);
        f.astigmatism = between(-20.0, 20.0);
        f.defocusGain = between(0.0, 0.4);
        f.pixelPitchUm = between(0.8, 3.0);
        if (model == 0) {
            // A dome whose top, in the box, is farthest from the lens: no corner shows it.
            f = FocusSettings{};
            f.on = true;
            f.lensZ = -20.0;
            f.curvature = -2.0;
            f.defocusGain = 0.2;
        }
        const FieldBlur blur = fieldBlur(s);
        const double anywhere = blur.largest();
        for (int b = 0; b < 40; ++b) {
            // Boxes from a few pixels to more than the frame, some reaching past its border.
            const double w = std::exp(between(std::log(4.0), std::log(6000.0)));
            const double h = std::exp(between(std::log(4.0), std::log(4500.0)));
            const double x0 = model == 0 && b == 0 ? 1500.0 : between(-500.0 - w, 4500.0);
            const double y0 = model == 0 && b == 0 ? 1200.0 : between(-500.0 - h, 3500.0);
            const double x1 = model == 0 && b == 0 ? 2500.0 : x0 + w;
            const double y1 = model == 0 && b == 0 ? 1800.0 : y0 + h;
            const double bound = blur.largestOver(x0, y0, x1, y1);
            ASSERT_LE(bound, anywhere * (1.0 + 1e-12)) << model << " " << b;
            double most = 0.0;
            for (int k = 0; k < 300; ++k) {
                // Corners, edges and inside.
                const double x = k < 4 ? (k % 2 ? x1 : x0) : between(x0, x1);
                const double y = k < 4 ? (k / 2 ? y1 : y0) : between(y0, y1);
                const double a = between(0.0, 2.0 * kPi);
                const double across = blur.sigmaAcross(x, y, std::cos(a), std::sin(a));
                most = std::max({most, across, blur.sigma(x, y)});
                ASSERT_LE(across, bound) << model << " " << b << " at " << x << ", " << y;
                ASSERT_LE(blur.sigma(x, y), bound) << model << " " << b;
            }
            tightest = std::min(tightest, most / bound);
            ++boxes;
        }
    }
    std::printf("[ accuracy ] %d boxes: the largest sigma seen is at least %.3f of the bound\n",
                boxes, tightest);
}

// ---- Settings refused ----

void expectRefusal(const DescriptionRenderSettings& s, const std::string& name) {
    const ChartDescription d = middleSquare();
    try {
        renderDescription(d, s);
        ADD_FAILURE() << name << " accepted";
    } catch (const std::invalid_argument& e) {
        EXPECT_NE(std::string(e.what()).find(name), std::string::npos) << e.what();
    }
}

TEST(DescriptionRenderer, RefusesBadSettingsNamingThem) {
    const DescriptionRenderSettings good = settingsForFrame(1200, 900);
    DescriptionRenderSettings s = good;
    s.width = 0;
    expectRefusal(s, "width");
    s = good;
    s.height = -3;
    expectRefusal(s, "height");
    s = good;
    s.sigmaCentre = 0.0;
    expectRefusal(s, "sigmaCentre");
    s = good;
    s.sigmaCorner = -1.0;
    expectRefusal(s, "sigmaCorner");
    for (const int bits : {0, 7, 12, 32}) {
        s = good;
        s.bits = bits;
        expectRefusal(s, "bits");
    }
    s = good;
    s.cornerLight = 0.0;
    expectRefusal(s, "cornerLight");
    s = good;
    s.dark = 0.9;
    expectRefusal(s, "dark");
    s = good;
    s.readNoise = -1.0;
    expectRefusal(s, "readNoise");
    s = good;
    s.gainBlue = 0.0;
    expectRefusal(s, "gainBlue");
    s = good;
    s.placement.k1 = -0.5;  // folds over before the corners
    expectRefusal(s, "placement.k1");
    s = good;
    s.clutter.discs.push_back({10.0, 10.0, 0.0, 1});
    expectRefusal(s, "clutter disc");
    // The truth refuses the same settings.
    s = good;
    s.bits = 12;
    EXPECT_THROW(descriptionTruth(middleSquare(), s), std::invalid_argument);
}

TEST(DescriptionRenderer, RefusesBadFocusSettingsNamingThem) {
    DescriptionRenderSettings good = settingsForFrame(1200, 900);
    good.focus = tiltedCurvedSurface(5.0);
    const double nan = std::nan(""), inf = HUGE_VAL;
    DescriptionRenderSettings s = good;
    s.focus.lensZ = nan;
    expectRefusal(s, "focus.lensZ");
    s = good;
    s.focus.bestFocusZ = inf;
    expectRefusal(s, "focus.bestFocusZ");
    s = good;
    s.focus.slopeY = nan;
    expectRefusal(s, "focus.slopeX and slopeY");
    s = good;
    s.focus.curvature = -inf;
    expectRefusal(s, "focus.curvature");
    s = good;
    s.focus.astigmatism = nan;
    expectRefusal(s, "focus.astigmatism");
    s = good;
    s.focus.defocusGain = -0.1;
    expectRefusal(s, "focus.defocusGain");
    s = good;
    s.focus.pixelPitchUm = 0.0;
    expectRefusal(s, "focus.pixelPitchUm");
    s = good;
    s.focus.curvature = 1e308;  // finite, but the blur is not
    s.focus.pixelPitchUm = 100.0;
    expectRefusal(s, "focus: the defocus overflows");
    s = good;
    s.focus.defocusGain = -0.1;
    EXPECT_THROW(descriptionTruth(middleSquare(), s), std::invalid_argument);
    // Off, the model is not looked at.
    s.focus.on = false;
    EXPECT_NO_THROW(renderDescription(middleSquare(), s));
}

TEST(DescriptionRenderer, RefusesShapesItCannotDraw) {
    const DescriptionRenderSettings s = settingsForFrame(400, 300);
    ChartDescription d;
    ChartShape bowtie;
    bowtie.corners = {ChartPoint{10, 10}, ChartPoint{100, 100}, ChartPoint{100, 10},
                      ChartPoint{10, 100}};
    d.shapes.push_back(bowtie);
    EXPECT_THROW(renderDescription(d, s), std::invalid_argument);
    d.shapes.clear();
    d.edges.push_back({{5, 5}, {5, 5}, 1});
    EXPECT_THROW(renderDescription(d, s), std::invalid_argument);
    d.edges.clear();
    d.marks.push_back({{50, 50}, 10.0, 0});
    EXPECT_THROW(renderDescription(d, s), std::invalid_argument);
}

}  // namespace
