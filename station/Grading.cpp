#include "station/Grading.h"

#include <cmath>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "station/PixelPitch.h"
#include "talonvireo/MemberTable.h"

namespace talonvireo {
namespace station {

namespace {
constexpr const char* kUnzoned = "unzoned";

// The first zone whose max_height the height does not exceed; nullptr beyond them all, or
// for an edge without a position.
const ZoneLimits* zoneOf(const Limits& limits, double heightPercent) {
    for (const ZoneLimits& z : limits.zones) {
        if (heightPercent <= z.maxHeight) {
            return &z;
        }
    }
    return nullptr;
}

FigureLimits limitsFor(const Limits& limits, const EdgeRow& row, const ZoneLimits* zone) {
    FigureLimits f;
    if (zone != nullptr) {
        f = zone->figures;
        if (row.field.orientation == "tangential") {
            f = f.overriddenBy(zone->tangential);
        } else if (row.field.orientation == "sagittal") {
            f = f.overriddenBy(zone->sagittal);
        }
    }
    for (const SlotLimits& slot : limits.slots) {
        if (slot.index == row.index) {
            f = f.overriddenBy(slot.figures);
        }
    }
    return f;
}

// "" when `value` meets `minimum`, else what failed.
std::string check(const char* name, double value, const std::optional<double>& minimum) {
    if (!minimum) {
        return "";
    }
    char text[96];
    if (!std::isfinite(value)) {
        std::snprintf(text, sizeof text, "%s not measured (minimum %.4g)", name, *minimum);
        return text;
    }
    if (value >= *minimum) {
        return "";
    }
    std::snprintf(text, sizeof text, "%s %.4f < %.4g", name, value, *minimum);
    return text;
}

// The limits must fit the report before any row is graded; a report of no known member
// (a test's, a summary's) has no slot count to hold them to.
void checkApplies(const FrameReport& report, const Limits& limits) {
    checkLimitUnits(limits, report.pixelPitchUm);
    if (const MemberInfo* member = ::talonvireo::findMember(report.member.c_str())) {
        checkLimitSlots(limits, report.member, member->slots);
    }
}

// What the zones made of the frame: a zone no edge fell into, edges beyond the last zone.
void warnAboutZones(FrameReport& report, const Limits& limits) {
    std::vector<int> inZone(limits.zones.size(), 0);
    int unzoned = 0;
    for (const EdgeRow& row : report.rows) {
        if (!std::isfinite(row.field.heightPercent)) {
            continue;  // not located: its state fails it, wherever it would have been
        }
        const ZoneLimits* zone = zoneOf(limits, row.field.heightPercent);
        if (zone == nullptr) {
            ++unzoned;
        } else {
            ++inZone[static_cast<std::size_t>(zone - limits.zones.data())];
        }
    }
    char text[320];
    for (std::size_t i = 0; i < limits.zones.size(); ++i) {
        if (inZone[i] == 0) {
            std::snprintf(text, sizeof text,
                          "limits %s: no edge falls into zone '%s' (image height %.4g to %.4g %%): "
                          "its limits grade nothing",
                          limits.path.c_str(), limits.zones[i].name.c_str(),
                          i == 0 ? 0.0 : limits.zones[i - 1].maxHeight, limits.zones[i].maxHeight);
            report.warnings.push_back(text);
        }
    }
    if (unzoned > 0) {
        std::snprintf(text, sizeof text,
                      "limits %s: %d edge%s beyond the last zone ('%s', max_height %.4g %%): "
                      "unzoned, graded by their [[slot]] limits only",
                      limits.path.c_str(), unzoned, unzoned == 1 ? " lies" : "s lie",
                      limits.zones.back().name.c_str(), limits.zones.back().maxHeight);
        report.warnings.push_back(text);
    }
}
}  // namespace

void gradeReport(FrameReport& report, const Limits& limits) {
    checkApplies(report, limits);
    report.limitsPath = limits.path;
    report.hasLimit = true;
    const double nan = std::nan("");
    for (EdgeRow& row : report.rows) {
        const ZoneLimits* zone = zoneOf(limits, row.field.heightPercent);
        const FigureLimits f = limitsFor(limits, row, zone);
        row.zone = zone != nullptr ? zone->name : kUnzoned;
        row.failedLimit.clear();
        row.failedFigure.clear();
        const double lpPerMm =
            report.hasPitch() ? linePairsPerMm(row.mtf50, report.pixelPitchUm) : nan;
        const double lwPerPh =
            report.hasPitch() ? lineWidthsPerHeight(row.mtf50, report.height) : nan;
        const std::pair<const char*, std::string> checks[] = {
            {"sfr_quarter_nyquist",
             check("sfr_quarter_nyquist", row.measured.sfrQuarterNyquist, f.sfrQuarterNyquist)},
            {"sfr_half_nyquist",
             check("sfr_half_nyquist", row.measured.sfrHalfNyquist, f.sfrHalfNyquist)},
            {"sfr_custom",
             check("sfr_custom", report.hasCustom() ? row.measured.sfrCustom : nan, f.sfrCustom)},
            {"mtf50", check("mtf50", row.mtf50, f.mtf50)},
            {"mtf50_lp_per_mm", check("mtf50_lp_per_mm", lpPerMm, f.mtf50LpPerMm)},
            {"mtf50_lw_per_ph", check("mtf50_lw_per_ph", lwPerPh, f.mtf50LwPerPh)}};
        for (const auto& [figure, failed] : checks) {
            if (!failed.empty() && row.failedLimit.empty()) {
                row.failedLimit = failed + " (" +
                                  (zone != nullptr ? "zone " + zone->name : kUnzoned) + ", " +
                                  row.field.orientation + ")";
                row.failedFigure = figure;
            }
        }
        row.pass = row.failedLimit.empty();
    }
    warnAboutZones(report, limits);
}

void failUnmeasuredAndFlagged(FrameReport& report) {
    for (EdgeRow& row : report.rows) {
        if (row.state != EdgeState::kMeasured) {
            row.pass = false;
            row.failedLimit = row.stateText();
            row.failedFigure.clear();
        } else if (!row.flags.empty()) {
            row.pass = false;
            row.failedLimit = row.flags.front();
            row.failedFigure.clear();
        }
    }
}

}  // namespace station
}  // namespace talonvireo
