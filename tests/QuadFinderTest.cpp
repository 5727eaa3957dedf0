// The quad finder against rendered truth: a 9 x 12 grid of turned squares on a 4000 x 3000
// frame, every quad and every side found with its sub-pixel line, clean and under falling
// illumination, low contrast, noise and heavy blur; light quads on a dark ground; clutter
// that must not become quads; squares cut by the frame border; the flags of each side.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "detect/EdgeFlags.h"
#include "detect/QuadFinder.h"
#include "render/ChartRenderer.h"

namespace {
using talonvireo::detect::EdgeGeometry;
using talonvireo::detect::findQuads;
using talonvireo::detect::Quad;
using talonvireo::render::ChartSquare;

constexpr double kPi = 3.141592653589793;
constexpr int kWidth = 4000;
constexpr int kHeight = 3000;
constexpr int kRows = 9;
constexpr int kColumns = 12;

// The grid: one square per 333 px cell, side 190, turned 5 to 12 degrees, alternately either
// way; cells listed in `skip` are left empty.
std::vector<ChartSquare> gridSquares(const std::vector<int>& skip = {}) {
    std::vector<ChartSquare> squares;
    const double pitchX = static_cast<double>(kWidth) / kColumns;
    const double pitchY = static_cast<double>(kHeight) / kRows;
    for (int r = 0; r < kRows; ++r) {
        for (int c = 0; c < kColumns; ++c) {
            const int k = r * kColumns + c;
            if (std::find(skip.begin(), skip.end(), k) != skip.end()) {
                continue;
            }
            const double turn = 5.0 + 7.0 * ((k * 37) % 108) / 107.0;
            const double sign = (r + c) % 2 == 0 ? 1.0 : -1.0;
            // Centres off the half-pixel grid, so that no side sits on a pixel boundary.
            squares.push_back({pitchX * (c + 0.5) + 0.37 * (k % 3),
                               pitchY * (r + 0.5) - 0.21 * (k % 5), 190.0,
                               sign * turn * kPi / 180.0});
        }
    }
    return squares;
}

struct Look {
    double dark = 0.12;        // square level, fraction of full scale
    double light = 0.80;       // ground level
    double cornerLight = 1.0;  // illumination at the frame corners, 1 at the centre
    double noise = 0.0;        // standard deviation, output units
    int bits = 8;
};

// Sensor values of a coverage image: levels times illumination, plus noise, rounded.
cv::Mat expose(const cv::Mat& coverage, const Look& look) {
    const double full = std::ldexp(1.0, look.bits) - 1.0;
    cv::Mat level = full * (look.light - (look.light - look.dark) * coverage);
    if (look.cornerLight != 1.0) {
        const double cx = 0.5 * (coverage.cols - 1), cy = 0.5 * (coverage.rows - 1);
        const double r2max = cx * cx + cy * cy;
        for (int r = 0; r < level.rows; ++r) {
            double* row = level.ptr<double>(r);
            for (int c = 0; c < level.cols; ++c) {
                const double r2 = ((c - cx) * (c - cx) + (r - cy) * (r - cy)) / r2max;
                row[c] *= 1.0 - (1.0 - look.cornerLight) * r2;
            }
        }
    }
    if (look.noise > 0.0) {
        cv::Mat noise(level.size(), CV_64F);
        cv::RNG rng(12345);
        rng.fill(noise, cv::RNG::NORMAL, 0.0, look.noise);
        level += noise;
    }
    cv::Mat out;
    level.convertTo(out, look.bits == 8 ? CV_8U : CV_16U);  // rounds and saturates
    return out;
}

cv::Mat renderFrame(const std::vector<ChartSquare>& squares, double sigma, const Look& look) {
    return expose(talonvireo::render::chartCoverage(squares, {}, sigma, kWidth, kHeight), look);
}

double angleBetween(double a, double b) {
    const double d = std::fmod(std::abs(a - b), 180.0);
    return std::min(d, 180.0 - d);
}

cv::Point2d centreOf(const Quad& q) {
    return 0.25 * (q.corners[0] + q.corners[1] + q.corners[2] + q.corners[3]);
}

struct Accuracy {
    int quadsMatched = 0;
    int edgesMatched = 0;
    double midpoint = 0.0;  // worst distance of a side's midpoint from the truth's, px
    double offset = 0.0;    // worst distance of the true midpoint from the found line, px
    double angle = 0.0;     // worst angle error, degrees
};

// Matches every true square to the found quad around its centre, and every true side to the
// found side nearest its midpoint; the true sides are the square's outline, clockwise.
Accuracy compare(const std::vector<Quad>& found, const std::vector<ChartSquare>& truth,
                 int polarity) {
    Accuracy acc;
    for (const ChartSquare& s : truth) {
        const cv::Point2d centre(s.cx, s.cy);
        const Quad* match = nullptr;
        for (const Quad& q : found) {
            if (cv::norm(centreOf(q) - centre) < 10.0) {
                match = &q;
            }
        }
        if (match == nullptr) {
            ADD_FAILURE() << "no quad at " << s.cx << ", " << s.cy;
            continue;
        }
        ++acc.quadsMatched;
        EXPECT_EQ(match->polarity, polarity);
        const auto outline = s.outline();
        for (int i = 0; i < 4; ++i) {
            const cv::Point2d a = outline[i], b = outline[(i + 1) % 4];
            const cv::Point2d mid = 0.5 * (a + b);
            const EdgeGeometry* e = &match->edges[0];
            for (const EdgeGeometry& g : match->edges) {
                if (cv::norm(g.midpoint - mid) < cv::norm(e->midpoint - mid)) {
                    e = &g;
                }
            }
            if (cv::norm(e->midpoint - mid) > 5.0) {
                ADD_FAILURE() << "no side at " << mid.x << ", " << mid.y;
                continue;
            }
            ++acc.edgesMatched;
            const cv::Point2d dir = (e->to - e->from) / e->length;
            const cv::Point2d d = mid - e->from;
            acc.midpoint = std::max(acc.midpoint, cv::norm(e->midpoint - mid));
            acc.offset = std::max(acc.offset, std::abs(d.x * dir.y - d.y * dir.x));
            acc.angle = std::max(acc.angle,
                                 angleBetween(e->angleDeg, talonvireo::detect::lineAngleDeg(a, b)));
            EXPECT_EQ(e->polarity, polarity);
            EXPECT_FALSE(e->cut);
            EXPECT_FALSE(e->tooShort);
            EXPECT_FALSE(e->nearAxis);
        }
    }
    return acc;
}

void report(const char* name, const Accuracy& a) {
    std::printf(
        "[ accuracy ] %s: %d quads, %d sides; midpoint within %.3f px, line within "
        "%.3f px, angle within %.4f deg\n",
        name, a.quadsMatched, a.edgesMatched, a.midpoint, a.offset, a.angle);
}

// Every quad of the grid and every side, nothing else, within the given bounds.
void expectWholeGrid(const char* name, const cv::Mat& frame, double maxMidpoint, double maxAngle,
                     int polarity = 1) {
    const std::vector<ChartSquare> truth = gridSquares();
    const std::vector<Quad> found = findQuads(frame);
    EXPECT_EQ(found.size(), truth.size());
    const Accuracy acc = compare(found, truth, polarity);
    report(name, acc);
    EXPECT_EQ(acc.quadsMatched, 108);
    EXPECT_EQ(acc.edgesMatched, 432);
    EXPECT_LE(acc.midpoint, maxMidpoint);
    EXPECT_LE(acc.angle, maxAngle);
}

TEST(QuadFinder, FindsEveryQuadAndSideOfATurnedGridWithinAFewHundredthsOfAPixel) {
    expectWholeGrid("clean", renderFrame(gridSquares(), 0.8, {}), 0.02, 0.01);
}

TEST(QuadFinder, FindsTheGridWhenIlluminationFallsToHalfAtTheCorners) {
    Look look;
    look.cornerLight = 0.5;
    expectWholeGrid("illumination", renderFrame(gridSquares(), 0.8, look), 0.03, 0.02);
}

TEST(QuadFinder, FindsTheGridAtTwoToOneContrast) {
    Look look;
    look.dark = 0.40;
    expectWholeGrid("contrast 2:1", renderFrame(gridSquares(), 0.8, look), 0.02, 0.01);
}

TEST(QuadFinder, FindsTheGridUnderNoise) {
    Look look;
    look.noise = 6.0;
    expectWholeGrid("noise", renderFrame(gridSquares(), 0.8, look), 0.1, 0.05);
}

TEST(QuadFinder, FindsTheGridUnderBlurOfSigmaThree) {
    expectWholeGrid("blur 3", renderFrame(gridSquares(), 3.0, {}), 0.05, 0.02);
}

TEST(QuadFinder, FindsTheGridUnderAllStressesTogether) {
    Look look;
    look.cornerLight = 0.5;
    look.dark = 0.40;
    look.noise = 4.0;
    // At the corners the step is 51 levels against noise of 4 and spread over sigma 3: each
    // profile scatters by about 0.26 px, the least any estimator reaches there, so 432 sides
    // reach a tenth of a degree at three sigma.
    expectWholeGrid("all together", renderFrame(gridSquares(), 3.0, look), 0.3, 0.15);
}

TEST(QuadFinder, FindsTheGridInSixteenBitWords) {
    Look look;
    look.bits = 10;
    look.noise = 8.0;
    expectWholeGrid("10-bit words", renderFrame(gridSquares(), 0.8, look), 0.05, 0.03);
}

TEST(QuadFinder, FindsLightQuadsOnADarkGroundWithTheOtherPolarity) {
    Look look;
    look.dark = 0.80;   // the squares
    look.light = 0.12;  // the ground
    expectWholeGrid("light on dark", renderFrame(gridSquares(), 0.8, look), 0.02, 0.01, -1);
}

TEST(QuadFinder, FindsLightQuadsInsideADarkQuad) {
    // A dark square of side 900 holding four light squares: coverage of the big one less the
    // small ones, exact like each of them.
    const ChartSquare big{2000.3, 1500.2, 900.0, 7.0 * kPi / 180.0};
    std::vector<ChartSquare> inner;
    for (int k = 0; k < 4; ++k) {
        const cv::Point2d offset =
            200.0 * ((k % 2 == 0 ? -1.0 : 1.0) * big.axisU() + (k < 2 ? -1.0 : 1.0) * big.axisV());
        inner.push_back({big.cx + offset.x, big.cy + offset.y, 190.0, (-6.0 + k) * kPi / 180.0});
    }
    const cv::Mat coverage = talonvireo::render::chartCoverage({big}, {}, 0.8, kWidth, kHeight) -
                             talonvireo::render::chartCoverage(inner, {}, 0.8, kWidth, kHeight);
    const std::vector<Quad> found = findQuads(expose(coverage, {}));
    ASSERT_EQ(found.size(), 5u);
    std::vector<Quad> dark, light;
    for (const Quad& q : found) {
        (q.polarity > 0 ? dark : light).push_back(q);
    }
    const Accuracy outer = compare(dark, {big}, 1);
    const Accuracy holes = compare(light, inner, -1);
    report("dark quad", outer);
    report("light quads inside it", holes);
    EXPECT_EQ(outer.edgesMatched, 4);
    EXPECT_EQ(holes.edgesMatched, 16);
    EXPECT_LE(std::max(outer.midpoint, holes.midpoint), 0.05);
}

// Exact-enough coverage of a shape given by a point test, 4 x 4 samples a pixel.
template <typename Inside>
void paint(cv::Mat& coverage, cv::Rect box, double value, Inside inside) {
    for (int r = box.y; r < box.y + box.height; ++r) {
        for (int c = box.x; c < box.x + box.width; ++c) {
            int hits = 0;
            for (int i = 0; i < 4; ++i) {
                for (int j = 0; j < 4; ++j) {
                    hits += inside(c - 0.375 + 0.25 * j, r - 0.375 + 0.25 * i) ? 1 : 0;
                }
            }
            coverage.at<double>(r, c) += value * hits / 16.0;
        }
    }
}

cv::Point2d cellCentre(int k) {
    return {(k % kColumns + 0.5) * kWidth / kColumns, (k / kColumns + 0.5) * kHeight / kRows};
}

TEST(QuadFinder, ClutterBecomesNoQuad) {
    // Six cells of the grid hold clutter instead of a square.
    const std::vector<int> cells = {14, 27, 40, 53, 66, 79};
    const std::vector<ChartSquare> truth = gridSquares(cells);
    cv::Mat coverage = talonvireo::render::chartCoverage(truth, {}, 0.8, kWidth, kHeight);
    // A filled disc.
    const cv::Point2d disc = cellCentre(cells[0]);
    paint(coverage, cv::Rect(disc.x - 100, disc.y - 100, 200, 200), 1.0,
          [&](double x, double y) { return std::hypot(x - disc.x, y - disc.y) < 90.0; });
    // Three thin bars apart, 6 to 12 px wide and 150 long, turned 75 to 115 degrees.
    const cv::Point2d bars = cellCentre(cells[1]);
    for (int b = 0; b < 3; ++b) {
        const double a = (75.0 + 20.0 * b) * kPi / 180.0;
        const cv::Point2d u(std::cos(a), std::sin(a)), n(-u.y, u.x);
        const cv::Point2d c = bars + cv::Point2d(-90.0 + 90.0 * b, 0.0);
        const double half = 3.0 + 1.5 * b;
        paint(coverage, cv::Rect(c.x - 80, c.y - 80, 160, 160), 1.0, [&](double x, double y) {
            const cv::Point2d d = cv::Point2d(x, y) - c;
            return std::abs(d.dot(u)) < 75.0 && std::abs(d.dot(n)) < half;
        });
    }
    // A saturated blob on the ground.
    const cv::Point2d blob = cellCentre(cells[2]);
    for (int r = blob.y - 120; r < blob.y + 120; ++r) {
        for (int c = blob.x - 120; c < blob.x + 120; ++c) {
            const double d2 = (c - blob.x) * (c - blob.x) + (r - blob.y) * (r - blob.y);
            coverage.at<double>(r, c) -= 3.0 * std::exp(-d2 / (2.0 * 40.0 * 40.0));
        }
    }
    // Text, in strokes a few pixels wide, and an ellipse.
    cv::Mat text(coverage.size(), CV_8U, cv::Scalar(0));
    const cv::Point2d words = cellCentre(cells[3]);
    cv::putText(text, "SFR 12", cv::Point(words.x - 140, words.y + 20), cv::FONT_HERSHEY_SIMPLEX,
                2.0, cv::Scalar(255), 5, cv::LINE_AA);
    cv::putText(text, "F4", cellCentre(cells[4]) + cv::Point2d(-60, 40), cv::FONT_HERSHEY_DUPLEX,
                4.0, cv::Scalar(255), 12, cv::LINE_AA);
    cv::Mat textCoverage;
    text.convertTo(textCoverage, CV_64F, 1.0 / 255.0);
    coverage += textCoverage;
    const cv::Point2d oval = cellCentre(cells[5]);
    paint(coverage, cv::Rect(oval.x - 120, oval.y - 80, 240, 160), 1.0, [&](double x, double y) {
        const double dx = (x - oval.x) / 110.0, dy = (y - oval.y) / 60.0;
        return dx * dx + dy * dy < 1.0;
    });

    const std::vector<Quad> found = findQuads(expose(coverage, {}));
    EXPECT_EQ(found.size(), truth.size());
    const Accuracy acc = compare(found, truth, 1);
    report("clutter", acc);
    EXPECT_EQ(acc.edgesMatched, 4 * static_cast<int>(truth.size()));
}

TEST(QuadFinder, SquaresCutByTheFrameBorderAreFlaggedCut) {
    // One corner out past the left border; two corners out past the top; one wholly inside.
    const ChartSquare oneOut{95.0, 1500.3, 190.0, 8.0 * kPi / 180.0};
    const ChartSquare twoOut{2000.4, 30.0, 190.0, -9.0 * kPi / 180.0};
    const ChartSquare inside{2000.4, 1500.3, 190.0, 6.0 * kPi / 180.0};
    const std::vector<Quad> found = findQuads(renderFrame({oneOut, twoOut, inside}, 0.8, {}));
    ASSERT_EQ(found.size(), 3u);
    const Quad* byTruth[3] = {nullptr, nullptr, nullptr};
    const ChartSquare* squares[3] = {&oneOut, &twoOut, &inside};
    for (const Quad& q : found) {
        for (int s = 0; s < 3; ++s) {
            const double dx = centreOf(q).x - squares[s]->cx, dy = centreOf(q).y - squares[s]->cy;
            if (std::hypot(dx, dy) < 60.0) {
                byTruth[s] = &q;
            }
        }
    }
    ASSERT_TRUE(byTruth[0] && byTruth[1] && byTruth[2]);
    EXPECT_FALSE(byTruth[2]->cut);

    // All four sides seen: the whole square, the corner outside the frame included.
    const Quad& q1 = *byTruth[0];
    EXPECT_TRUE(q1.cut);
    int cutSides = 0;
    for (const cv::Point2d& truthCorner : oneOut.outline()) {
        double best = 1e9;
        for (const cv::Point2d& c : q1.corners) {
            best = std::min(best, cv::norm(c - truthCorner));
        }
        EXPECT_LT(best, 0.2);
    }
    for (const EdgeGeometry& e : q1.edges) {
        cutSides += e.cut ? 1 : 0;
        EXPECT_GE(std::min(e.from.x, e.to.x), -0.5 - 1e-9);
    }
    EXPECT_EQ(cutSides, 2);

    // Three sides seen, closed by the border: the border side and the two it cuts.
    const Quad& q2 = *byTruth[1];
    EXPECT_TRUE(q2.cut);
    cutSides = 0;
    for (const EdgeGeometry& e : q2.edges) {
        cutSides += e.cut ? 1 : 0;
        if (!e.cut) {
            EXPECT_NEAR(e.length, 190.0, 0.2);
        }
    }
    EXPECT_EQ(cutSides, 3);
}

TEST(QuadFinder, FlagsShortSidesAndSidesNearTheAxes) {
    const std::vector<ChartSquare> squares = {
        {1000.2, 1000.3, 190.0, 0.5 * kPi / 180.0},   // near 0 and 90
        {2000.2, 1000.3, 190.0, 44.6 * kPi / 180.0},  // near 45 and 135
        {3000.2, 1000.3, 190.0, 8.0 * kPi / 180.0},   // neither
        {2000.2, 2000.3, 34.0, 8.0 * kPi / 180.0}};   // too short
    const std::vector<Quad> found = findQuads(renderFrame(squares, 0.8, {}));
    ASSERT_EQ(found.size(), 4u);
    for (const Quad& q : found) {
        const cv::Point2d c = centreOf(q);
        for (const EdgeGeometry& e : q.edges) {
            EXPECT_EQ(e.nearAxis, c.y < 1500 && c.x < 2500) << c;
            EXPECT_EQ(e.tooShort, c.y > 1500) << c;
        }
    }
}

TEST(QuadFinder, EdgeAnglesAreLineOrientationsAndAxesAreEveryFortyFiveDegrees) {
    using talonvireo::detect::isNearAxis;
    using talonvireo::detect::lineAngleDeg;
    EXPECT_NEAR(lineAngleDeg({0, 0}, {1, 1}), 45.0, 1e-12);
    EXPECT_NEAR(lineAngleDeg({1, 1}, {0, 0}), 45.0, 1e-12);
    EXPECT_NEAR(lineAngleDeg({0, 0}, {-1, 0}), 0.0, 1e-12);
    EXPECT_NEAR(lineAngleDeg({0, 0}, {1, -1}), 135.0, 1e-12);
    for (double a : {0.0, 0.9, 44.2, 45.9, 89.5, 134.1, 179.3}) {
        EXPECT_TRUE(isNearAxis(a)) << a;
    }
    for (double a : {1.1, 5.0, 43.9, 46.1, 88.9, 100.0, 178.8}) {
        EXPECT_FALSE(isNearAxis(a)) << a;
    }
}

TEST(QuadFinder, RefusesFramesThatAreNotOneChannelOfEightOrSixteenBits) {
    EXPECT_THROW(findQuads(cv::Mat()), std::invalid_argument);
    EXPECT_THROW(findQuads(cv::Mat(100, 100, CV_8UC3)), std::invalid_argument);
    EXPECT_THROW(findQuads(cv::Mat(100, 100, CV_32F)), std::invalid_argument);
    EXPECT_TRUE(findQuads(cv::Mat(100, 100, CV_8U, cv::Scalar(128))).empty());
}

}  // namespace
