#include "station/Grading.h"

#include <cmath>
#include <cstdio>
#include <utility>

namespace talonvireo {
namespace station {

namespace {
const ZoneLimits& zoneOf(const Limits& limits, double heightPercent) {
    for (const ZoneLimits& z : limits.zones) {
        if (heightPercent <= z.maxHeight) {
            return z;
        }
    }
    return limits.zones.back();
}

FigureLimits limitsFor(const Limits& limits, const EdgeRow& row, const ZoneLimits& zone) {
    FigureLimits f = zone.figures;
    if (row.field.orientation == "tangential") {
        f = f.overriddenBy(zone.tangential);
    } else if (row.field.orientation == "sagittal") {
        f = f.overriddenBy(zone.sagittal);
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
}  // namespace

void gradeReport(FrameReport& report, const Limits& limits) {
    report.limitsPath = limits.path;
    report.hasLimit = true;
    for (EdgeRow& row : report.rows) {
        const ZoneLimits& zone = zoneOf(limits, row.field.heightPercent);
        const FigureLimits f = limitsFor(limits, row, zone);
        row.zone = zone.name;
        row.failedLimit.clear();
        row.failedFigure.clear();
        const std::pair<const char*, std::string> checks[] = {
            {"sfr_quarter_nyquist",
             check("sfr_quarter_nyquist", row.measured.sfrQuarterNyquist, f.sfrQuarterNyquist)},
            {"sfr_half_nyquist",
             check("sfr_half_nyquist", row.measured.sfrHalfNyquist, f.sfrHalfNyquist)},
            {"sfr_custom",
             check("sfr_custom", report.hasCustom() ? row.measured.sfrCustom : std::nan(""),
                   f.sfrCustom)},
            {"mtf50", check("mtf50", row.mtf50, f.mtf50)}};
        for (const auto& [figure, failed] : checks) {
            if (!failed.empty() && row.failedLimit.empty()) {
                row.failedLimit =
                    failed + " (zone " + zone.name + ", " + row.field.orientation + ")";
                row.failedFigure = figure;
            }
        }
        row.pass = row.failedLimit.empty();
    }
}

}  // namespace station
}  // namespace talonvireo
