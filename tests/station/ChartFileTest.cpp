// Chart description files: the four built-in charts against the renderer's squares and the
// members' slot designs, every kind of mistake refused with its file, line and key, and the
// library's own check of a hand-built description.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "render/ChartDesign.h"
#include "station/BuiltinCharts.h"
#include "station/ChartFile.h"
#include "station/Failure.h"
#include "talonvireo/ChartRegistration.h"
#include "talonvireo/MemberTable.h"

namespace {
using namespace talonvireo;
using namespace talonvireo::station;

const std::string kCharts = TALONVIREO_CHARTS_DIR;
// The command line's defaults: the built-in files hold the slots for these.
constexpr int kDefaultRoiSize = 80;
constexpr double kDefaultMarkSearchSize = 100.0;

struct BuiltinCase {
    render::ChartProject project;
    MemberChart chart;
    int slots;
};
const BuiltinCase kBuiltins[] = {
    {render::ChartProject::K74T16BX, MemberChart::kK74T16BX, 52},
    {render::ChartProject::K83P09BQ, MemberChart::kK83P09BQ, 52},
    {render::ChartProject::HLX6C, MemberChart::kHLX6C, 52},
    {render::ChartProject::K31R22BX, MemberChart::kK31R22BX, 68},
};

// Where a slot's region centre sits, chart units.
ChartPoint slotPoint(const ChartDescription& chart, const ChartSlot& slot) {
    ChartPoint a, b;
    if (slot.shape >= 0) {
        a = chart.shapes.at(slot.shape).corners.at(slot.side);
        b = chart.shapes.at(slot.shape).corners.at((slot.side + 1) % 4);
    } else {
        a = chart.edges.at(slot.edge).from;
        b = chart.edges.at(slot.edge).to;
    }
    return {a.x + slot.along * (b.x - a.x), a.y + slot.along * (b.y - a.y)};
}

const MemberInfo* firstMember(const std::string& chartName) {
    const MemberTable table = memberTable();
    for (int i = 0; i < table.count; ++i) {
        if (chartName == table.rows[i].chartName) {
            return &table.rows[i];
        }
    }
    return nullptr;
}

// What parsing `text` says: the failure's message ("accepted" when it parses).
std::string refusal(const std::string& text) {
    try {
        parseChartDescription(text, "charts/x.toml");
    } catch (const Failure& e) {
        EXPECT_EQ(e.cause(), Cause::BadInput) << e.what();
        return e.what();
    }
    return "accepted";
}

// One square and one slot on its side 1; the tests below bend one line of it.
const std::string kSquareHead = R"(name = "t"

[[shape]]
corners = [[0, 0], [100, 0], [100, 100], [0, 100]]
polarity = "dark"
)";

TEST(ChartFile, EachBuiltinChartParsesAndPassesTheLibrarysCheck) {
    const std::vector<std::string> names = builtinChartNames();
    ASSERT_EQ(names, (std::vector<std::string>{"K74T16BX", "K83P09BQ", "HLX6C", "K31R22BX"}));
    for (const std::string& name : names) {
        ChartDescription chart;
        ASSERT_TRUE(builtinChart(name, chart)) << name;
        EXPECT_EQ(chart.name, name);
        EXPECT_EQ(chart.units, "px");
        std::string problem = "unset";
        EXPECT_TRUE(checkChartDescription(chart, problem)) << name << ": " << problem;
        EXPECT_TRUE(problem.empty());
        // The file on disk reads the same as the compiled-in copy.
        const ChartDescription fromFile = readChartFile(kCharts + "/" + name + ".toml");
        ASSERT_EQ(fromFile.shapes.size(), chart.shapes.size());
        ASSERT_EQ(fromFile.slots.size(), chart.slots.size());
        for (std::size_t k = 0; k < chart.slots.size(); ++k) {
            EXPECT_EQ(fromFile.slots[k].name, chart.slots[k].name);
        }
    }
    ChartDescription untouched;
    EXPECT_FALSE(builtinChart("K99", untouched));
    EXPECT_TRUE(untouched.shapes.empty());
}

TEST(ChartFile, BuiltinSquaresAreTheRenderersSquares) {
    for (const BuiltinCase& c : kBuiltins) {
        const render::ChartDesign design = render::designChart(c.project);
        ChartDescription chart;
        ASSERT_TRUE(builtinChart(render::projectName(c.project), chart));
        ASSERT_EQ(chart.shapes.size(), design.squares.size()) << render::projectName(c.project);
        for (std::size_t s = 0; s < design.squares.size(); ++s) {
            const auto outline = design.squares[s].outline();  // clockwise from the top-left
            EXPECT_EQ(chart.shapes[s].polarity, 1);
            for (int i = 0; i < 4; ++i) {
                EXPECT_NEAR(chart.shapes[s].corners[i].x, outline[i].x, 1e-6) << s << " " << i;
                EXPECT_NEAR(chart.shapes[s].corners[i].y, outline[i].y, 1e-6) << s << " " << i;
            }
        }
        EXPECT_TRUE(chart.edges.empty());
    }
}

TEST(ChartFile, BuiltinSlotsSitWhereTheMembersFindTheirEdges) {
    const ChartRegistration identity = undistortedRegistration(4000, 3000);
    for (const BuiltinCase& c : kBuiltins) {
        const std::string name = render::projectName(c.project);
        ChartDescription chart;
        ASSERT_TRUE(builtinChart(name, chart));
        ASSERT_EQ(static_cast<int>(chart.slots.size()), c.slots) << name;
        std::vector<EdgeCentre> design(c.slots);
        ASSERT_EQ(chartDesign(c.chart, kDefaultMarkSearchSize, design.data(), c.slots), c.slots);
        const MemberInfo* member = firstMember(name);
        ASSERT_NE(member, nullptr);
        for (int k = 0; k < c.slots; ++k) {
            const ChartSlot& slot = chart.slots[k];
            ASSERT_EQ(slot.slot, k) << name;
            ASSERT_GE(slot.shape, 0) << name << " " << k;
            const ChartPoint p = chartToFrame(identity, slotPoint(chart, slot));
            EXPECT_NEAR(p.x, design[k].x, 0.01) << name << " slot " << k;
            EXPECT_NEAR(p.y, design[k].y, 0.01) << name << " slot " << k;
            // The design's point lies on the side the slot names, between its corners.
            const ChartPoint a = chart.shapes[slot.shape].corners[slot.side];
            const ChartPoint b = chart.shapes[slot.shape].corners[(slot.side + 1) % 4];
            const double dx = b.x - a.x, dy = b.y - a.y, length = std::hypot(dx, dy);
            const double px = design[k].x - a.x, py = design[k].y - a.y;
            EXPECT_LT(std::abs(dx * py - dy * px) / length, 0.01) << name << " slot " << k;
            const double t = (dx * px + dy * py) / (length * length);
            EXPECT_GE(t, 0.0);
            EXPECT_LE(t, 1.0);
            EXPECT_EQ(slot.regionSize, member->regionSide(k, kDefaultRoiSize)) << name << k;
            const bool first = k < c.slots / 2;
            EXPECT_EQ(slot.name.substr(0, 3), first ? "L1-" : "L2-");
        }
    }
}

TEST(ChartFile, ASyntaxErrorNamesItsLine) {
    const std::string message = refusal(R"(name = "t"
[[shape]]
corners = [[0, 0], [100, 0] [100, 100], [0, 100]]
polarity = "dark"
)");
    EXPECT_EQ(message.rfind("chart charts/x.toml:3: TOML syntax (column ", 0), 0u) << message;
}

TEST(ChartFile, AnUnknownKeyIsRefusedNotDropped) {
    EXPECT_EQ(refusal(kSquareHead + R"(
[[slot]]
name = "a"
slot = 0
shape = 0
sid = 1
)"),
              "chart charts/x.toml:11: slot[0].sid: unknown key (name, slot, shape, side, edge, "
              "along, region, zone)");
    EXPECT_EQ(refusal("nmae = \"t\"\n"),
              "chart charts/x.toml:1: nmae: unknown key (name, units, shape, edge, mark, slot, "
              "zone)");
}

TEST(ChartFile, AMissingKeyNamesItsTable) {
    EXPECT_EQ(refusal(kSquareHead + R"(
[[slot]]
name = "a"
shape = 0
side = 1
)"),
              "chart charts/x.toml:7: slot[0].slot: missing: its record slot, from 0");
    EXPECT_EQ(refusal("units = \"mm\"\n"),
              "chart charts/x.toml:1: name: missing: the chart's name");
    EXPECT_EQ(refusal(R"(name = "t"
[[shape]]
corners = [[0, 0], [100, 0], [100, 100], [0, 100]]
)"),
              "chart charts/x.toml:2: shape[0].polarity: missing: \"dark\" or \"light\"");
}

TEST(ChartFile, AShapeWithThreeCornersIsRefused) {
    EXPECT_EQ(refusal(R"(name = "t"
[[shape]]
corners = [[0, 0], [10, 0], [10, 10], [0, 10]]
polarity = "dark"
[[shape]]
centre = [50, 50]
side = 10
polarity = "dark"
[[shape]]
centre = [80, 50]
side = 10
polarity = "light"
[[shape]]
corners = [[0, 100], [10, 100], [10, 110]]
polarity = "dark"
)"),
              "chart charts/x.toml:14: shape[3].corners: expected 4 [x, y] points");
}

TEST(ChartFile, ABadPolarityIsRefused) {
    EXPECT_EQ(refusal(R"(name = "t"
[[edge]]
from = [0, 0]
to = [0, 100]
polarity = "grey"
)"),
              "chart charts/x.toml:5: edge[0].polarity: expected \"dark\" or \"light\", not "
              "\"grey\"");
}

TEST(ChartFile, ASlotOnAMissingShapeIsRefused) {
    EXPECT_EQ(refusal(kSquareHead + R"(
[[slot]]
name = "a"
slot = 0
shape = 3
side = 1
)"),
              "chart charts/x.toml:10: slot[0].shape: no shape 3: the chart has 1 (0 .. 0)");
    EXPECT_EQ(refusal(kSquareHead + R"(
[[slot]]
name = "a"
slot = 0
shape = "S9"
side = 1
)"),
              "chart charts/x.toml:10: slot[0].shape: no shape has id 'S9'");
    EXPECT_EQ(refusal(kSquareHead + R"(
[[slot]]
name = "a"
slot = 0
edge = 0
)"),
              "chart charts/x.toml:10: slot[0].edge: the chart has no [[edge]]");
}

TEST(ChartFile, ADuplicateSlotIsRefused) {
    const std::string twoSlots = kSquareHead + R"(
[[slot]]
name = "a"
slot = 0
shape = 0
side = 1

[[slot]]
name = "NAME"
slot = SLOT
shape = 0
side = 2
)";
    const auto with = [&](const std::string& name, const std::string& slot) {
        std::string text = twoSlots;
        text.replace(text.find("NAME"), 4, name);
        text.replace(text.find("SLOT"), 4, slot);
        return text;
    };
    EXPECT_EQ(refusal(with("b", "0")),
              "chart charts/x.toml:15: slot[1].slot: 0 is already slot[0]'s (line 9)");
    EXPECT_EQ(refusal(with("a", "1")),
              "chart charts/x.toml:14: slot[1].name: 'a' is already slot[0]'s (line 8)");
    EXPECT_EQ(refusal(with("b", "1")), "accepted");
}

TEST(ChartFile, AlongOutOfRangeIsRefused) {
    EXPECT_EQ(refusal(kSquareHead + R"(
[[slot]]
name = "a"
slot = 0
shape = 0
side = 1
along = 1.5
)"),
              "chart charts/x.toml:12: slot[0].along: expected a number from 0 to 1, not 1.5");
}

TEST(ChartFile, ANonConvexOrDegenerateQuadrilateralIsRefused) {
    const auto shape = [](const std::string& corners) {
        return "name = \"t\"\n[[shape]]\npolarity = \"dark\"\ncorners = " + corners + "\n";
    };
    EXPECT_EQ(refusal(shape("[[0, 0], [100, 0], [20, 20], [0, 100]]")),
              "chart charts/x.toml:4: shape[0].corners: not a convex quadrilateral (a dent, or "
              "corners out of order)");
    EXPECT_EQ(refusal(shape("[[0, 0], [100, 100], [100, 0], [0, 100]]")),  // crossed
              "chart charts/x.toml:4: shape[0].corners: not a convex quadrilateral (a dent, or "
              "corners out of order)");
    EXPECT_EQ(refusal(shape("[[0, 0], [50, 0], [100, 0], [0, 100]]")),
              "chart charts/x.toml:4: shape[0].corners: degenerate: corners coincide or three lie "
              "on a line");
    EXPECT_EQ(refusal(shape("[[0, 0], [0, 0], [100, 100], [0, 100]]")),
              "chart charts/x.toml:4: shape[0].corners: degenerate: corners coincide or three lie "
              "on a line");
}

TEST(ChartFile, OtherSlotAndZoneMistakesNameTheirKey) {
    const auto slot = [](const std::string& line) {
        return kSquareHead + "\n[[zone]]\nname = \"inner\"\nto = 0.4\n\n[[slot]]\nname = \"a\"\n" +
               "slot = 0\nshape = 0\n" + line + "\n";
    };
    EXPECT_EQ(refusal(slot("side = 4")),
              "chart charts/x.toml:15: slot[0].side: expected 0 .. 3, not 4");
    EXPECT_EQ(refusal(slot("side = 1\nregion = 8")),
              "chart charts/x.toml:16: slot[0].region: expected 0 (fitted to the edge) or 16 .. "
              "2000 px, not 8");
    EXPECT_EQ(refusal(slot("side = 1\nzone = \"outer\"")),
              "chart charts/x.toml:16: slot[0].zone: no [[zone]] is named 'outer'");
    EXPECT_EQ(refusal(slot("side = 1\nedge = 0")),
              "chart charts/x.toml:16: slot[0].edge: a slot names a shape's side or a lone edge, "
              "not both");
    EXPECT_EQ(refusal(slot("side = 1\nzone = \"inner\"")), "accepted");
    EXPECT_EQ(refusal(kSquareHead + "[[zone]]\nname = \"z\"\nfrom = 0.6\nto = 0.4\n"),
              "chart charts/x.toml:9: zone[0].to: the zone ends (to 0.4) before it starts (from "
              "0.6)");
    EXPECT_EQ(refusal("name = \"t\"\n"),
              "chart charts/x.toml:1: shape: the chart has no [[shape]] and no [[edge]]");
}

TEST(ChartFile, CounterClockwiseCornersArePutClockwiseWithTheirSlots) {
    // Written down the left side first: counter-clockwise as the frame sees it (y down).
    const ChartDescription chart = parseChartDescription(R"(name = "t"
[[shape]]
corners = [[0, 0], [0, 100], [100, 100], [100, 0]]
polarity = "dark"
[[slot]]
name = "left"
slot = 0
shape = 0
side = 0
along = 0.25
[[slot]]
name = "bottom"
slot = 1
shape = 0
side = 1
)",
                                                         "ccw.toml");
    ASSERT_EQ(chart.shapes.size(), 1u);
    const auto& c = chart.shapes[0].corners;
    const double expected[4][2] = {{0, 0}, {100, 0}, {100, 100}, {0, 100}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_DOUBLE_EQ(c[i].x, expected[i][0]);
        EXPECT_DOUBLE_EQ(c[i].y, expected[i][1]);
    }
    // Each slot still measures the side it named, at the same place: a quarter down the left
    // side, the middle of the bottom.
    ASSERT_EQ(chart.slots.size(), 2u);
    EXPECT_NEAR(slotPoint(chart, chart.slots[0]).x, 0.0, 1e-12);
    EXPECT_NEAR(slotPoint(chart, chart.slots[0]).y, 25.0, 1e-12);
    EXPECT_NEAR(slotPoint(chart, chart.slots[1]).x, 50.0, 1e-12);
    EXPECT_NEAR(slotPoint(chart, chart.slots[1]).y, 100.0, 1e-12);
    std::string problem;
    EXPECT_TRUE(checkChartDescription(chart, problem)) << problem;
}

TEST(ChartFile, CentreShapesAreTurnedSquaresAndRectangles) {
    const ChartDescription chart = parseChartDescription(R"(name = "t"
[[shape]]
centre = [100, 100]
side = 20
angle_deg = 90
polarity = "dark"
[[shape]]
centre = [0, 0]
width = 40
height = 20
polarity = "light"
)",
                                                         "centre.toml");
    ASSERT_EQ(chart.shapes.size(), 2u);
    // Turned a quarter: the top-left corner of the unturned square goes to the top right.
    const double square[4][2] = {{110, 90}, {110, 110}, {90, 110}, {90, 90}};
    const double rectangle[4][2] = {{-20, -10}, {20, -10}, {20, 10}, {-20, 10}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(chart.shapes[0].corners[i].x, square[i][0], 1e-12);
        EXPECT_NEAR(chart.shapes[0].corners[i].y, square[i][1], 1e-12);
        EXPECT_NEAR(chart.shapes[1].corners[i].x, rectangle[i][0], 1e-12);
        EXPECT_NEAR(chart.shapes[1].corners[i].y, rectangle[i][1], 1e-12);
    }
    EXPECT_EQ(chart.shapes[0].polarity, 1);
    EXPECT_EQ(chart.shapes[1].polarity, -1);
}

TEST(ChartFile, TheReadmeExampleReads) {
    std::ifstream file(TALONVIREO_README);
    std::stringstream readme;
    readme << file.rdbuf();
    const std::string text = readme.str();
    const std::size_t section = text.find("## Chart description files");
    ASSERT_NE(section, std::string::npos);
    const std::size_t begin = text.find("```toml\n", section) + 8;
    const std::size_t end = text.find("```", begin);
    const ChartDescription chart = parseChartDescription(text.substr(begin, end - begin), "README");
    EXPECT_EQ(chart.shapes.size(), 3u);
    EXPECT_EQ(chart.edges.size(), 1u);
    EXPECT_EQ(chart.marks.size(), 1u);
    ASSERT_EQ(chart.zones.size(), 2u);
    EXPECT_DOUBLE_EQ(chart.zones[0].fromField, 0.0);
    EXPECT_DOUBLE_EQ(chart.zones[1].toField, 1.0);
    ASSERT_EQ(chart.slots.size(), 4u);
    EXPECT_EQ(chart.slots[1].regionSize, 96);
    EXPECT_DOUBLE_EQ(chart.slots[1].along, 0.4);
    EXPECT_EQ(chart.slots[2].zone, "outer");
    EXPECT_EQ(chart.slots[3].edge, 0);
    // The top of the middle square, turned 5 degrees about (2000, 1500): its midpoint is
    // 150 px from the centre along the turned -y axis.
    const ChartPoint top = slotPoint(chart, chart.slots[0]);
    const double a = 5.0 * M_PI / 180.0;
    EXPECT_NEAR(top.x, 2000.0 + 150.0 * std::sin(a), 1e-9);
    EXPECT_NEAR(top.y, 1500.0 - 150.0 * std::cos(a), 1e-9);
}

TEST(ChartDescriptionCheck, RefusesAHandBuiltBadRecordWithAReason) {
    ChartDescription good;
    good.name = "hand";
    ChartShape square;
    square.corners = {ChartPoint{0, 0}, ChartPoint{100, 0}, ChartPoint{100, 100},
                      ChartPoint{0, 100}};
    good.shapes.push_back(square);
    good.zones.push_back({"inner", 0.0, 0.5});
    ChartSlot slot;
    slot.name = "E0";
    slot.slot = 0;
    slot.shape = 0;
    slot.side = 1;
    good.slots.push_back(slot);
    std::string problem = "unset";
    ASSERT_TRUE(checkChartDescription(good, problem)) << problem;
    EXPECT_TRUE(problem.empty());

    const auto reason = [](const ChartDescription& chart) {
        std::string why;
        EXPECT_FALSE(checkChartDescription(chart, why));
        return why;
    };
    ChartDescription bad = good;
    std::swap(bad.shapes[0].corners[1], bad.shapes[0].corners[3]);
    EXPECT_EQ(reason(bad), "shape 0: corners run counter-clockwise (y down); list them clockwise");
    bad = good;
    bad.slots[0].side = 5;
    EXPECT_EQ(reason(bad),
              "slot 'E0' (slot 0): side 5 of shape 0 does not exist: sides are 0 .. 3");
    bad = good;
    bad.slots.push_back(bad.slots[0]);
    bad.slots[1].name = "E1";
    EXPECT_EQ(reason(bad), "slot 'E1' (slot 0): slot 0 is also filled by slot 'E0' (slot 0)");
    bad = good;
    bad.slots[0].zone = "edge";
    EXPECT_EQ(reason(bad), "slot 'E0' (slot 0): zone 'edge' is not defined");
    bad = good;
    bad.slots[0].along = 1.5;
    EXPECT_EQ(reason(bad), "slot 'E0' (slot 0): along 1.5 is not 0 .. 1");
    bad = good;
    bad.shapes[0].polarity = 0;
    EXPECT_EQ(reason(bad), "shape 0: polarity 0 is neither +1 (dark) nor -1 (light)");
    bad = good;
    bad.shapes[0].corners[2] = {10, 10};
    EXPECT_EQ(reason(bad), "shape 0: not a convex quadrilateral (a dent, or corners out of order)");
    bad = good;
    bad.shapes.clear();
    EXPECT_EQ(reason(bad), "the chart has no shapes and no lone edges");
}

TEST(ResolveChart, ByNameByPathAndAnUnknownNameListsTheBuiltins) {
    const ChartDescription byName = resolveChart("k74t16bx");
    EXPECT_EQ(byName.name, "K74T16BX");
    EXPECT_EQ(byName.slots.size(), 52u);

    const std::string path = ::testing::TempDir() + "/resolve-chart.toml";
    {
        std::ofstream file(path);
        file << "name = \"bench\"\n[[edge]]\nfrom = [0, 0]\nto = [10, 200]\npolarity = "
                "\"light\"\n";
    }
    const ChartDescription byPath = resolveChart(path);
    EXPECT_EQ(byPath.name, "bench");
    ASSERT_EQ(byPath.edges.size(), 1u);
    EXPECT_EQ(byPath.edges[0].polarity, -1);
    std::remove(path.c_str());

    try {
        resolveChart("K99");
        ADD_FAILURE() << "an unknown chart was resolved";
    } catch (const Failure& e) {
        EXPECT_EQ(e.cause(), Cause::BadInput);
        EXPECT_EQ(std::string(e.what()),
                  "unknown chart 'K99': not a built-in chart (K74T16BX, K83P09BQ, HLX6C, "
                  "K31R22BX) nor a chart description file");
    }
    try {
        readChartFile(::testing::TempDir() + "/no-such-chart.toml");
        ADD_FAILURE() << "a missing file was read";
    } catch (const Failure& e) {
        EXPECT_EQ(e.cause(), Cause::UnreadableFile);
    }
}

}  // namespace
