#include "station/ChartTable.h"

#include <cmath>

#include "station/EdgeColumns.h"
#include "station/PixelPitch.h"

namespace talonvireo {
namespace station {

namespace {

void figure(std::FILE* out, double v, int decimals = 4) {
    if (std::isfinite(v)) {
        std::fprintf(out, " %8.*f", decimals, v);
    } else {
        std::fprintf(out, " %8s", "-");
    }
}

int measuredCount(const FrameReport& report) {
    int n = 0;
    for (const EdgeRow& row : report.rows) {
        n += row.state == EdgeState::kMeasured ? 1 : 0;
    }
    return n;
}

}  // namespace

void printChartTable(std::FILE* out, const FrameReport& report) {
    std::fprintf(out, "chart %s on %d x %d: %d of %zu edges measured in %.1f ms\n",
                 report.chart.c_str(), report.width, report.height, measuredCount(report),
                 report.rows.size(), report.milliseconds);
    if (report.registeredShapes > 0) {
        std::fprintf(out,
                     "registered: %d shapes matched, corners within %.3f px (rms), radial "
                     "distortion k1 %+.4f\n",
                     report.registeredShapes, report.registrationResidual, report.distortionK1);
    }
    if (report.hasPitch()) {
        std::fprintf(out, "pixel pitch %.3g um: Nyquist/4 = %.1f lp/mm, Nyquist/2 = %.1f lp/mm\n",
                     report.pixelPitchUm, linePairsPerMm(0.125, report.pixelPitchUm),
                     linePairsPerMm(0.25, report.pixelPitchUm));
    }
    std::fprintf(out, "%5s %-8s %15s %6s %6s %7s %8s %8s", "edge", "name", "centre", "angle",
                 "length", "region", "SFR N/4", "SFR N/2");
    if (report.hasCustom()) {
        std::fprintf(out, " %8s", "custom");
    }
    std::fprintf(out, " %8s", "MTF50");
    if (report.hasPitch()) {
        std::fprintf(out, " %8s", "lp/mm");
    }
    if (report.hasPlanes) {
        std::fprintf(out, " | %8s %8s %8s %8s", "R MTF50", "Gr MTF50", "Gb MTF50", "B MTF50");
    }
    std::fprintf(out, " %6s", "zone");
    if (report.hasLimit) {
        std::fprintf(out, " %s", "limit");
    }
    std::fprintf(out, " %s\n", "state/flags");
    for (const EdgeRow& row : report.rows) {
        const EdgeRow::ChartEdge& c = *row.chart;
        std::fprintf(out, "%5d %-8s", row.index, c.name.c_str());
        if (std::isfinite(c.x)) {
            std::fprintf(out, " %7.1f,%-7.1f", c.x, c.y);
        } else {
            std::fprintf(out, " %15s", "-");
        }
        if (std::isfinite(c.angleDeg)) {
            std::fprintf(out, " %6.1f %6.0f", c.angleDeg, c.lengthPx);
        } else {
            std::fprintf(out, " %6s %6s", "-", "-");
        }
        if (c.region.width > 0) {
            std::fprintf(out, " %3dx%-3d", c.region.width, c.region.height);
        } else {
            std::fprintf(out, " %7s", "-");
        }
        figure(out, row.measured.sfrQuarterNyquist);
        figure(out, row.measured.sfrHalfNyquist);
        if (report.hasCustom()) {
            figure(out, row.measured.sfrCustom);
        }
        figure(out, row.mtf50);
        if (report.hasPitch()) {
            figure(out, linePairsPerMm(row.mtf50, report.pixelPitchUm), 1);
        }
        if (report.hasPlanes) {
            std::fprintf(out, " |");
            for (std::size_t k = 0; k < 4; ++k) {
                figure(out, k < row.planes.size() ? row.planes[k].mtf50 : std::nan(""));
            }
        }
        const std::string zone = !row.zone.empty() ? row.zone : c.zone;
        std::fprintf(out, " %6s", zone.empty() ? "-" : zone.c_str());
        if (report.hasLimit) {
            std::fprintf(out, " %s", report.passes(row) ? "pass" : "FAIL");
            if (!row.failedLimit.empty() && row.state == EdgeState::kMeasured &&
                row.flags.empty()) {
                std::fprintf(out, ": %s", row.failedLimit.c_str());
            }
        }
        std::string note = row.state == EdgeState::kMeasured ? "" : row.stateText();
        if (!row.flags.empty() && row.state == EdgeState::kMeasured) {
            note = joinWarnings(row.flags);
        }
        std::fprintf(out, " %s\n", note.c_str());
    }
    std::fprintf(
        out,
        "SFR and MTF50: the %s method, frequencies in cycles per pixel across the "
        "edge%s\n",
        report.chartMethod == SfrMethod::kClassic ? "classic" : "precise",
        report.hasPlanes ? "; R .. B: each raw colour plane under the region (precise)" : "");
    printGradeSummary(out, report);
}

}  // namespace station
}  // namespace talonvireo
