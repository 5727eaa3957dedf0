// One whole-frame measurement, laid out for people (table) and scripts (JSON, CSV); the
// overlay picture is station/Overlay.h.
#pragma once

#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "render/RecordTruth.h"
#include "station/Failure.h"
#include "station/JsonDocument.h"
#include "talonvireo/talonVireoSFR.h"

namespace talonvireo {
namespace station {

// Where an edge sits in the field of view and which way it faces.
struct FieldPosition {
    double heightPercent = std::numeric_limits<double>::quiet_NaN();  // of the half-diagonal
    double azimuthDeg = std::numeric_limits<double>::quiet_NaN();     // from +x, counter-clockwise
    // "tangential" (the edge's normal runs along the radius: the meridional direction is
    // measured), "sagittal" (across it), or "none" within 1 % of the centre.
    std::string orientation = "none";
};

// What became of an edge: measured, not located, off the frame, refused by the SFR.
using EdgeState = SlotState;

// "measured", "not located", "off the frame", "refused by the SFR".
const char* edgeStateName(EdgeState state);

// One edge of a frame: the library's report of its slot (state, centre, the member's figures,
// MTF50, angle, contrast, noise, clipping, distance from the design, the precise and raw-plane
// figures), and what the station adds: the record entry, field position, flags and verdict.
struct EdgeRow : SlotReport {
    EdgeRow() { state = EdgeState::kMeasured; }
    int index = 0;
    SFREdgeResult measured{};  // the record entry: the slot's centre and figures
    // Why the edge cannot be trusted whatever it reads ("clipped", "off the design", ...):
    // a flagged edge fails a graded frame.
    std::vector<std::string> flags;
    FieldPosition field;
    // Graded against a limits file: the zone, and the limit that failed (empty on a pass).
    bool pass = true;
    std::string zone;
    std::string failedLimit;
    std::string failedFigure;  // the figure of failedLimit: "mtf50", "sfr_half_nyquist", ...
    bool hasTruth = false;
    render::EntryTruth truth{};

    // Distance (px) from the measured centre to the true one.
    double centreError() const;
    // Where the edge is: a chart edge's centre at full precision, else the located centre.
    cv::Point2d place() const;
    // A chart's edge (measured with --chart): its name, what became of it, its found
    // geometry and the region fitted to it; the centre is `centre` at full precision.
    struct ChartEdge {
        std::string name;
        std::string zone;  // the description's zone holding it
        ChartEdgeState state = ChartEdgeState::kNotFound;
        cv::Rect region;
        double x = std::numeric_limits<double>::quiet_NaN();
        double y = std::numeric_limits<double>::quiet_NaN();
        double angleDeg = std::numeric_limits<double>::quiet_NaN();  // from the x axis
        double lengthPx = std::numeric_limits<double>::quiet_NaN();
        double bowPx = std::numeric_limits<double>::quiet_NaN();
        double registrationDistance = std::numeric_limits<double>::quiet_NaN();
    };
    std::optional<ChartEdge> chart;
    // The region cut round the edge: a chart edge's fitted one, or the member's square with
    // its top-left corner at the centre less half the side (integer halves, as the members
    // take them).
    cv::Rect region() const {
        if (chart) {
            return chart->region;
        }
        const int half = side / 2;
        return {measured.x - half, measured.y - half, side, side};
    }
    // The state with its reason: "refused by the SFR: edge contrast below 20 %".
    std::string stateText() const;
};

struct FrameReport {
    std::string input;  // the file measured; empty for a rendered frame
    std::string member;
    std::string project;  // the chart the member expects, or the chart measured with --chart
    // Measured as a chart (--chart): "auto" or the description's name; empty for a member.
    std::string chart;
    bool isChart() const { return !chart.empty(); }
    SfrMethod chartMethod = SfrMethod::kPrecise;  // the method of a chart's figures
    // A described chart registered to the frame: matched shapes and the corner residual.
    int registeredShapes = 0;
    double registrationResidual = std::numeric_limits<double>::quiet_NaN();
    double distortionK1 = std::numeric_limits<double>::quiet_NaN();
    int width = 0;
    int height = 0;
    SFRParam param{};
    bool hasLimit = false;   // --min-sfr or --limits given
    double minSfr = 0.0;     // limit on the SFR at Nyquist/4
    std::string limitsPath;  // --limits: every row carries its own verdict
    // --pixel-pitch, micrometres: MTF50 also in line pairs per mm and line widths per picture
    // height; NaN without one.
    double pixelPitchUm = std::numeric_limits<double>::quiet_NaN();
    bool hasPitch() const { return std::isfinite(pixelPitchUm); }
    double milliseconds = 0.0;
    // Root-mean-square distance (px) between the located centres and the chart design after
    // the best similarity transform; NaN until computed.
    double fitResidual = std::numeric_limits<double>::quiet_NaN();
    // Most located centres agreeing on one shift of the chart design.
    int designConsensus = 0;
    // Share of the measured edges' transition-zone samples at or above the white level.
    double clippedShare = std::numeric_limits<double>::quiet_NaN();
    int whiteLevel = 0;     // the level clipping was counted at
    int largestSample = 0;  // the frame's largest raw sample (0 when not read from a file)
    // What the frame's reader and the checks found worth saying: travels with the report
    // into every output.
    std::vector<std::string> warnings;
    bool hasMtf50 = false;    // MTF50 is shown (it is always measured)
    bool hasPrecise = false;  // every row's precise figures
    bool hasPlanes = false;   // every row's raw colour planes
    std::vector<EdgeRow> rows;
    // Set when the member failed and the rows were measured region by region instead: the
    // member's own failure, which stays the frame's verdict.
    std::string memberFailure;
    Cause memberCause = Cause::None;
    bool partial() const { return !memberFailure.empty(); }

    // A custom frequency was asked for (freqDivisor > 0); without one, the custom figure is
    // left out of every output.
    bool hasCustom() const { return param.freqDivisor > 0.0f; }
    // Graded (a limit given): an edge passes only when it was measured, carries no flag and
    // meets its limits. Not graded: every edge passes.
    bool passes(const EdgeRow& row) const {
        if (!hasLimit) {
            return true;
        }
        if (row.state != EdgeState::kMeasured || !row.flags.empty()) {
            return false;
        }
        if (!limitsPath.empty()) {
            return row.pass;
        }
        return row.measured.sfrQuarterNyquist >= minSfr;
    }
    int failures() const;
    bool hasTruth() const { return !rows.empty() && rows[0].hasTruth; }
};

// One "warning: ..." line per warning.
void printWarnings(std::FILE* out, const std::vector<std::string>& warnings);

// A figure in an 8-wide table column after a space, or "-" where it does not exist.
void printFigure(std::FILE* out, double v, int decimals = 4);

void printTable(std::FILE* out, const FrameReport& report);

// The graded frame's closing line: how many edges fell below --min-sfr, or failed the limits
// and the frame's verdict; nothing when not graded.
void printGradeSummary(std::FILE* out, const FrameReport& report);
void printCsv(std::FILE* out, const FrameReport& report);
// printCsv's header line (no newline), and one row of it (with its newline): the edge columns
// the report carries (EdgeColumns.h), then the frame's warnings; they follow the report's
// flags, not its rows.
std::string csvHeader(const FrameReport& report);
void printCsvRow(std::FILE* out, const FrameReport& report, const EdgeRow& row);
// The report as a JSON document (documentHead first): the frame's figures and warnings, and
// one object per edge keyed by the edge columns (EdgeColumns.h).
Json frameJson(const FrameReport& report);
// One edge's object of frameJson.
Json edgeJson(const FrameReport& report, const EdgeRow& row);

// The picture shrunk to `width` columns (area averaging); unchanged when width <= 0 or
// not smaller than the picture.
cv::Mat shrinkTo(const cv::Mat& picture, int width);

// An 8-bit grey view of a raw Bayer R G frame of `bits`-bit words.
cv::Mat greyView(const cv::Mat& raw16, int bits);

}  // namespace station
}  // namespace talonvireo
