// The ten layouts: their tables row by row against a separate transcription of the chart
// descriptions, the chart model each builds, the identity mapping, and the mark search of
// the 56-row pair.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>

#include <opencv2/imgproc.hpp>

#include "ChartFrames.h"
#include "LayoutRuns.h"
#include "locate/ChartProjection.h"
#include "locate/SFRLocate_LX.h"
#include "locate/SFRLocate_LX_MAP.h"
#include "locate/SFRLocate_LX_MAP_8K.h"

namespace {
using namespace talonvireo::testing;

// The chart descriptions as written for people. 26-row layouts list points as
// "(x, y) kK AB": the point stands in two rows (edges 2i and 2i + 1) with kind K and the
// codes A then B. 56-row layouts list whole rows "(x,y,edge,kind,code)".

// SFRLocate_LX_17QD
const char* const kLx17qdText =
    "(1932, 1600) k2 01; (1786, 1166) k3 01; (2270, 1200) k1 01; (2270, 1950) k0 10; "
    "(1750, 1950) k2 01; (1129, 550) k0 01; (2950, 582) k2 01; (2950, 2505) k3 10; "
    "(1100, 2500) k1 01; (730, 250) k0 01; (3300, 280) k2 01; (3300, 2810) k3 10; "
    "(700, 2810) k1 01";

// SFRLocate_LX_17QD2
const char* const kLx17qd2Text =
    "(2100, 1500) k1 01; (1500, 1440) k3 01; (2550, 1440) k1 01; (2550, 1650) k0 10; "
    "(1500, 1650) k2 01; (850, 900) k0 01; (3200, 900) k2 01; (3200, 2150) k3 10; "
    "(850, 2150) k1 01; (450, 600) k0 01; (3600, 600) k2 01; (3600, 2500) k3 10; "
    "(450, 2500) k1 01";

// SFRLocate_LX
const char* const kLxText =
    "(2100,1500,0,1,0) (2300,1500,0,3,0) (2300,1500,1,3,0) (2262,1300,1,2,0) "
    "(1162,1399,2,1,0) (1365,1365,2,3,0) (1365,1365,3,3,0) (1332,1164,3,2,0) "
    "(1344,1670,4,2,0) (1378,1870,4,3,0) (1378,1870,5,3,0) (1218,1844,5,1,0) "
    "(2614,1366,6,1,0) (2817,1331,6,3,0) (2817,1331,7,3,0) (2833,1131,7,2,0) "
    "(2796,1638,8,2,0) (2858,1830,8,3,0) (2858,1830,9,3,0) (2624,1873,9,1,0) "
    "(954,854,10,2,0) (991,1058,10,3,0) (991,1058,11,3,0) (784,1092,11,1,0) "
    "(1014,2024,12,2,0) (987,2226,12,3,0) (987,2226,13,3,0) (820,2121,13,1,0) "
    "(3005,1014,14,1,0) (3232,1039,14,3,0) (3232,1039,15,3,0) (3252,850,15,2,0) "
    "(3173,1945,16,2,0) (3220,2150,16,3,0) (3220,2150,17,3,0) (3000,2180,17,1,0) "
    "(383,626,18,3,0) (383,626,19,3,1) (410,2689,20,3,0) (410,2689,21,3,1) "
    "(3529,554,22,1,1) (3529,554,23,1,0) (3582,2394,24,0,0) (3582,2394,25,0,1) "
    "(300,1176,26,2,1) (300,1176,27,2,0) (2135,389,28,1,0) (2340,413,28,3,0) "
    "(2340,413,29,3,0) (2372,200,29,2,0) (3654,1874,30,1,0) (3654,1874,31,1,1) "
    "(1904,2646,32,2,0) (1708,2593,32,0,0) (1708,2593,33,0,0) (1670,2770,33,1,0)";

// SFRLocate_LX2
const char* const kLx2Text =
    "(1902,1600,0,2,0) (1879,1800,0,3,0) (1879,1800,1,3,0) (1700,1830,1,1,0) "
    "(1494,1045,2,1,0) (1693,1070,2,3,0) (1693,1070,3,3,0) (1715,880,3,2,0) "
    "(2557,1050,4,3,0) (2360,1050,4,1,0) (2557,1050,5,3,0) (2550,850,5,2,0) "
    "(2600,2150,6,2,0) (2500,2300,6,3,0) (2500,2300,7,3,0) (2380,2300,7,1,0) "
    "(1733,2150,8,2,0) (1700,2312,8,3,0) (1700,2312,9,3,0) (1442,2251,9,1,0) "
    "(1086,710,10,1,0) (1291,737,10,3,0) (1291,737,11,3,0) (1314,538,11,2,0) "
    "(2980,800,12,3,0) (2779,800,12,1,0) (2980,800,13,3,0) (2950,600,13,2,0) "
    "(3000,2400,14,2,0) (2900,2600,14,3,0) (2900,2600,15,3,0) (2700,2600,15,1,0) "
    "(1310,2352,16,2,0) (1338,2552,16,3,0) (1338,2552,17,3,0) (1050,2600,17,1,0) "
    "(350,1888,18,3,0) (350,1888,19,3,1) (1734,500,20,1,0) (1934,500,20,3,0) "
    "(1734,500,21,1,0) (1650,300,21,0,0) (3640,1220,22,0,1) (3640,1220,23,0,0) "
    "(2360,2660,24,2,0) (2300,2860,24,3,0) (2360,2660,25,2,0) (2095,2666,25,0,0) "
    "(700,300,26,3,0) (700,300,27,3,1) (3300,350,28,1,0) (3300,350,29,1,1) "
    "(3374,2800,30,0,0) (3374,2800,31,0,1) (670,2750,32,2,0) (670,2750,33,2,1)";

// SFRLocate_LX_MAP
const char* const kLxMapText =
    "(1781, 1672) k2 01; (1250, 1200) k3 01; (2770, 1200) k1 01; (2770, 1850) k0 10; "
    "(1250, 1850) k2 01; (860, 870) k3 01; (3160, 850) k1 01; (3160, 2190) k0 10; "
    "(860, 2190) k2 01; (255, 410) k3 01; (3760, 385) k1 01; (3760, 2650) k0 10; "
    "(270, 2670) k2 01";

// SFRLocate_LX_MAP2
const char* const kLxMap2Text =
    "(2240, 1372) k1 01; (1450, 914) k3 01; (2550, 900) k1 01; (2550, 2160) k0 10; "
    "(1450, 2160) k2 01; (1073, 621) k3 01; (2960, 621) k1 01; (2960, 2470) k0 10; "
    "(1073, 2470) k2 01; (500, 230) k3 01; (3500, 230) k1 01; (3500, 2850) k0 10; "
    "(500, 2850) k2 01";

// SFRLocate_HLX6C
const char* const kHlx6cText =
    "(1981, 1622) k2 01; (1631, 1440) k3 01; (2470, 1450) k1 01; (2470, 1650) k0 10; "
    "(1630, 1620) k2 01; (1140, 1070) k3 01; (2950, 1090) k1 01; (2950, 2000) k0 10; "
    "(1130, 2000) k2 01; (720, 750) k3 01; (3360, 785) k1 01; (3360, 2350) k0 10; "
    "(700, 2300) k2 01";

// SFRLocate_HLX6C_2
const char* const kHlx6c2Text =
    "(2140, 1472) k1 01; (1850, 1214) k3 01; (2350, 1200) k1 01; (2350, 1950) k0 10; "
    "(1850, 1960) k2 01; (1360, 842) k3 01; (2800, 850) k1 01; (2800, 2300) k0 10; "
    "(1373, 2300) k2 01; (950, 520) k3 01; (3200, 500) k1 01; (3200, 2650) k0 10; "
    "(920, 2650) k2 01";

struct Row {
    int x, y, edge, kind, code;
};

std::vector<Row> parseRows(const std::string& text) {
    std::vector<Row> rows;
    int points = 0;
    for (std::size_t at = text.find('('); at != std::string::npos; at = text.find('(', at + 1)) {
        const char* item = text.c_str() + at;
        int x = 0, y = 0, edge = 0, kind = 0, code = 0, first = 0, second = 0;
        if (std::sscanf(item, "(%d,%d,%d,%d,%d)", &x, &y, &edge, &kind, &code) == 5) {
            rows.push_back({x, y, edge, kind, code});
        } else if (std::sscanf(item, "(%d, %d) k%d %1d%1d", &x, &y, &kind, &first, &second) == 5) {
            rows.push_back({x, y, 2 * points, kind, first});
            rows.push_back({x, y, 2 * points + 1, kind, second});
            ++points;
        } else {
            ADD_FAILURE() << "unreadable row at " << item;
        }
    }
    return rows;
}

const char* describedText(Layout layout) {
    static const std::pair<Layout, const char*> texts[] = {
        {Layout::Lx17qd, kLx17qdText}, {Layout::Lx17qd2, kLx17qd2Text},
        {Layout::Lx, kLxText},         {Layout::Lx2, kLx2Text},
        {Layout::LxMap, kLxMapText},   {Layout::LxMap2, kLxMap2Text},
        {Layout::LxMap8k, kLxMapText}, {Layout::LxMap28k, kLxMap2Text},
        {Layout::Hlx6c, kHlx6cText},   {Layout::Hlx6c2, kHlx6c2Text},
    };
    for (const auto& [l, text] : texts) {
        if (l == layout) {
            return text;
        }
    }
    return "";
}

cv::Mat blankFrame() {
    return cv::Mat(3000, 4000, CV_8UC1, cv::Scalar(kChartLight));
}

// A frame of the K31R22BX chart, which the mark search of the 56-row pair needs.
cv::Mat markedFrame() {
    ChartFrame frame;
    frame.project = talonvireo::render::ChartProject::K31R22BX;
    return renderGreyChart(frame);
}

TEST(LayoutTables, EveryRowOfEveryLayoutMatchesItsDescription) {
    const cv::Mat marked = markedFrame();
    for (const LayoutInfo& info : allLayouts()) {
        const std::vector<Row> rows = parseRows(describedText(info.layout));
        ASSERT_EQ(static_cast<int>(rows.size()), info.rows) << info.name;
        const LocateRun run = runLayoutOnly(info.layout, info.rows == 56 ? marked : blankFrame());
        ASSERT_FALSE(run.threw) << info.name;
        ASSERT_EQ(run.corners.size(), rows.size()) << info.name;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const auto& c = run.corners[i];
            EXPECT_EQ(c.chartX, static_cast<float>(rows[i].x)) << info.name << " row " << i;
            EXPECT_EQ(c.chartY, static_cast<float>(rows[i].y)) << info.name << " row " << i;
            EXPECT_EQ(c.kind, rows[i].kind) << info.name << " row " << i;
            EXPECT_FALSE(c.found);
        }
        // Edges: the first two rows naming each edge index, in index order, code of the first.
        std::vector<std::vector<int>> naming(rows.size());
        for (std::size_t i = 0; i < rows.size(); ++i) {
            naming[rows[i].edge].push_back(static_cast<int>(i));
        }
        std::size_t e = 0;
        for (const std::vector<int>& n : naming) {
            if (n.empty()) {
                continue;
            }
            ASSERT_LT(e, run.edges.size()) << info.name;
            const auto& edge = run.edges[e++];
            EXPECT_EQ(edge.cornerCount, std::min<int>(2, static_cast<int>(n.size())));
            EXPECT_EQ(edge.corner0, n[0]) << info.name;
            EXPECT_EQ(edge.corner1, n.size() > 1 ? n[1] : 0) << info.name;
            EXPECT_EQ(edge.edgeCode, rows[n[0]].code) << info.name;
        }
        EXPECT_EQ(e, run.edges.size()) << info.name;
        EXPECT_EQ(run.cornerSearchSize, info.cornerSearchSize) << info.name;
    }
}

TEST(LayoutTables, TwentySixRowLayoutsGiveTwentySixSingleCornerEdges) {
    for (const LayoutInfo& info : allLayouts()) {
        if (info.rows != 26) {
            continue;
        }
        const LocateRun run = runLayoutOnly(info.layout, blankFrame());
        EXPECT_EQ(run.corners.size(), 26u) << info.name;
        ASSERT_EQ(run.edges.size(), 26u) << info.name;
        for (const auto& e : run.edges) {
            EXPECT_EQ(e.cornerCount, 1) << info.name;
        }
    }
}

TEST(LayoutTables, FiftySixRowLayoutsGiveFiftySixCornersAndThirtyFourEdges) {
    const cv::Mat marked = markedFrame();
    for (const Layout layout : {Layout::Lx, Layout::Lx2}) {
        const LocateRun run = runLayoutOnly(layout, marked);
        ASSERT_FALSE(run.threw);
        EXPECT_EQ(run.corners.size(), 56u);
        EXPECT_EQ(run.edges.size(), 34u);
    }
}

TEST(LayoutTables, TheMapLayoutsFor8KDifferFromTheirTwinsOnlyInSearchSize) {
    const std::pair<Layout, Layout> twins[] = {{Layout::LxMap, Layout::LxMap8k},
                                               {Layout::LxMap2, Layout::LxMap28k}};
    for (const auto& [plain, wide] : twins) {
        const LocateRun a = runLayoutOnly(plain, blankFrame());
        const LocateRun b = runLayoutOnly(wide, blankFrame());
        EXPECT_EQ(a.cornerSearchSize, 600);
        EXPECT_EQ(b.cornerSearchSize, 1200);
        ASSERT_EQ(a.corners.size(), b.corners.size());
        ASSERT_EQ(a.edges.size(), b.edges.size());
        for (std::size_t i = 0; i < a.corners.size(); ++i) {
            EXPECT_EQ(a.corners[i].chartX, b.corners[i].chartX);
            EXPECT_EQ(a.corners[i].chartY, b.corners[i].chartY);
            EXPECT_EQ(a.corners[i].kind, b.corners[i].kind);
        }
        for (std::size_t i = 0; i < a.edges.size(); ++i) {
            EXPECT_EQ(a.edges[i].corner0, b.edges[i].corner0);
            EXPECT_EQ(a.edges[i].edgeCode, b.edges[i].edgeCode);
        }
        EXPECT_EQ(cv::norm(a.perspective, b.perspective, cv::NORM_INF), 0.0);
    }
}

TEST(LayoutTables, TwentySixRowLayoutsMapChartPointsOntoThemselves) {
    for (const LayoutInfo& info : allLayouts()) {
        if (info.rows != 26) {
            continue;
        }
        const LocateRun run = runLayoutOnly(info.layout, blankFrame());
        ASSERT_TRUE(RegularSFR::isHomography(run.perspective)) << info.name;
        for (const auto& c : run.corners) {
            const cv::Point2f p =
                RegularSFR::projectChartPoint(run.perspective, c.chartX, c.chartY);
            EXPECT_NEAR(p.x, c.chartX, 1e-3) << info.name;
            EXPECT_NEAR(p.y, c.chartY, 1e-3) << info.name;
        }
    }
}

TEST(LayoutTables, EveryLayoutIsSupportedAndHasNoOptions) {
    RegularSFR::SFRLocate_LX_MAP locator(blankFrame());
    EXPECT_TRUE(locator.isSupported());
    locator.initOptions();
    EXPECT_EQ(locator.cornerSearchSize, 0);
    locator.initParams();
    EXPECT_EQ(locator.cornerSearchSize, 600);
    RegularSFR::SFRLocate_LX_MAP2_8K wide(blankFrame());
    wide.initParams();
    EXPECT_EQ(wide.cornerSearchSize, 1200);
}

// ---- The mark search of the 56-row pair ----

// A light 4000 x 3000 frame with dark axis-aligned blocks (x, y, side).
cv::Mat blocksFrame(std::initializer_list<cv::Vec3i> blocks) {
    cv::Mat frame = blankFrame();
    for (const cv::Vec3i& b : blocks) {
        frame(cv::Rect(b[0], b[1], b[2], b[2])).setTo(kChartDark);
    }
    return frame;
}

// The translation slot 4 sets, or nothing when it throws.
bool searchMarks(const cv::Mat& frame, int markSearchSize, cv::Point2d& shift) {
    RegularSFR::SFRLocate_LX locator(frame);
    locator.markSearchSize = markSearchSize;
    try {
        locator.searchMarks(cv::Point2f(2010.7f, 1547.1f));
    } catch (const cv::Exception&) {
        return false;
    }
    const cv::Mat& m = locator.perspective;
    EXPECT_TRUE(RegularSFR::isHomography(m));
    EXPECT_EQ(m.at<double>(0, 0), 1.0);
    EXPECT_EQ(m.at<double>(1, 1), 1.0);
    EXPECT_EQ(m.at<double>(2, 2), 1.0);
    EXPECT_EQ(m.at<double>(0, 1), 0.0);
    EXPECT_EQ(m.at<double>(2, 0), 0.0);
    shift = {m.at<double>(0, 2), m.at<double>(1, 2)};
    return true;
}

TEST(MarkSearch, OneLargeBlobInTheCentralHalfRaisesTheException) {
    cv::Point2d shift;
    EXPECT_FALSE(searchMarks(blocksFrame({{1900, 1500, 100}}), 50, shift));
    // A second one outside the central half (x < 1000) does not help.
    EXPECT_FALSE(searchMarks(blocksFrame({{1900, 1500, 100}, {200, 1500, 100}}), 50, shift));
    RegularSFR::SFRLocate_LX locator(blocksFrame({{1900, 1500, 100}}));
    locator.markSearchSize = 50;
    EXPECT_THROW(locator.locate(), cv::Exception);
}

TEST(MarkSearch, OfThreeOrMoreBlobsOnlyTheTwoNearestTheReferenceCount) {
    // Blocks of side 101 have centres at x + 50, y + 50.
    cv::Point2d shift;
    ASSERT_TRUE(searchMarks(
        blocksFrame({{1800, 1450, 101}, {2100, 1500, 101}, {2600, 2000, 101}, {1100, 900, 101}}),
        50, shift));
    const double midX = (1850.0 + 2150.0) / 2.0, midY = (1500.0 + 1550.0) / 2.0;
    EXPECT_NEAR(shift.x, midX - 2010.7, 1e-3);
    EXPECT_NEAR(shift.y, midY - 1547.1, 1e-3);
}

TEST(MarkSearch, ABlobWhoseAreaEqualsTheMarkSizeSquaredIsNotTaken) {
    // A block of 11 x 11 pixels has a contour area of 10 x 10 = 100.
    cv::Point2d shift;
    EXPECT_FALSE(searchMarks(blocksFrame({{2000, 1500, 11}, {2040, 1500, 11}}), 10, shift));
    ASSERT_TRUE(searchMarks(blocksFrame({{2000, 1500, 12}, {2040, 1500, 12}}), 10, shift));
    // The nearer of the two small blocks is skipped when it is only as large as the limit.
    ASSERT_TRUE(searchMarks(blocksFrame({{2000, 1540, 11}, {1900, 1500, 12}, {2200, 1500, 12}}), 10,
                            shift));
    EXPECT_NEAR(shift.x, (1905.5 + 2205.5) / 2.0 - 2010.7, 1e-3);
}

TEST(MarkSearch, AnUnmovedChartGivesAZeroShiftAndAMovedOneItsShift) {
    cv::Point2d shift;
    ASSERT_TRUE(searchMarks(markedFrame(), 100, shift));
    EXPECT_LE(std::hypot(shift.x, shift.y), 0.5);
    ChartFrame moved;
    moved.project = talonvireo::render::ChartProject::K31R22BX;
    moved.transform.shiftX = 37.0;
    moved.transform.shiftY = -52.0;
    ASSERT_TRUE(searchMarks(renderGreyChart(moved), 100, shift));
    EXPECT_NEAR(shift.x, 37.0, 0.5);
    EXPECT_NEAR(shift.y, -52.0, 0.5);
}

TEST(MarkSearch, TheFlatBorderListHoldsTheSameBordersAsTheTwoLevelOne) {
    // The mark search reads only each border's area and rectangle centre, so listing the
    // borders without their hierarchy must give the same borders.
    cv::Mat noise(500, 600, CV_8UC1);
    cv::RNG rng(3);
    rng.fill(noise, cv::RNG::UNIFORM, 0, 256);
    const cv::Mat chart = markedFrame()(cv::Rect(1000, 750, 2000, 1500));
    for (const cv::Mat& image : {noise, chart}) {
        cv::Mat binary;
        cv::threshold(image, binary, 255.0, 255.0, cv::THRESH_BINARY_INV | cv::THRESH_OTSU);
        std::vector<std::array<double, 3>> borders[2];
        const int modes[2] = {cv::RETR_CCOMP, cv::RETR_LIST};
        for (int m = 0; m < 2; ++m) {
            std::vector<std::vector<cv::Point>> contours;
            cv::findContours(binary.clone(), contours, modes[m], cv::CHAIN_APPROX_SIMPLE);
            for (const auto& c : contours) {
                const cv::Point2f centre = cv::minAreaRect(c).center;
                borders[m].push_back({cv::contourArea(c), centre.x, centre.y});
            }
            std::sort(borders[m].begin(), borders[m].end());
        }
        EXPECT_GT(borders[0].size(), 10u);
        EXPECT_EQ(borders[0], borders[1]);
    }
}

}  // namespace
