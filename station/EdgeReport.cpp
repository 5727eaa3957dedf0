#include "station/EdgeReport.h"

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
    std::string text = edgeStateName(state);
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

double EdgeRow::centreError() const {
    return std::hypot(measured.x - truth.centre.x, measured.y - truth.centre.y);
}

void printFigure(std::FILE* out, double v, int decimals) {
    if (std::isfinite(v)) {
        std::fprintf(out, " %8.*f", decimals, v);
    } else {
        std::fprintf(out, " %8s", "-");
    }
}

void printTable(std::FILE* out, const FrameReport& report) {
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
    std::fprintf(out, report.partial() ? " %s\n" : "\n", "state");
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
            if (!row.failedLimit.empty() && row.state == EdgeState::kMeasured) {
                std::fprintf(out, ": %s", row.failedLimit.c_str());
            }
        }
        if (report.partial()) {
            std::fprintf(out, " %s", row.stateText().c_str());
        }
        std::fprintf(out, "\n");
    }
    if (report.partial()) {
        std::fprintf(out, "%s\n", partialSummary(report).c_str());
    }
    if (report.hasLimit && report.limitsPath.empty()) {
        std::fprintf(out, "%d of %zu edges below SFR N/4 %.3f\n", report.failures(),
                     report.rows.size(), report.minSfr);
    } else if (report.hasLimit) {
        std::fprintf(out, "%d of %zu edges fail the limits in %s: frame %s\n", report.failures(),
                     report.rows.size(), report.limitsPath.c_str(),
                     report.failures() == 0 ? "PASSES" : "FAILS");
    }
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
// A CSV field: the figure, or empty where it does not exist.
void printCsvFigure(std::FILE* out, double v, const char* format = ",%.6f") {
    if (std::isfinite(v)) {
        std::fprintf(out, format, v);
    } else {
        std::fprintf(out, ",");
    }
}
}  // namespace

std::string csvHeader(const FrameReport& report) {
    std::string h = "edge,x,y,side,sfr_quarter_nyquist,sfr_half_nyquist";
    h += report.hasCustom() ? ",sfr_custom" : "";
    if (report.hasMtf50) {
        h += report.hasPitch() ? ",mtf50,mtf50_lp_per_mm,mtf50_lw_per_ph" : ",mtf50";
    }
    if (report.hasPrecise) {
        h += ",precise_sfr_quarter_nyquist,precise_sfr_half_nyquist";
        h += report.hasCustom() ? ",precise_sfr_custom" : "";
        h += ",precise_mtf50";
        h += report.hasPitch() ? ",precise_mtf50_lp_per_mm" : "";
    }
    if (report.hasPlanes) {
        for (const std::string plane : {"R", "Gr", "Gb", "B"}) {
            h += ",raw_" + plane + "_sfr_quarter_nyquist,raw_" + plane + "_sfr_half_nyquist,raw_" +
                 plane + "_mtf50";
        }
    }
    h += report.hasTruth() ? ",true_quarter_nyquist,true_half_nyquist,true_x,true_y" : "";
    h += ",height_percent,azimuth_deg,orientation";
    h += report.limitsPath.empty() ? "" : ",zone,failed_limit";
    h += report.hasLimit ? ",pass" : "";
    h += report.partial() ? ",state" : "";
    return h;
}

void printCsv(std::FILE* out, const FrameReport& report) {
    std::fprintf(out, "%s\n", csvHeader(report).c_str());
    for (const EdgeRow& row : report.rows) {
        printCsvRow(out, report, row);
    }
}

void printCsvRow(std::FILE* out, const FrameReport& report, const EdgeRow& row) {
    const SFREdgeResult& m = row.measured;
    std::fprintf(out, "%d,%d,%d,%d", row.index, m.x, m.y, row.side);
    printCsvFigure(out, m.sfrQuarterNyquist);
    printCsvFigure(out, m.sfrHalfNyquist);
    if (report.hasCustom()) {
        printCsvFigure(out, m.sfrCustom);
    }
    if (report.hasMtf50) {
        printCsvFigure(out, row.mtf50);
        if (report.hasPitch()) {
            printCsvFigure(out, linePairsPerMm(row.mtf50, report.pixelPitchUm));
            printCsvFigure(out, lineWidthsPerHeight(row.mtf50, report.height));
        }
    }
    if (report.hasPrecise) {
        printCsvFigure(out, row.precise.sfrQuarterNyquist);
        printCsvFigure(out, row.precise.sfrHalfNyquist);
        if (report.hasCustom()) {
            printCsvFigure(out, row.precise.sfrCustom);
        }
        printCsvFigure(out, row.precise.mtf50);
        if (report.hasPitch()) {
            printCsvFigure(out, linePairsPerMm(row.precise.mtf50, report.pixelPitchUm));
        }
    }
    for (const CurveFigures& plane : row.planes) {
        printCsvFigure(out, plane.sfrQuarterNyquist);
        printCsvFigure(out, plane.sfrHalfNyquist);
        printCsvFigure(out, plane.mtf50);
    }
    if (row.hasTruth) {
        std::fprintf(out, ",%.6f,%.6f,%.3f,%.3f", row.truth.sfrQuarter, row.truth.sfrHalf,
                     row.truth.centre.x, row.truth.centre.y);
    }
    printCsvFigure(out, row.field.heightPercent, ",%.2f");
    printCsvFigure(out, row.field.azimuthDeg, ",%.2f");
    std::fprintf(out, ",%s", row.field.orientation.c_str());
    if (!report.limitsPath.empty()) {
        // Quoted: both may hold commas; neither holds a quote (zone names may not).
        std::fprintf(out, ",\"%s\",\"%s\"", row.zone.c_str(), row.failedLimit.c_str());
    }
    if (report.hasLimit) {
        std::fprintf(out, ",%d", report.passes(row) ? 1 : 0);
    }
    if (report.partial()) {
        std::fprintf(out, ",\"%s\"", row.stateText().c_str());
    }
    std::fprintf(out, "\n");
}

namespace {
Json curveFiguresJson(const CurveFigures& c, bool custom) {
    Json j;
    j["channel"] = c.channel;
    j["status"] = c.status;
    j["sfr_quarter_nyquist"] = figure(c.sfrQuarterNyquist);
    j["sfr_half_nyquist"] = figure(c.sfrHalfNyquist);
    if (custom) {
        j["sfr_custom"] = figure(c.sfrCustom);
    }
    j["mtf50"] = figure(c.mtf50);
    return j;
}
}  // namespace

Json frameJson(const FrameReport& report) {
    Json doc = documentHead("frame", report.input);
    doc["member"] = report.member;
    doc["chart"] = report.project;
    doc["width"] = report.width;
    doc["height"] = report.height;
    doc["roi_size"] = report.param.roiSize;
    doc["mark_search_size"] = report.param.markSearchSize;
    if (report.hasCustom()) {
        doc["freq_divisor"] = figure(report.param.freqDivisor);
    }
    doc["milliseconds"] = report.milliseconds;
    doc["chart_fit_residual_px"] = figure(report.fitResidual);
    if (report.partial()) {
        doc["partial"] = {{"member_failure", report.memberFailure},
                          {"member_exit_status", static_cast<int>(report.memberCause)},
                          {"verdict", "not the member's: edges measured region by region"},
                          {"summary", partialSummary(report)}};
    }
    if (report.hasPrecise) {
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
        doc["min_sfr"] = report.minSfr;
        doc["failures"] = report.failures();
    }
    Json edges = Json::array();
    for (const EdgeRow& row : report.rows) {
        const SFREdgeResult& m = row.measured;
        Json e;
        e["index"] = row.index;
        e["x"] = located(row) ? Json(m.x) : Json();
        e["y"] = located(row) ? Json(m.y) : Json();
        e["side"] = row.side;
        if (report.partial()) {
            e["state"] = edgeStateName(row.state);
            if (row.state == EdgeState::kRefused) {
                e["reason"] = row.stateText();
                e["sfr_status"] = row.sfrStatus;
            }
        }
        e["sfr_quarter_nyquist"] = figure(m.sfrQuarterNyquist);
        e["sfr_half_nyquist"] = figure(m.sfrHalfNyquist);
        if (report.hasCustom()) {
            e["sfr_custom"] = figure(m.sfrCustom);
        }
        if (report.hasMtf50) {
            e["mtf50"] = figure(row.mtf50);
            if (report.hasPitch()) {
                e["mtf50_lp_per_mm"] = figure(linePairsPerMm(row.mtf50, report.pixelPitchUm));
                e["mtf50_lw_per_ph"] = figure(lineWidthsPerHeight(row.mtf50, report.height));
            }
        }
        if (report.hasPrecise) {
            e["precise"] = curveFiguresJson(row.precise, report.hasCustom());
            if (report.hasPitch()) {
                e["precise"]["mtf50_lp_per_mm"] =
                    figure(linePairsPerMm(row.precise.mtf50, report.pixelPitchUm));
            }
        }
        e["field"] = {{"height_percent", figure(row.field.heightPercent)},
                      {"azimuth_deg", figure(row.field.azimuthDeg)},
                      {"orientation", row.field.orientation}};
        if (report.hasPlanes) {
            Json planes = Json::array();
            for (const CurveFigures& plane : row.planes) {
                planes.push_back(curveFiguresJson(plane, report.hasCustom()));
            }
            e["raw_planes"] = planes;
        }
        if (row.hasTruth) {
            e["truth"] = {{"x", row.truth.centre.x},
                          {"y", row.truth.centre.y},
                          {"angle_deg", row.truth.angleDeg},
                          {"sfr_quarter_nyquist", row.truth.sfrQuarter},
                          {"sfr_half_nyquist", row.truth.sfrHalf}};
        }
        if (report.hasLimit) {
            e["pass"] = report.passes(row);
        }
        if (!report.limitsPath.empty()) {
            e["zone"] = row.zone;
            e["failed_limit"] = row.failedLimit.empty() ? Json() : Json(row.failedLimit);
        }
        edges.push_back(e);
    }
    doc["edges"] = edges;
    return doc;
}

cv::Mat drawOverlay(const cv::Mat& grey, const FrameReport& report, int outputWidth) {
    cv::Mat canvas;
    cv::cvtColor(grey, canvas, cv::COLOR_GRAY2BGR);
    const double shrink =
        outputWidth > 0 && outputWidth < canvas.cols ? canvas.cols / (2.0 * outputWidth) : 0.0;
    const double scale = std::max({1.0, canvas.cols / 4000.0, shrink});
    const int thickness = static_cast<int>(std::lround(2 * scale));
    for (const EdgeRow& row : report.rows) {
        if (!located(row)) {
            continue;  // nowhere to draw it; the banner counts it
        }
        const bool measured = row.state == EdgeState::kMeasured;
        const cv::Scalar colour = !measured            ? cv::Scalar(255, 0, 255)
                                  : !report.hasLimit   ? cv::Scalar(0, 220, 255)
                                  : report.passes(row) ? cv::Scalar(0, 200, 0)
                                                       : cv::Scalar(0, 0, 255);
        const cv::Rect box = row.region();
        cv::rectangle(canvas, box, colour, thickness);
        char label[48];
        if (measured) {
            std::snprintf(label, sizeof label, "%d: %.3f", row.index,
                          static_cast<double>(row.measured.sfrQuarterNyquist));
        } else {
            std::snprintf(label, sizeof label, "%d: %s", row.index,
                          row.state == EdgeState::kOffFrame ? "off frame" : "refused");
        }
        // A dark outline keeps the label readable over the dark squares; a label that would
        // run off the picture (an edge at the border) is pulled back inside it.
        int baseline = 0;
        const cv::Size text =
            cv::getTextSize(label, cv::FONT_HERSHEY_SIMPLEX, 0.8 * scale, thickness, &baseline);
        const cv::Point at(std::clamp(box.x, 0, std::max(0, canvas.cols - text.width)),
                           std::clamp(box.y - static_cast<int>(6 * scale), text.height,
                                      std::max(text.height, canvas.rows - baseline)));
        cv::putText(canvas, label, at, cv::FONT_HERSHEY_SIMPLEX, 0.8 * scale, cv::Scalar(0, 0, 0),
                    3 * thickness);
        cv::putText(canvas, label, at, cv::FONT_HERSHEY_SIMPLEX, 0.8 * scale, colour, thickness);
    }
    if (report.partial()) {
        // A dark strip across the top says that this is a diagnosis, not a measurement.
        const std::string lines[] = {
            "NOT MEASURED BY " + report.member + ": " + report.memberFailure,
            partialSummary(report) + "; magenta: not measured"};
        // As large as the labels, but never wider than the picture.
        double size = 0.8 * scale;
        int widest = 0;
        for (const std::string& line : lines) {
            int baseline = 0;
            widest = std::max(
                widest,
                cv::getTextSize(line, cv::FONT_HERSHEY_SIMPLEX, size, thickness, &baseline).width);
        }
        const int margin = static_cast<int>(std::lround(20 * scale));
        if (widest > canvas.cols - 2 * margin) {
            size *= static_cast<double>(std::max(1, canvas.cols - 2 * margin)) / widest;
        }
        const int weight =
            std::max(1, static_cast<int>(std::lround(thickness * size / (0.8 * scale))));
        const int lineHeight = std::max(2, static_cast<int>(std::lround(50 * size)));
        cv::rectangle(canvas, cv::Rect(0, 0, canvas.cols, lineHeight * 2 + lineHeight / 2),
                      cv::Scalar(0, 0, 0), cv::FILLED);
        for (int i = 0; i < 2; ++i) {
            cv::putText(canvas, lines[i], cv::Point(margin, lineHeight * (i + 1)),
                        cv::FONT_HERSHEY_SIMPLEX, size,
                        i == 0 ? cv::Scalar(80, 80, 255) : cv::Scalar(255, 255, 255), weight);
        }
    }
    return canvas;
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
