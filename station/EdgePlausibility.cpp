#include "station/EdgePlausibility.h"

#include <cmath>
#include <cstdio>
#include <string>

namespace talonvireo {
namespace station {

namespace {
bool aboveOne(double sfr, double snr) {
    const double allowance =
        kSfrExcessMargin + (std::isfinite(snr) && snr > 0.0 ? 3.0 * kSfrNoisePerSnr / snr : 0.0);
    return std::isfinite(sfr) && sfr > 1.0 + allowance;
}

std::string percent(double share) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f %%", 100.0 * share);
    return text;
}
}  // namespace

void flagImplausibleEdges(FrameReport& report, const PlausibilityOptions& options) {
    int clipped = 0, offDesign = 0;
    for (EdgeRow& row : report.rows) {
        row.flags.clear();
        if (row.state != EdgeState::kMeasured) {
            continue;
        }
        if (row.clippedShare > kClippedShareLimit) {
            ++clipped;
            if (!options.acceptClipped) {
                row.flags.push_back("clipped");
            }
        }
        if (row.designDistance > kDesignDistanceLimitPx) {
            ++offDesign;
            row.flags.push_back("off the design");
        }
        if (aboveOne(row.measured.sfrQuarterNyquist, row.snr) ||
            aboveOne(row.measured.sfrHalfNyquist, row.snr)) {
            row.flags.push_back("SFR above 1");
        }
        if (row.contrast < options.minContrast) {
            row.flags.push_back("low contrast");
        }
        if (row.snr < kMinSnr) {
            row.flags.push_back("noisy");
        }
    }
    if (clipped > 0) {
        report.warnings.push_back(
            std::to_string(clipped) + " edges are clipped (" + percent(report.clippedShare) +
            " of the transition samples at or above the white level " +
            std::to_string(report.whiteLevel) + "): the frame is over-exposed" +
            (options.acceptClipped ? ", accepted as asked" : ""));
    }
    if (offDesign > 0) {
        report.warnings.push_back(std::to_string(offDesign) +
                                  " edges were found off the chart design (more than " +
                                  std::to_string(static_cast<int>(kDesignDistanceLimitPx)) +
                                  " px): something covers them or the chart is misplaced");
    }
}

}  // namespace station
}  // namespace talonvireo
