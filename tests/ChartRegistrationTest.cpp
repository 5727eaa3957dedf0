// Registration of a chart description to the quads found in a frame. The quads are made from a
// known placement (description corners through chartToFrame, ordered as the quad finder orders
// them), so the truth is exact and no frame is rendered.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <opencv2/core.hpp>

#include "detect/Quad.h"
#include "locate/ChartRegistrationFit.h"
#include "talonvireo/ChartDescription.h"
#include "talonvireo/ChartRegistration.h"

namespace {
using namespace talonvireo;
using locate::registerChart;
using locate::ShapeMatch;

constexpr double kPi = 3.14159265358979323846;
constexpr int kWidth = 4000;
constexpr int kHeight = 3000;

// A square of side `side` about (cx, cy) turned `turnDeg` clockwise on screen; corners clockwise.
ChartShape turnedSquare(double cx, double cy, double side, double turnDeg, int polarity) {
    const double c = std::cos(turnDeg * kPi / 180.0), s = std::sin(turnDeg * kPi / 180.0);
    const double h = 0.5 * side;
    const double local[4][2] = {{-h, -h}, {h, -h}, {h, h}, {-h, h}};
    ChartShape shape;
    for (int i = 0; i < 4; ++i) {
        shape.corners[i] = {cx + c * local[i][0] - s * local[i][1],
                            cy + s * local[i][0] + c * local[i][1]};
    }
    shape.polarity = polarity;
    return shape;
}

enum class GridTurns {
    Random,      // each square its own 5 to 12 degrees, drawn once, alternately either way
    Arithmetic,  // 5 + 7 (37 k mod 108) / 107 degrees for square k, alternately either way
    Uniform,     // all 8 degrees the same way: a half turn maps the grid onto itself
};

// 9 x 12 dark squares of side 190 at a pitch of 333. The arithmetic turns (the quad finder's
// bench grid) nearly repeat three rows down and one column left (37 * 35 = -1 mod 108: the
// turns differ by 0.07 degrees), so only a view that shows the grid's ends tells that placement
// from the true one; drawn turns repeat under no shift.
ChartDescription squareGrid(GridTurns turns = GridTurns::Random) {
    ChartDescription d;
    d.name = "grid";
    cv::RNG rng(1907);
    for (int r = 0; r < 9; ++r) {
        for (int c = 0; c < 12; ++c) {
            const int k = r * 12 + c;
            const double sign = (r + c) % 2 ? -1.0 : 1.0;
            const double drawn = rng.uniform(5.0, 12.0);
            const double turn = turns == GridTurns::Uniform ? 8.0
                                : turns == GridTurns::Arithmetic
                                    ? sign * (5.0 + 7.0 * ((k * 37) % 108) / 107.0)
                                    : sign * drawn;
            d.shapes.push_back(turnedSquare(333.0 * (c + 0.5), 333.0 * (r + 0.5), 190.0, turn, 1));
        }
    }
    return d;
}

// The same grid with every other row pushed half a pitch along: another chart.
ChartDescription staggeredGrid() {
    ChartDescription d = squareGrid();
    for (std::size_t k = 0; k < d.shapes.size(); ++k) {
        if ((k / 12) % 2 == 1) {
            for (ChartPoint& p : d.shapes[k].corners) {
                p.x += 166.5;
            }
        }
    }
    return d;
}

// About thirty squares of sides 100 to 300 and turns 3 to 40 degrees strewn over a 4000 x 3000
// chart, every fourth light on dark.
ChartDescription irregularChart() {
    ChartDescription d;
    d.name = "irregular";
    cv::RNG rng(20240611);
    std::vector<cv::Vec3d> placed;  // x, y, side
    for (int attempt = 0; attempt < 5000 && placed.size() < 30; ++attempt) {
        const cv::Vec3d s(rng.uniform(250.0, 3750.0), rng.uniform(250.0, 2750.0),
                          rng.uniform(100.0, 300.0));
        bool clear = true;
        for (const cv::Vec3d& o : placed) {
            clear = clear && std::hypot(s[0] - o[0], s[1] - o[1]) > 0.9 * (s[2] + o[2]) + 40.0;
        }
        if (clear) {
            placed.push_back(s);
        }
    }
    for (std::size_t i = 0; i < placed.size(); ++i) {
        const double turn = rng.uniform(3.0, 40.0) * (i % 3 == 0 ? -1 : 1);
        d.shapes.push_back(
            turnedSquare(placed[i][0], placed[i][1], placed[i][2], turn, i % 4 == 3 ? -1 : 1));
    }
    return d;
}

cv::Point2d centreOf(const ChartDescription& d) {
    cv::Point2d c;
    for (const ChartShape& s : d.shapes) {
        for (const ChartPoint& p : s.corners) {
            c += cv::Point2d(p.x, p.y);
        }
    }
    return c / (4.0 * static_cast<double>(d.shapes.size()));
}

struct Placement {
    double scale = 1.0;
    double angleDeg = 0.0;
    cv::Point2d offset;  // of the chart's centre from the frame's, pixels
    double px = 0.0;     // projective terms per chart unit about the chart's centre
    double py = 0.0;
    double k1 = 0.0;
};

// The chart's centre onto the frame's (plus offset), turned and scaled, with perspective.
ChartRegistration truthFor(const ChartDescription& d, const Placement& p) {
    ChartRegistration r = undistortedRegistration(kWidth, kHeight);
    const cv::Point2d cc = centreOf(d);
    const double c = p.scale * std::cos(p.angleDeg * kPi / 180.0);
    const double s = p.scale * std::sin(p.angleDeg * kPi / 180.0);
    const cv::Matx33d similarity(c, -s, r.centreX + p.offset.x, s, c, r.centreY + p.offset.y, 0, 0,
                                 1);
    const cv::Matx33d perspective(1, 0, 0, 0, 1, 0, p.px, p.py, 1);
    const cv::Matx33d centre(1, 0, -cc.x, 0, 1, -cc.y, 0, 0, 1);
    const cv::Matx33d h = similarity * perspective * centre;
    for (int i = 0; i < 9; ++i) {
        r.homography[i] = h.val[i];
    }
    r.k1 = p.k1;
    return r;
}

// What the quad finder reports, and which shape each quad truly is (-1 clutter).
struct Seen {
    std::vector<detect::Quad> quads;
    std::vector<int> shape;
    std::vector<int> shift;
};

bool inFrame(cv::Point2d p) {
    return p.x >= -0.5 && p.y >= -0.5 && p.x < kWidth - 0.5 && p.y < kHeight - 0.5;
}

void addQuad(Seen& seen, std::array<cv::Point2d, 4> p, int polarity, bool cut, int shape) {
    // The finder's order: clockwise on screen from the corner of smallest x + y.
    int first = 0;
    for (int i = 1; i < 4; ++i) {
        if (p[i].x + p[i].y < p[first].x + p[first].y) {
            first = i;
        }
    }
    detect::Quad q;
    for (int j = 0; j < 4; ++j) {
        q.corners[j] = p[(j + first) % 4];
    }
    for (int j = 0; j < 4; ++j) {
        detect::EdgeGeometry& e = q.edges[j];
        e.from = q.corners[j];
        e.to = q.corners[(j + 1) % 4];
        e.midpoint = 0.5 * (e.from + e.to);
        e.length = cv::norm(e.to - e.from);
        e.polarity = polarity;
        e.cut = cut;
    }
    q.polarity = polarity;
    q.cut = cut;
    seen.quads.push_back(q);
    seen.shape.push_back(shape);
    seen.shift.push_back((4 - first) % 4);
}

// Every shape whose centre the frame shows; cut where a corner falls outside.
Seen seenQuads(const ChartDescription& d, const ChartRegistration& truth) {
    Seen seen;
    for (std::size_t s = 0; s < d.shapes.size(); ++s) {
        std::array<cv::Point2d, 4> p;
        cv::Point2d centre;
        bool cut = false;
        for (int i = 0; i < 4; ++i) {
            const ChartPoint f = chartToFrame(truth, d.shapes[s].corners[i]);
            p[i] = {f.x, f.y};
            centre += 0.25 * p[i];
            cut = cut || !(f.x >= 1.0 && f.y >= 1.0 && f.x <= kWidth - 2.0 && f.y <= kHeight - 2.0);
        }
        if (inFrame(centre)) {
            addQuad(seen, p, d.shapes[s].polarity, cut, static_cast<int>(s));
        }
    }
    return seen;
}

// Squares of sides the chart does not have, anywhere in the frame, either polarity.
void addClutter(Seen& seen, int count, std::uint64_t seed) {
    cv::RNG rng(seed);
    for (int i = 0; i < count; ++i) {
        const double side = i % 2 ? rng.uniform(30.0, 80.0) : rng.uniform(420.0, 600.0);
        const ChartShape s =
            turnedSquare(rng.uniform(100.0, kWidth - 100.0), rng.uniform(100.0, kHeight - 100.0),
                         side, rng.uniform(-45.0, 45.0), i % 3 ? 1 : -1);
        std::array<cv::Point2d, 4> p;
        for (int k = 0; k < 4; ++k) {
            p[k] = {s.corners[k].x, s.corners[k].y};
        }
        addQuad(seen, p, s.polarity, false, -1);
    }
}

void addNoise(Seen& seen, double sigma, std::uint64_t seed) {
    cv::RNG rng(seed);
    for (detect::Quad& q : seen.quads) {
        for (cv::Point2d& c : q.corners) {
            c.x += rng.gaussian(sigma);
            c.y += rng.gaussian(sigma);
        }
    }
}

// The finder misses these shapes.
void removeShapes(Seen& seen, const std::vector<int>& shapes) {
    for (std::size_t k = seen.quads.size(); k-- > 0;) {
        if (std::find(shapes.begin(), shapes.end(), seen.shape[k]) != shapes.end()) {
            seen.quads.erase(seen.quads.begin() + static_cast<std::ptrdiff_t>(k));
            seen.shape.erase(seen.shape.begin() + static_cast<std::ptrdiff_t>(k));
            seen.shift.erase(seen.shift.begin() + static_cast<std::ptrdiff_t>(k));
        }
    }
}

int cutCount(const Seen& seen) {
    return static_cast<int>(std::count_if(seen.quads.begin(), seen.quads.end(),
                                          [](const detect::Quad& q) { return q.cut; }));
}

// Largest distance between the fitted and the true image of every description corner that
// the true placement puts in the frame.
double worstCornerError(const ChartDescription& d, const ChartRegistration& fitted,
                        const ChartRegistration& truth) {
    double worst = 0.0;
    for (const ChartShape& s : d.shapes) {
        for (const ChartPoint& c : s.corners) {
            const ChartPoint t = chartToFrame(truth, c);
            if (inFrame({t.x, t.y})) {
                const ChartPoint f = chartToFrame(fitted, c);
                worst = std::max(worst, std::hypot(f.x - t.x, f.y - t.y));
            }
        }
    }
    return worst;
}

// Registers and checks: every seen shape matched to its own quad with the right corner shift,
// nothing else matched, every description corner in the frame within cornerTolerance of the
// truth, k1 within 0.002.
void expectRegistered(const ChartDescription& d, const Seen& seen, const ChartRegistration& truth,
                      double cornerTolerance, ChartRegistration* result = nullptr) {
    ChartRegistration fitted;
    std::vector<ShapeMatch> matches;
    ASSERT_TRUE(registerChart(d, seen.quads, kWidth, kHeight, fitted, matches));
    EXPECT_TRUE(fitted.registered);
    EXPECT_EQ(fitted.matchedShapes, static_cast<int>(matches.size()));
    std::vector<int> quadOf(d.shapes.size(), -1), shiftOf(d.shapes.size(), -1);
    for (const ShapeMatch& m : matches) {
        ASSERT_GE(m.quad, 0);
        ASSERT_LT(m.quad, static_cast<int>(seen.quads.size()));
        EXPECT_EQ(seen.shape[static_cast<std::size_t>(m.quad)], m.shape)
            << "quad " << m.quad << " matched to shape " << m.shape;
        quadOf[static_cast<std::size_t>(m.shape)] = m.quad;
        shiftOf[static_cast<std::size_t>(m.shape)] = m.cornerShift;
    }
    int seenShapes = 0;
    for (std::size_t q = 0; q < seen.quads.size(); ++q) {
        const int s = seen.shape[q];
        if (s >= 0) {
            ++seenShapes;
            EXPECT_EQ(quadOf[static_cast<std::size_t>(s)], static_cast<int>(q))
                << "shape " << s << " (cut " << seen.quads[q].cut << ")";
            EXPECT_EQ(shiftOf[static_cast<std::size_t>(s)], seen.shift[q]) << "shape " << s;
        }
    }
    EXPECT_EQ(static_cast<int>(matches.size()), seenShapes);
    EXPECT_LE(worstCornerError(d, fitted, truth), cornerTolerance);
    EXPECT_NEAR(fitted.k1, truth.k1, 0.002);
    EXPECT_NEAR(fitted.centreX, 0.5 * (kWidth - 1), 1e-9);
    EXPECT_NEAR(fitted.normRadius, 2500.0, 1e-9);
    EXPECT_LE(fitted.residualRms, fitted.residualMax);
    if (result != nullptr) {
        *result = fitted;
    }
}

TEST(ChartRegistration, GridNearIdentityRegisters) {
    const ChartDescription grid = squareGrid();
    const ChartRegistration truth = truthFor(grid, {1.0, 0.3, {2.0, -1.5}});
    const Seen seen = seenQuads(grid, truth);
    ASSERT_EQ(seen.quads.size(), 108u);
    expectRegistered(grid, seen, truth, 0.05);
}

// Any turn, upside down included, and scales that leave the chart small in the frame or
// running off it.
TEST(ChartRegistration, GridShiftedTurnedAndScaledRegisters) {
    const ChartDescription grid = squareGrid();
    const Placement placements[] = {
        {0.8, 17.0, {150.0, -90.0}},  {0.6, -63.0, {-300.0, 200.0}}, {1.0, 180.0, {0.0, 0.0}},
        {0.7, 121.0, {40.0, 60.0}},   {1.3, -150.0, {-80.0, 30.0}},  {0.9, 90.0, {0.0, 0.0}},
        {1.5, 35.0, {100.0, -100.0}}, {0.65, -179.0, {0.0, 0.0}},    {1.1, -92.0, {200.0, 0.0}}};
    for (const Placement& p : placements) {
        SCOPED_TRACE(::testing::Message() << "scale " << p.scale << " turn " << p.angleDeg);
        const ChartRegistration truth = truthFor(grid, p);
        expectRegistered(grid, seenQuads(grid, truth), truth, 0.05);
    }
}

TEST(ChartRegistration, GridUnderMildPerspectiveRegisters) {
    const ChartDescription grid = squareGrid();
    const Placement placements[] = {{0.85, 8.0, {30.0, 10.0}, 1e-5, -0.8e-5},
                                    {0.75, -140.0, {0.0, 50.0}, -1.2e-5, 1e-5}};
    for (const Placement& p : placements) {
        SCOPED_TRACE(::testing::Message() << "turn " << p.angleDeg);
        const ChartRegistration truth = truthFor(grid, p);
        expectRegistered(grid, seenQuads(grid, truth), truth, 0.05);
    }
}

// 10 % barrel and 10 % pincushion at the frame corners, with the chart filling the frame.
TEST(ChartRegistration, GridUnderBarrelAndPincushionRegisters) {
    const ChartDescription grid = squareGrid();
    const Placement placements[] = {{1.0, 2.0, {0.0, 0.0}, 0.0, 0.0, -0.10},
                                    {1.0, 2.0, {0.0, 0.0}, 0.0, 0.0, 0.10},
                                    {1.25, -31.0, {60.0, -40.0}, 0.5e-5, 0.5e-5, -0.10},
                                    {0.9, 160.0, {0.0, 0.0}, 0.0, -1e-5, 0.10}};
    for (const Placement& p : placements) {
        SCOPED_TRACE(::testing::Message() << "k1 " << p.k1 << " turn " << p.angleDeg);
        const ChartRegistration truth = truthFor(grid, p);
        expectRegistered(grid, seenQuads(grid, truth), truth, 0.05);
    }
}

// A lens with a fourth-order term: k2 is fitted where the corners need it.
TEST(ChartRegistration, GridUnderFourthOrderDistortionRegisters) {
    const ChartDescription grid = squareGrid();
    ChartRegistration truth = truthFor(grid, {1.1, -6.0, {20.0, 0.0}, 0.0, 0.0, -0.08});
    truth.k2 = 0.03;
    ChartRegistration fitted;
    expectRegistered(grid, seenQuads(grid, truth), truth, 0.05, &fitted);
    EXPECT_NEAR(fitted.k2, 0.03, 0.002);
}

// The chart runs off two sides of the frame: shapes outside are absent, the border row and
// column are cut and still matched.
TEST(ChartRegistration, GridPartlyInViewRegisters) {
    const ChartDescription grid = squareGrid();
    const ChartRegistration truth = truthFor(grid, {1.2, 4.0, {900.0, 700.0}, 0.0, 0.0, -0.05});
    const Seen seen = seenQuads(grid, truth);
    ASSERT_LT(seen.quads.size(), 80u);
    ASSERT_GE(cutCount(seen), 8);
    expectRegistered(grid, seen, truth, 0.05);
}

TEST(ChartRegistration, SpuriousQuadsAreIgnored) {
    const ChartDescription grid = squareGrid();
    const ChartRegistration truth = truthFor(grid, {0.95, -12.0, {-40.0, 25.0}, 0.0, 0.0, -0.06});
    Seen seen = seenQuads(grid, truth);
    addClutter(seen, 40, 7);
    expectRegistered(grid, seen, truth, 0.05);
}

TEST(ChartRegistration, AFewMissingShapesDoNotMatter) {
    const ChartDescription grid = squareGrid();
    const ChartRegistration truth = truthFor(grid, {0.9, 25.0, {0.0, 0.0}, 0.0, 0.0, 0.04});
    Seen seen = seenQuads(grid, truth);
    const std::size_t all = seen.quads.size();
    removeShapes(seen, {13, 26, 46, 52, 53, 54, 81, 94});
    ASSERT_EQ(seen.quads.size(), all - 8);
    expectRegistered(grid, seen, truth, 0.05);
}

// The arithmetic grid in full view: its near-repeat three rows down loses a third of the
// grid, so the true placement, matching every shape, wins even under noise.
TEST(ChartRegistration, ArithmeticGridInFullViewRegisters) {
    const ChartDescription grid = squareGrid(GridTurns::Arithmetic);
    const ChartRegistration truth = truthFor(grid, {0.95, -4.0, {10.0, 5.0}, 0.0, 0.0, -0.05});
    Seen seen = seenQuads(grid, truth);
    ASSERT_EQ(seen.quads.size(), 108u);
    removeShapes(seen, {40, 41, 53, 66});
    addNoise(seen, 0.1, 17);
    expectRegistered(grid, seen, truth, 0.1);
}

// Corner noise of sigma 0.05 to 0.2 px: the model stays within half a sigma of the truth over
// the whole frame (the fit averages hundreds of corners) and k1 within 0.002.
TEST(ChartRegistration, CornerNoiseMovesTheModelProportionately) {
    const ChartDescription grid = squareGrid();
    const ChartRegistration truth = truthFor(grid, {1.05, 3.0, {10.0, -20.0}, 0.3e-5, 0.0, -0.08});
    for (const double sigma : {0.05, 0.1, 0.2}) {
        SCOPED_TRACE(::testing::Message() << "sigma " << sigma);
        Seen seen = seenQuads(grid, truth);
        addNoise(seen, sigma, 11);
        ChartRegistration fitted;
        expectRegistered(grid, seen, truth, 0.5 * sigma, &fitted);
        EXPECT_EQ(fitted.k2, 0.0);  // a k2 fitted to noise would bend the model off the chart
    }
}

TEST(ChartRegistration, IrregularChartRegisters) {
    const ChartDescription chart = irregularChart();
    ASSERT_GE(chart.shapes.size(), 28u);
    const Placement placements[] = {{0.9, 1.0, {5.0, 5.0}},
                                    {0.8, 150.0, {-60.0, 40.0}, 1e-5, 0.5e-5, -0.08},
                                    {1.1, -70.0, {0.0, 0.0}, 0.0, 0.0, 0.10}};
    for (const Placement& p : placements) {
        SCOPED_TRACE(::testing::Message() << "turn " << p.angleDeg);
        const ChartRegistration truth = truthFor(chart, p);
        expectRegistered(chart, seenQuads(chart, truth), truth, 0.05);
    }
}

TEST(ChartRegistration, IrregularChartWithClutterNoiseAndGapsRegisters) {
    const ChartDescription chart = irregularChart();
    const ChartRegistration truth = truthFor(chart, {0.85, -100.0, {30.0, 0.0}, 0.0, 0.0, -0.05});
    Seen seen = seenQuads(chart, truth);
    removeShapes(seen, {2, 9});
    addClutter(seen, 25, 3);
    addNoise(seen, 0.1, 5);
    // Some 25 shapes with 0.1 px of noise on every corner carry the model; at the frame's far
    // corners, away from every matched shape, it extrapolates, and whether the data earn k2
    // there is a close call that rounding alone can tip (0.06 px in one build, 0.14 in
    // another): twice the corners' noise.
    expectRegistered(chart, seen, truth, 0.2);
}

// A grid that a half turn maps onto itself, seen upside down: both placements explain every
// corner equally, and the registration takes the one nearest upright, which still puts every
// corner where the frame shows a corner.
TEST(ChartRegistration, SymmetricGridUpsideDownTakesTheUprightPlacement) {
    const ChartDescription grid = squareGrid(GridTurns::Uniform);
    const ChartRegistration truth = truthFor(grid, {0.9, 178.0, {20.0, -10.0}});
    const Seen seen = seenQuads(grid, truth);
    ChartRegistration fitted;
    std::vector<ShapeMatch> matches;
    ASSERT_TRUE(registerChart(grid, seen.quads, kWidth, kHeight, fitted, matches));
    ASSERT_EQ(matches.size(), seen.quads.size());
    // Upright: the chart's x axis runs along the frame's, turned -2 degrees.
    const ChartPoint a = chartToFrame(fitted, {0.0, 0.0});
    const ChartPoint b = chartToFrame(fitted, {100.0, 0.0});
    EXPECT_NEAR(std::atan2(b.y - a.y, b.x - a.x) * 180.0 / kPi, -2.0, 1e-6);
    // Shape (r, c) is the quad of shape (8 - r, 11 - c), corner for corner.
    for (const ShapeMatch& m : matches) {
        const int r = m.shape / 12, c = m.shape % 12;
        EXPECT_EQ(seen.shape[static_cast<std::size_t>(m.quad)], (8 - r) * 12 + (11 - c));
        for (int i = 0; i < 4; ++i) {
            const ChartPoint f =
                chartToFrame(fitted, grid.shapes[static_cast<std::size_t>(m.shape)].corners[i]);
            const cv::Point2d q =
                seen.quads[static_cast<std::size_t>(m.quad)].corners[(i + m.cornerShift) % 4];
            EXPECT_NEAR(f.x, q.x, 0.01);
            EXPECT_NEAR(f.y, q.y, 0.01);
        }
    }
    EXPECT_LT(fitted.residualRms, 0.01);
}

void expectRefused(const ChartDescription& description, const std::vector<detect::Quad>& quads,
                   int width = kWidth, int height = kHeight) {
    ChartRegistration registration;
    registration.k1 = 0.123;  // marks: untouched on refusal
    registration.matchedShapes = -7;
    std::vector<ShapeMatch> matches = {{1, 2, 3}};
    EXPECT_FALSE(registerChart(description, quads, width, height, registration, matches));
    EXPECT_FALSE(registration.registered);
    EXPECT_EQ(registration.k1, 0.123);
    EXPECT_EQ(registration.matchedShapes, -7);
    ASSERT_EQ(matches.size(), 1u);
    EXPECT_EQ(matches[0].quad, 2);
}

TEST(ChartRegistration, AnotherChartIsRefused) {
    const ChartDescription grid = squareGrid();
    const ChartDescription irregular = irregularChart();
    const ChartDescription staggered = staggeredGrid();
    const Placement p{0.95, 6.0, {0.0, 0.0}, 0.0, 0.0, -0.05};
    expectRefused(grid, seenQuads(irregular, truthFor(irregular, p)).quads);
    expectRefused(irregular, seenQuads(grid, truthFor(grid, p)).quads);
    expectRefused(grid, seenQuads(staggered, truthFor(staggered, p)).quads);
    expectRefused(staggered, seenQuads(grid, truthFor(grid, p)).quads);
}

TEST(ChartRegistration, BadInputIsRefused) {
    const ChartDescription grid = squareGrid();
    const std::vector<detect::Quad> quads = seenQuads(grid, truthFor(grid, {})).quads;
    expectRefused(grid, {});
    expectRefused(ChartDescription{}, quads);
    expectRefused(grid, quads, 0, kHeight);
    expectRefused(grid, quads, kWidth, -3);
}

}  // namespace
