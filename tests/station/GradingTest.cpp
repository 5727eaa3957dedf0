// Limits files, field positions and the grading of a frame's edges.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <string>

#include "station/Failure.h"
#include "station/FieldPosition.h"
#include "station/Grading.h"
#include "station/Limits.h"

namespace {
using namespace talonvireo::station;

const std::string kLimits = TALONVIREO_LIMITS_DIR;

TEST(FieldPosition, HeightAzimuthAndOrientationFollowTheFrameCentre) {
    // 4001 x 3001: the centre is (2000, 1500), the half-diagonal 2500.5.
    const FieldPosition right = fieldPosition(3000.0, 1500.0, 4001, 3001, 0.0);
    EXPECT_NEAR(right.heightPercent, 100.0 * 1000.0 / (0.5 * std::hypot(4001, 3001)), 1e-9);
    EXPECT_NEAR(right.azimuthDeg, 0.0, 1e-9);
    EXPECT_EQ(right.orientation, "tangential");  // normal along the radius
    EXPECT_EQ(fieldPosition(3000.0, 1500.0, 4001, 3001, 90.0).orientation, "sagittal");
    const FieldPosition up = fieldPosition(2000.0, 500.0, 4001, 3001, 80.0);
    EXPECT_NEAR(up.azimuthDeg, 90.0, 1e-9);  // image rows grow downwards; azimuth counts up
    EXPECT_EQ(up.orientation, "tangential");
    EXPECT_EQ(fieldPosition(2000.0, 1500.0, 4001, 3001, 0.0).orientation, "none");
    EXPECT_NEAR(fieldPosition(1000.0, 2500.0, 4001, 3001, 45.0).azimuthDeg, 225.0, 1e-9);
}

TEST(Limits, ReadsZonesOrientationsAndSlots) {
    const Limits limits = readLimits(kLimits + "/hlx6c.toml");
    ASSERT_EQ(limits.zones.size(), 2u);
    EXPECT_EQ(limits.zones[0].name, "centre");
    EXPECT_DOUBLE_EQ(limits.zones[0].maxHeight, 20.0);
    EXPECT_DOUBLE_EQ(*limits.zones[0].figures.sfrQuarterNyquist, 0.80);
    EXPECT_DOUBLE_EQ(*limits.zones[0].figures.mtf50, 0.2);
    EXPECT_DOUBLE_EQ(*limits.zones[1].sagittal.sfrQuarterNyquist, 0.99);
    EXPECT_FALSE(limits.zones[1].tangential.sfrQuarterNyquist);
    ASSERT_EQ(limits.slots.size(), 1u);
    EXPECT_EQ(limits.slots[0].index, 3);
    EXPECT_TRUE(limits.needsMtf50());
    EXPECT_FALSE(limits.needsCustom());
}

TEST(Limits, RefusalsNameTheLineAndTheKey) {
    const auto message = [](const std::string& file) {
        try {
            readLimits(kLimits + "/" + file);
        } catch (const Failure& e) {
            return std::string(e.what());
        }
        return std::string("accepted");
    };
    EXPECT_NE(message("syntax-error.toml").find("syntax-error.toml:4:"), std::string::npos);
    EXPECT_NE(message("unknown-key.toml").find(":5: unknown key 'sfr_quater_nyquist'"),
              std::string::npos);
    EXPECT_NE(message("out-of-range.toml").find(":4: 'mtf50' must be a number"), std::string::npos);
    EXPECT_NE(message("zones-out-of-order.toml").find("zones must grow"), std::string::npos);
    EXPECT_NE(message("missing.toml").find("cannot read limits"), std::string::npos);
}

EdgeRow row(int index, double height, const char* orientation, double n4, double n2,
            double mtf50 = std::nan("")) {
    EdgeRow r;
    r.index = index;
    r.field.heightPercent = height;
    r.field.orientation = orientation;
    r.measured.sfrQuarterNyquist = static_cast<float>(n4);
    r.measured.sfrHalfNyquist = static_cast<float>(n2);
    r.mtf50 = mtf50;
    return r;
}

TEST(Grading, ZonesOrientationsAndSlotsDecideInThatOrder) {
    const Limits limits = readLimits(kLimits + "/hlx6c.toml");
    FrameReport report;
    report.rows = {row(0, 10.0, "tangential", 0.85, 0.4, 0.25),  // centre: passes
                   row(1, 10.0, "sagittal", 0.85, 0.4),          // centre, MTF50 missing
                   row(3, 10.0, "tangential", 0.85, 0.4, 0.25),  // its slot asks N/2 >= 0.5
                   row(4, 50.0, "tangential", 0.85, 0.4),        // 0.7F tangential: 0.80
                   row(5, 50.0, "sagittal", 0.85, 0.4),          // 0.7F sagittal: 0.99
                   row(6, 95.0, "tangential", 0.79, 0.4)};       // beyond every zone: unzoned
    gradeReport(report, limits);
    EXPECT_TRUE(report.passes(report.rows[0]));
    EXPECT_EQ(report.rows[0].zone, "centre");
    EXPECT_FALSE(report.passes(report.rows[1]));
    EXPECT_NE(report.rows[1].failedLimit.find("mtf50 not measured"), std::string::npos);
    EXPECT_FALSE(report.passes(report.rows[2]));
    EXPECT_NE(report.rows[2].failedLimit.find("sfr_half_nyquist"), std::string::npos);
    EXPECT_TRUE(report.passes(report.rows[3]));
    EXPECT_EQ(report.rows[3].zone, "0.7F");
    EXPECT_FALSE(report.passes(report.rows[4]));
    EXPECT_NE(report.rows[4].failedLimit.find("< 0.99 (zone 0.7F, sagittal)"), std::string::npos);
    // Beyond the last zone (70 %) no zone's limit applies: 0.79 is below 0.7F's 0.80, yet the
    // edge passes, having no slot limit either.
    EXPECT_TRUE(report.passes(report.rows[5]));
    EXPECT_EQ(report.rows[5].zone, "unzoned");
    EXPECT_EQ(report.failures(), 3);
}

std::string refusalOf(const std::function<void()>& f) {
    try {
        f();
    } catch (const Failure& e) {
        EXPECT_EQ(e.cause(), Cause::BadInput);
        return e.what();
    }
    return "accepted";
}

TEST(Limits, RefusesASlotTheMembersChartDoesNotHaveNamingTheLine) {
    const Limits limits = readLimits(kLimits + "/slot-beyond-chart.toml");
    FrameReport report;
    report.member = "talonvireoSFR_raw10_HLX6C";  // 52 slots
    report.rows = {row(0, 10.0, "tangential", 0.85, 0.4)};
    const std::string refused = refusalOf([&] { gradeReport(report, limits); });
    EXPECT_NE(refused.find("slot-beyond-chart.toml:8: [[slot]] edge 60 is not a slot of "
                           "talonvireoSFR_raw10_HLX6C's chart (0 to 51)"),
              std::string::npos)
        << refused;
    EXPECT_NE(refusalOf([&] { checkLimitSlots(limits, "m", 60); }).find("edge 60"),
              std::string::npos);
    // The K31R22BX chart has 68 slots: slot 60 is one of them.
    report.member = "talonvireoSFR/K31R22BX";
    EXPECT_EQ(refusalOf([&] { gradeReport(report, limits); }), "accepted");
    EXPECT_EQ(refusalOf([&] { checkLimitSlots(limits, "m", 68); }), "accepted");
}

TEST(Grading, EdgesBeyondTheLastZoneAreUnzonedJudgedByTheirSlotAndCounted) {
    Limits limits;
    limits.path = "two.toml";
    limits.zones = {{"centre", 30, {}, {}, {}}, {"middle", 60, {}, {}, {}}};
    limits.zones[0].figures.sfrQuarterNyquist = 0.5;
    limits.zones[1].figures.sfrQuarterNyquist = 0.5;
    limits.slots = {{8, 0, {}}};
    limits.slots[0].figures.sfrHalfNyquist = 0.5;
    FrameReport report;
    report.warnings = {"an earlier warning"};
    report.rows = {row(0, 10.0, "tangential", 0.6, 0.4), row(1, 45.0, "sagittal", 0.6, 0.4),
                   row(7, 80.0, "tangential", 0.1, 0.1),  // unzoned, no slot limit: passes
                   row(8, 90.0, "sagittal", 0.1, 0.3)};   // unzoned, its slot fails it
    gradeReport(report, limits);
    EXPECT_EQ(report.rows[2].zone, "unzoned");
    EXPECT_TRUE(report.passes(report.rows[2]));
    EXPECT_EQ(report.rows[3].zone, "unzoned");
    EXPECT_FALSE(report.passes(report.rows[3]));
    EXPECT_EQ(report.rows[3].failedLimit, "sfr_half_nyquist 0.3000 < 0.5 (unzoned, sagittal)");
    ASSERT_EQ(report.warnings.size(), 2u);
    EXPECT_EQ(report.warnings[0], "an earlier warning");
    EXPECT_EQ(report.warnings[1],
              "limits two.toml: 2 edges lie beyond the last zone ('middle', max_height 60 %): "
              "unzoned, graded by their [[slot]] limits only");
}

TEST(Grading, WarnsAboutAZoneNoEdgeFallsInto) {
    const Limits limits = readLimits(kLimits + "/hlx6c.toml");
    FrameReport report;
    report.rows = {row(0, 50.0, "tangential", 0.9, 0.6), row(1, 60.0, "sagittal", 0.9, 0.6)};
    gradeReport(report, limits);
    ASSERT_EQ(report.warnings.size(), 1u);
    EXPECT_NE(report.warnings[0].find("no edge falls into zone 'centre' (image height 0 to 20 %)"),
              std::string::npos)
        << report.warnings[0];
}

TEST(Limits, ReadsMtf50InLinePairsPerMmAndLineWidthsPerPictureHeight) {
    const Limits limits = readLimits(kLimits + "/sensor-units.toml");
    EXPECT_DOUBLE_EQ(*limits.zones[0].figures.mtf50LpPerMm, 80.0);
    EXPECT_DOUBLE_EQ(*limits.zones[1].figures.mtf50LwPerPh, 1200.0);
    EXPECT_TRUE(limits.needsMtf50());
    EXPECT_TRUE(limits.needsPitch());
    EXPECT_EQ(limits.pitchKey, "mtf50_lp_per_mm");
    EXPECT_EQ(limits.pitchLine, 5);
}

TEST(Limits, RefusesSensorUnitsWithoutAPixelPitch) {
    const Limits limits = readLimits(kLimits + "/sensor-units.toml");
    FrameReport report;
    report.rows = {row(0, 10.0, "tangential", 0.9, 0.6, 0.2)};
    const std::string refused = refusalOf([&] { gradeReport(report, limits); });
    EXPECT_NE(refused.find("sensor-units.toml:5: 'mtf50_lp_per_mm' needs a pixel pitch"),
              std::string::npos)
        << refused;
    EXPECT_EQ(refusalOf([&] { checkLimitUnits(limits, 1.12); }), "accepted");
    EXPECT_EQ(
        refusalOf([&] { checkLimitUnits(readLimits(kLimits + "/hlx6c.toml"), std::nan("")); }),
        "accepted");
}

TEST(Grading, GradesMtf50InLinePairsPerMmAndLineWidthsPerPictureHeight) {
    const Limits limits = readLimits(kLimits + "/sensor-units.toml");
    FrameReport report;
    report.height = 3000;
    report.pixelPitchUm = 1.0;  // 0.1 cycles per pixel = 100 lp/mm = 600 LW/PH
    report.rows = {row(0, 10.0, "tangential", 0.9, 0.6, 0.1),   // 100 lp/mm >= 80
                   row(1, 20.0, "tangential", 0.9, 0.6, 0.07),  // 70 lp/mm < 80
                   row(2, 50.0, "sagittal", 0.9, 0.6, 0.25),    // 1500 LW/PH >= 1200
                   row(3, 50.0, "sagittal", 0.9, 0.6, 0.15)};   // 900 LW/PH < 1200
    gradeReport(report, limits);
    EXPECT_TRUE(report.passes(report.rows[0]));
    EXPECT_FALSE(report.passes(report.rows[1]));
    EXPECT_EQ(report.rows[1].failedFigure, "mtf50_lp_per_mm");
    EXPECT_EQ(report.rows[1].failedLimit, "mtf50_lp_per_mm 70.0000 < 80 (zone centre, tangential)");
    EXPECT_TRUE(report.passes(report.rows[2]));
    EXPECT_FALSE(report.passes(report.rows[3]));
    EXPECT_EQ(report.rows[3].failedFigure, "mtf50_lw_per_ph");
    EXPECT_NE(report.rows[3].failedLimit.find("mtf50_lw_per_ph 900.0000 < 1200"),
              std::string::npos);
}

}  // namespace

namespace {
// A slot is named `edge`, as every output names it; files that spell it `index` still read.
TEST(Limits, ReadsASlotByEdgeAndByItsOlderSpelling) {
    const std::string path = ::testing::TempDir() + "/older-slot.toml";
    {
        std::ofstream out(path);
        out << "[[zone]]\nname = \"all\"\nmax_height = 100\n[[slot]]\nindex = 9\n"
               "sfr_half_nyquist = 0.3\n";
    }
    const Limits older = readLimits(path);
    ASSERT_EQ(older.slots.size(), 1u);
    EXPECT_EQ(older.slots[0].index, 9);
    EXPECT_EQ(readLimits(kLimits + "/hlx6c.toml").slots.at(0).index, 3);
}
}  // namespace
