// Limits files, field positions and the grading of a frame's edges.
#include <gtest/gtest.h>

#include <cmath>
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
                   row(6, 95.0, "tangential", 0.79, 0.4)};       // beyond every zone: the last
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
    EXPECT_FALSE(report.passes(report.rows[5]));
    EXPECT_EQ(report.rows[5].zone, "0.7F");
    EXPECT_EQ(report.failures(), 4);
}

}  // namespace
