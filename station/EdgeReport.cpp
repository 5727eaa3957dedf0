#include "station/EdgeReport.h"

#include "station/ChartTable.h"
#include "station/CsvField.h"
#include "station/EdgeColumns.h"
#include "station/PixelPitch.h"

#include <algorithm>
#include <cmath>

#include <opencv2/imgproc.hpp>

namespace talonvireo {
namespace station {

namespace {

const char* verdict(const FrameReport& report, const EdgeRow& row) {
    return !report.hasLimit ? "" : report.passes(row) ? "pass" : "FAIL";
}
}  // namespace

int FrameReport::failures() const {
    int n = 0;
    for (const EdgeRow& row : rows) {
        n += passes(row) ? 0 : 1;
    }
    return n;
}

const char* edgeStateName(EdgeState state) {
    switch (state) {
        case EdgeState::kMeasured:
            return "measured";
        case EdgeState::kNotLocated:
            return "not located";
        case EdgeState::kOffFrame:
            return "off the frame";
        case EdgeState::kRefused:
            return "refused by the SFR";
    }
    return "measured";
}

std::string EdgeRow::stateText() const {
    std::string text = chart ? chartEdgeStateName(chart->state) : edgeStateName(state);
    if (state != EdgeState::kRefused) {
        return text;
    }
    switch (sfrStatus) {
        case -2:
            return text + ": edge contrast below 20 %";
        case -3:
            return text + ": edge steeper than about 51 degrees";
        case -4:
            return text + ": edge aligned with the pixel grid";
        default:
            return text + ": region not measurable (status " + std::to_string(sfrStatus) + ")";
    }
}

namespace {
bool located(const EdgeRow& row) {
    return row.state != EdgeState::kNotLocated;
}

// The partial report's closing line: how many edges were measured and what became of the rest.
std::string partialSummary(const FrameReport& report) {
    int count[4] = {};
    for (const EdgeRow& row : report.rows) {
        ++count[static_cast<int>(row.state)];
    }
    char line[160];
    std::snprintf(line, sizeof line,
                  "%d of %zu edges measured region by region; %d not located, %d off the frame, "
                  "%d refused by the SFR",
                  count[0], report.rows.size(), count[1], count[2], count[3]);
    return line;
}
}  // namespace

cv::Point2d EdgeRow::place() const {
    return chart ? cv::Point2d(chart->x, chart->y) : cv::Point2d(centre.x, centre.y);
}

double EdgeRow::centreError() const {
    return std::hypot(measured.x - truth.centre.x, measured.y - truth.centre.y);
}

void printWarnings(std::FILE* out, const std::vector<std::string>& warnings) {
    for (const std::string& w : warnings) {
        std::fprintf(out, "warning: %s\n", w.c_str());
    }
}

void printFigure(std::FILE* out, double v, int decimals) {
    if (std::isfinite(v)) {
        std::fprintf(out, " %8.*f", decimals, v);
    } else {
        std::fprintf(out, " %8s", "-");
    }
}

void printGradeSummary(std::FILE* out, const FrameReport& report) {
    if (report.hasLimit && report.limitsPath.empty()) {
        std::fprintf(out, "%d of %zu edges below SFR N/4 %.3f\n", report.failures(),
                     report.rows.size(), report.minSfr);
    } else if (report.hasLimit) {
        std::fprintf(out, "%d of %zu edges fail the limits in %s: frame %s\n", report.failures(),
                     report.rows.size(), report.limitsPath.c_str(),
                     report.failures() == 0 ? "PASSES" : "FAILS");
    }
}

void printTable(std::FILE* out, const FrameReport& report) {
    if (report.isChart()) {
        printChartTable(out, report);
        return;
    }
    if (report.partial()) {
        std::fprintf(out,
                     "PARTIAL: %s failed on this frame (%s; exit status %d). The edges below "
                     "were measured region by region: not the member's verdict.\n",
                     report.member.c_str(), report.memberFailure.c_str(),
                     static_cast<int>(report.memberCause));
    }
    std::fprintf(out, "%s on %d x %d: %zu edges in %.1f ms (roiSize %d, markSearchSize %d",
                 report.member.c_str(), report.width, report.height, report.rows.size(),
                 report.milliseconds, report.param.roiSize, report.param.markSearchSize);
    std::fprintf(out, report.hasCustom() ? ", custom = Nyquist/%g)\n" : ")\n",
                 static_cast<double>(report.param.freqDivisor));
    if (std::isfinite(report.fitResidual)) {
        std::fprintf(out, "centres fit the %s chart within %.2f px (rms)\n", report.project.c_str(),
                     report.fitResidual);
    }
    if (report.hasPitch()) {
        std::fprintf(out,
                     "pixel pitch %.3g um: Nyquist/4 = %.1f lp/mm, Nyquist/2 = %.1f lp/mm; "
                     "picture height %d px\n",
                     report.pixelPitchUm, linePairsPerMm(0.125, report.pixelPitchUm),
                     linePairsPerMm(0.25, report.pixelPitchUm), report.height);
    }
    std::fprintf(out, "%5s %11s %4s %8s %8s", "edge", "centre", "side", "SFR N/4", "SFR N/2");
    if (report.hasCustom()) {
        std::fprintf(out, " %8s", "custom");
    }
    if (report.hasMtf50) {
        std::fprintf(out, " %8s", "MTF50");
        if (report.hasPitch()) {
            std::fprintf(out, " %8s %8s", "lp/mm", "LW/PH");
        }
    }
    if (report.hasPrecise) {
        std::fprintf(out, " | %8s %8s %8s", "P N/4", "P N/2", "P MTF50");
        if (report.hasPitch()) {
            std::fprintf(out, " %8s", "lp/mm");
        }
    }
    if (report.hasPlanes) {
        std::fprintf(out, " | %8s %8s %8s %8s", "R MTF50", "Gr MTF50", "Gb MTF50", "B MTF50");
    }
    if (report.hasTruth()) {
        std::fprintf(out, " | %8s %8s %8s %8s", "true N/4", "true N/2", "angle", "off px");
    }
    std::fprintf(out, " | %7s %6s %-10s", "height%", "azim", "facing");
    if (report.hasLimit) {
        std::fprintf(out, " %s", "limit");
    }
    bool anyFlag = false;
    for (const EdgeRow& row : report.rows) {
        anyFlag = anyFlag || !row.flags.empty();
    }
    if (report.partial()) {
        std::fprintf(out, " %s", "state");
    }
    std::fprintf(out, anyFlag ? " %s\n" : "\n", "flags");
    for (const EdgeRow& row : report.rows) {
        const SFREdgeResult& m = row.measured;
        if (located(row)) {
            std::fprintf(out, "%5d %5d,%-5d %4d", row.index, m.x, m.y, row.side);
        } else {
            std::fprintf(out, "%5d %11s %4d", row.index, "-", row.side);
        }
        printFigure(out, m.sfrQuarterNyquist);
        printFigure(out, m.sfrHalfNyquist);
        if (report.hasCustom()) {
            printFigure(out, m.sfrCustom);
        }
        if (report.hasMtf50) {
            printFigure(out, row.mtf50);
            if (report.hasPitch()) {
                printFigure(out, linePairsPerMm(row.mtf50, report.pixelPitchUm), 1);
                printFigure(out, lineWidthsPerHeight(row.mtf50, report.height), 0);
            }
        }
        if (report.hasPrecise) {
            std::fprintf(out, " |");
            for (double v :
                 {row.precise.sfrQuarterNyquist, row.precise.sfrHalfNyquist, row.precise.mtf50}) {
                printFigure(out, v);
            }
            if (report.hasPitch()) {
                printFigure(out, linePairsPerMm(row.precise.mtf50, report.pixelPitchUm), 1);
            }
        }
        if (report.hasPlanes) {
            std::fprintf(out, " |");
            for (const CurveFigures& plane : row.planes) {
                printFigure(out, plane.mtf50);
            }
        }
        if (row.hasTruth) {
            std::fprintf(out, " | %8.4f %8.4f %8.2f %8.2f", row.truth.sfrQuarter, row.truth.sfrHalf,
                         row.truth.angleDeg, row.centreError());
        }
        std::fprintf(out, " | %7.1f %6.1f %-10s", row.field.heightPercent, row.field.azimuthDeg,
                     row.field.orientation.c_str());
        if (report.hasLimit) {
            std::fprintf(out, " %s", verdict(report, row));
            // An edge not measured fails for its state, which the last column gives.
            // A flagged edge's flags have their own column.
            if (!row.failedLimit.empty() && row.state == EdgeState::kMeasured &&
                row.flags.empty()) {
                std::fprintf(out, ": %s", row.failedLimit.c_str());
            }
        }
        if (report.partial()) {
            std::fprintf(out, " %s", row.stateText().c_str());
        }
        if (anyFlag) {
            std::fprintf(out, " %s", joinWarnings(row.flags).c_str());
        }
        std::fprintf(out, "\n");
    }
    if (report.partial()) {
        std::fprintf(out, "%s\n", partialSummary(report).c_str());
    }
    printGradeSummary(out, report);
    if (report.hasMtf50) {
        std::fprintf(out,
                     "MTF50: the member's method on its region (cycles per pixel, its axis)%s%s\n",
                     report.hasPrecise ? "; P: the precise method on the same region, frequencies "
                                         "across the edge"
                                       : "",
                     report.hasPlanes ? "; R .. B: each raw colour plane under it (precise)" : "");
    }
}

namespace {
// One cell as a CSV field: empty where the value does not exist.
std::string csvCell(const Cell& cell) {
    char text[64];
    if (const auto* i = std::get_if<long long>(&cell)) {
        std::snprintf(text, sizeof text, "%lld", *i);
        return text;
    }
    if (const auto* d = std::get_if<double>(&cell)) {
        std::snprintf(text, sizeof text, "%.6f", *d);
        return text;
    }
    if (const auto* t = std::get_if<std::string>(&cell)) {
        return csvField(*t);
    }
    if (const auto* b = std::get_if<bool>(&cell)) {
        return *b ? "1" : "0";
    }
    return "";
}

Json jsonCell(const Cell& cell) {
    if (const auto* i = std::get_if<long long>(&cell)) {
        return *i;
    }
    if (const auto* d = std::get_if<double>(&cell)) {
        return figure(*d);
    }
    if (const auto* t = std::get_if<std::string>(&cell)) {
        return *t;
    }
    if (const auto* b = std::get_if<bool>(&cell)) {
        return *b;
    }
    return Json();
}
}  // namespace

std::string csvHeader(const FrameReport& report) {
    std::string h;
    for (const EdgeColumn* c : columnsOf(report)) {
        h += (h.empty() ? "" : ",") + std::string(c->name);
    }
    return h + ",warnings";
}

void printCsv(std::FILE* out, const FrameReport& report) {
    std::fprintf(out, "%s\n", csvHeader(report).c_str());
    for (const EdgeRow& row : report.rows) {
        printCsvRow(out, report, row);
    }
}

void printCsvRow(std::FILE* out, const FrameReport& report, const EdgeRow& row) {
    std::string line;
    for (const EdgeColumn* c : columnsOf(report)) {
        line += (line.empty() ? "" : ",") + csvCell(c->value(report, row));
    }
    line += "," + csvField(joinWarnings(report.warnings));
    std::fprintf(out, "%s\n", line.c_str());
}

Json edgeJson(const FrameReport& report, const EdgeRow& row) {
    Json e;
    for (const EdgeColumn* c : columnsOf(report)) {
        e[c->name] = jsonCell(c->value(report, row));
    }
    return e;
}

Json frameJson(const FrameReport& report) {
    Json doc = documentHead("frame", report.input);
    // A chart measured as such names no member; its chart is "auto" or the description's.
    doc["member"] = report.isChart() ? Json() : Json(report.member);
    doc["chart"] = report.isChart() ? report.chart : report.project;
    if (report.isChart()) {
        doc["chart_method"] = report.chartMethod == SfrMethod::kClassic ? "classic" : "precise";
        if (report.registeredShapes > 0) {
            doc["registration"] = {{"matched_shapes", report.registeredShapes},
                                   {"residual_px", figure(report.registrationResidual)},
                                   {"k1", figure(report.distortionK1)}};
        }
    }
    doc["width"] = report.width;
    doc["height"] = report.height;
    doc["roi_size"] = report.param.roiSize;
    doc["mark_search_size"] = report.param.markSearchSize;
    if (report.hasCustom()) {
        doc["freq_divisor"] = figure(report.param.freqDivisor);
    }
    doc["milliseconds"] = report.milliseconds;
    doc["chart_fit_residual_px"] = figure(report.fitResidual);
    doc["design_consensus"] = report.designConsensus;
    doc["white_level"] = report.whiteLevel;
    doc["largest_sample"] = report.largestSample;
    doc["clipped_share"] = figure(report.clippedShare);
    if (report.partial()) {
        doc["partial"] = {{"member_failure", report.memberFailure},
                          {"member_exit_status", static_cast<int>(report.memberCause)},
                          {"verdict", "not the member's: edges measured region by region"},
                          {"summary", partialSummary(report)}};
    }
    if (report.hasPrecise || (report.isChart() && report.hasPlanes)) {
        doc["method"] = report.hasPlanes ? "precise, per channel raw" : "precise";
    }
    if (!report.limitsPath.empty()) {
        doc["limits"] = report.limitsPath;
    }
    if (report.hasPitch()) {
        doc["pixel_pitch_um"] = report.pixelPitchUm;
        doc["nyquist_lp_per_mm"] = linePairsPerMm(0.5, report.pixelPitchUm);
        doc["picture_height_px"] = report.height;
    }
    if (report.hasLimit) {
        if (report.limitsPath.empty()) {
            doc["min_sfr"] = report.minSfr;
        }
        doc["failures"] = report.failures();
        doc["pass"] = !report.partial() && report.failures() == 0;
    }
    doc["warnings"] = report.warnings;
    Json edges = Json::array();
    for (const EdgeRow& row : report.rows) {
        edges.push_back(edgeJson(report, row));
    }
    doc["edges"] = edges;
    return doc;
}

cv::Mat shrinkTo(const cv::Mat& picture, int width) {
    if (width <= 0 || width >= picture.cols) {
        return picture;
    }
    const int height = std::max(
        1, static_cast<int>(std::lround(static_cast<double>(picture.rows) * width / picture.cols)));
    cv::Mat out;
    cv::resize(picture, out, cv::Size(width, height), 0, 0, cv::INTER_AREA);
    return out;
}

cv::Mat greyView(const cv::Mat& raw16, int bits) {
    cv::Mat mosaic;
    raw16.convertTo(mosaic, CV_8U, 255.0 / (std::ldexp(1.0, bits) - 1.0));
    cv::Mat grey;
    cv::cvtColor(mosaic, grey, cv::COLOR_BayerRG2GRAY);
    return grey;
}

}  // namespace station
}  // namespace talonvireo
