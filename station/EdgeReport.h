// One whole-frame measurement, laid out for people (table), scripts (JSON, CSV) and eyes
// (the overlay picture).
#pragma once

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "render/RecordTruth.h"
#include "station/Failure.h"
#include "station/JsonDocument.h"
#include "talonvireo/talonVireoSFR.h"

namespace talonvireo {
namespace station {

// Figures of one curve read off a region the member cut (frequencies across the edge for the
// precise method); NaN where a figure does not exist, and all NaN with the status when the
// region was refused.
struct CurveFigures {
    std::string channel;
    int status = 0;
    double sfrQuarterNyquist = std::numeric_limits<double>::quiet_NaN();
    double sfrHalfNyquist = std::numeric_limits<double>::quiet_NaN();
    double sfrCustom = std::numeric_limits<double>::quiet_NaN();
    double mtf50 = std::numeric_limits<double>::quiet_NaN();
};

// Where an edge sits in the field of view and which way it faces.
struct FieldPosition {
    double heightPercent = std::numeric_limits<double>::quiet_NaN();  // of the half-diagonal
    double azimuthDeg = std::numeric_limits<double>::quiet_NaN();     // from +x, counter-clockwise
    // "tangential" (the edge's normal runs along the radius: the meridional direction is
    // measured), "sagittal" (across it), or "none" within 1 % of the centre.
    std::string orientation = "none";
};

// What became of an edge when a frame the member failed on is measured region by region.
enum class EdgeState {
    kMeasured,    // its region was cut and measured
    kNotLocated,  // the locator found no centre for it
    kOffFrame,    // its region leaves the frame
    kRefused,     // the SFR refused its region (EdgeRow::sfrStatus says why)
};

// "measured", "not located", "off the frame", "refused by the SFR".
const char* edgeStateName(EdgeState state);

struct EdgeRow {
    int index = 0;
    EdgeState state = EdgeState::kMeasured;
    int sfrStatus = 0;  // TalonCalSFR's status for a refused region
    SFREdgeResult measured{};
    int side = 0;  // side of the region the member cut
    // On request (FrameReport::hasMtf50, hasPrecise, hasPlanes): MTF50 by the member's own
    // method, the precise method's figures of the grey region, and each raw colour plane's.
    double mtf50 = std::numeric_limits<double>::quiet_NaN();
    CurveFigures precise;
    std::vector<CurveFigures> planes;
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
    // The region the member cuts round the edge: its top-left corner at the centre less half
    // the side (integer halves, as the members take them).
    cv::Rect region() const {
        const int half = side / 2;
        return {measured.x - half, measured.y - half, side, side};
    }
    // The state with its reason: "refused by the SFR: edge contrast below 20 %".
    std::string stateText() const;
};

struct FrameReport {
    std::string input;  // the file measured; empty for a rendered frame
    std::string member;
    std::string project;  // the chart the member expects
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
    bool hasMtf50 = false;    // every row's mtf50 (the member's method on its region)
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
    bool passes(const EdgeRow& row) const {
        if (!limitsPath.empty()) {
            return row.pass;
        }
        return !hasLimit || row.measured.sfrQuarterNyquist >= minSfr;
    }
    int failures() const;
    bool hasTruth() const { return !rows.empty() && rows[0].hasTruth; }
};

// A figure in an 8-wide table column after a space, or "-" where it does not exist.
void printFigure(std::FILE* out, double v, int decimals = 4);

void printTable(std::FILE* out, const FrameReport& report);
void printCsv(std::FILE* out, const FrameReport& report);
// printCsv's header line (no newline), and one row of it (with its newline): its columns
// follow the report's flags, not its rows.
std::string csvHeader(const FrameReport& report);
void printCsvRow(std::FILE* out, const FrameReport& report, const EdgeRow& row);
// The report as a JSON document (documentHead first).
Json frameJson(const FrameReport& report);

// The frame (8-bit grey) with every region outlined, numbered and labelled with its SFR at
// Nyquist/4: green/red against the limit, or yellow without one. A picture that will be shown
// `outputWidth` pixels across (0: as drawn) gets labels and lines large enough to read there.
cv::Mat drawOverlay(const cv::Mat& grey, const FrameReport& report, int outputWidth = 0);

// The picture shrunk to `width` columns (area averaging); unchanged when width <= 0 or
// not smaller than the picture.
cv::Mat shrinkTo(const cv::Mat& picture, int width);

// An 8-bit grey view of a raw Bayer R G frame of `bits`-bit words.
cv::Mat greyView(const cv::Mat& raw16, int bits);

}  // namespace station
}  // namespace talonvireo
