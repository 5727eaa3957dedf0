#include "station/FocusPlot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "station/PlotAxes.h"
#include "station/PlotColours.h"
#include "station/PlotFigures.h"

namespace talonvireo {
namespace station {

namespace {
constexpr int kWidth = 1000;
const cv::Scalar kInk(40, 40, 40);
const cv::Scalar kWhite(255, 255, 255);
const cv::Scalar kTangential = palette::kTangential;
const cv::Scalar kSagittal = palette::kSagittal;
const cv::Scalar kNoOrientation = palette::kReddishPurple;
const cv::Scalar kNotBracketed(150, 150, 150);
const cv::Scalar kLimitInk(110, 110, 110);
// Mixed thinly into the white behind the curves.
const cv::Scalar kWindow = palette::kBluishGreen;
constexpr double kWindowShare = 0.16;
constexpr double kLeastScaleSpan = 2.0;   // um: the map's colour scale spans at least this
constexpr double kLeastShownRise = 0.25;  // um: the least tilt across the sensor shown

const char* stepFormat(double step) {
    return step >= 1.0 ? "%.0f" : step >= 0.1 ? "%.1f" : "%.2f";
}

int labelWidth(const std::string& text) {
    int baseline = 0;
    return cv::getTextSize(text, cv::FONT_HERSHEY_SIMPLEX, 0.45, 1, &baseline).width;
}

// A label on a white box: it stays readable over curves and colour.
void boxedLabel(cv::Mat& img, const std::string& text, cv::Point at, const cv::Scalar& colour) {
    cv::rectangle(img, cv::Rect(at.x - 2, at.y - 12, labelWidth(text) + 4, 16), kWhite, cv::FILLED);
    plotLabel(img, text, at, colour);
}

void headerText(cv::Mat& img, const std::string& text, cv::Point at, double scale = 0.5,
                const cv::Scalar& colour = kInk) {
    // Shrunk where it would run off the picture: a long measurand must not push the rest out.
    int baseline = 0;
    const int width = cv::getTextSize(text, cv::FONT_HERSHEY_SIMPLEX, scale, 1, &baseline).width;
    const int room = img.cols - 10 - at.x;
    if (width > room) {
        scale *= static_cast<double>(room) / width;
    }
    cv::putText(img, text, at, cv::FONT_HERSHEY_SIMPLEX, scale, colour, 1, cv::LINE_AA);
}

std::string format(const char* pattern, double value) {
    char text[64];
    std::snprintf(text, sizeof text, pattern, value);
    return text;
}

// "SFR at Nyquist/4 (89 lp/mm)": the usual names for the usual frequencies.
std::string frequencyTitle(const FocusStudy& study) {
    std::string title;
    if (std::abs(study.frequency - 0.125) < 1e-9) {
        title = "SFR at Nyquist/4";
    } else if (std::abs(study.frequency - 0.25) < 1e-9) {
        title = "SFR at Nyquist/2";
    } else {
        title = format("SFR at %.3g cycles/pixel", study.frequency);
    }
    if (study.pixelPitchUm > 0.0) {
        title += format(" (%.0f lp/mm)", study.frequency * 1000.0 / study.pixelPitchUm);
    }
    return title;
}

std::string umOrDash(const char* pattern, double value) {
    return std::isfinite(value) ? format(pattern, value) : "-";
}

int notBracketed(const FocusStudy& study) {
    return static_cast<int>(std::count_if(study.edges.begin(), study.edges.end(),
                                          [](const FocusEdge& e) { return !e.curve.bracketed(); }));
}

std::string countsLine(const FocusStudy& study) {
    int failed = 0;
    for (const std::string& e : study.frameErrors) {
        failed += e.empty() ? 0 : 1;
    }
    std::string line = std::to_string(study.frames.size()) + " frames";
    if (failed > 0) {
        line += " (" + std::to_string(failed) + " not measured)";
    }
    line += ", " + std::to_string(study.edges.size()) + " edges";
    if (const int open = notBracketed(study); open > 0) {
        line += " (" + std::to_string(open) + " not bracketed)";
    }
    return line;
}

// "common focus window 1.6 .. 12.1 um (centre 6.9) above SFR 0.30"
std::string windowText(const FocusStudy& study) {
    const FocusWindow& w = study.window;
    std::string text = w.exists() ? format("common focus window %.1f", w.fromZ) +
                                        format(" .. %.1f um", w.toZ) +
                                        format(" (centre %.1f)", w.centreZ())
                                  : std::string("no common focus window");
    if (study.minSfr > 0.0) {
        text += format(" above SFR %.2f", study.minSfr);
    }
    return text;
}

// ---- through-focus curves ----

constexpr int kCurvesHeader = 84;
constexpr int kCurvesLegend = 40;
const cv::Size kPanel(500, 290);

// The zones that have edges, in the study's order, then any zone only an edge names.
std::vector<std::string> zoneRows(const FocusStudy& study) {
    std::vector<std::string> rows;
    const auto hasEdges = [&study](const std::string& zone) {
        return std::any_of(study.edges.begin(), study.edges.end(),
                           [&zone](const FocusEdge& e) { return e.zone == zone; });
    };
    for (const FocusZone& z : study.zones) {
        if (hasEdges(z.name)) {
            rows.push_back(z.name);
        }
    }
    for (const FocusEdge& e : study.edges) {
        if (std::find(rows.begin(), rows.end(), e.zone) == rows.end()) {
            rows.push_back(e.zone);
        }
    }
    return rows;
}

const FocusZone* zoneNamed(const FocusStudy& study, const std::string& name) {
    for (const FocusZone& z : study.zones) {
        if (z.name == name) {
            return &z;
        }
    }
    return nullptr;
}

AxisRange zAxis(const FocusStudy& study) {
    double lo = std::numeric_limits<double>::infinity(), hi = -lo;
    for (const FocusFrame& f : study.frames) {
        lo = std::min(lo, f.z);
        hi = std::max(hi, f.z);
    }
    for (const FocusEdge& e : study.edges) {
        for (const FocusSample& s : e.samples) {
            lo = std::min(lo, s.z);
            hi = std::max(hi, s.z);
        }
    }
    if (!(lo < hi)) {
        lo = (std::isfinite(lo) ? lo : 0.0) - 1.0;
        hi = lo + 2.0;
    }
    const double step = roundStep(hi - lo, 8);
    return {std::floor(lo / step + 1e-9) * step, std::ceil(hi / step - 1e-9) * step, step,
            stepFormat(step)};
}

AxisRange sfrAxis(const FocusStudy& study) {
    double highest = 0.0;
    for (const FocusEdge& e : study.edges) {
        for (const FocusSample& s : e.samples) {
            highest = std::max(highest, s.sfr);
        }
    }
    return FigureAxis{}.range(highest);
}

bool inColumn(const FocusEdge& e, bool sagittal) {
    return sagittal ? e.orientation == "sagittal" : e.orientation != "sagittal";
}

cv::Scalar edgeColour(const FocusEdge& e) {
    if (e.orientation == "sagittal") {
        return kSagittal;
    }
    return e.orientation == "tangential" ? kTangential : kNoOrientation;
}

// A small triangle pointing down at the curve's peak.
void peakMark(cv::Mat& img, cv::Point peak, const cv::Scalar& colour) {
    const cv::Point tip = peak + cv::Point(0, -3);
    const cv::Point corners[3] = {tip + cv::Point(-5, -9), tip + cv::Point(5, -9), tip};
    cv::fillConvexPoly(img, corners, 3, colour, cv::LINE_AA);
}

void shadeWindow(cv::Mat& img, const PlotAxes& axes, const FocusWindow& window) {
    if (!window.exists()) {
        return;
    }
    const double from = std::max(window.fromZ, axes.x().from);
    const double to = std::min(window.toZ, axes.x().to);
    const cv::Rect band(axes.toPixel(from, axes.y().to), axes.toPixel(to, axes.y().from));
    if (band.width > 0 && band.height > 0) {
        cv::Mat area = img(band);
        cv::addWeighted(area, 1.0 - kWindowShare, cv::Mat(area.size(), area.type(), kWindow),
                        kWindowShare, 0.0, area);
    }
}

void limitLine(cv::Mat& img, const PlotAxes& axes, double minSfr) {
    if (!(minSfr > 0.0 && minSfr < axes.y().to)) {
        return;
    }
    // Its value is in the legend: a label here would sit on the curves' tails.
    dashedLine(img, axes.toPixel(axes.x().from, minSfr), axes.toPixel(axes.x().to, minSfr),
               kLimitInk, 10.0, 0.5);
}

void edgeCurve(cv::Mat& img, const PlotAxes& axes, const FocusEdge& e) {
    std::vector<FocusSample> samples = e.samples;
    std::sort(samples.begin(), samples.end(),
              [](const FocusSample& a, const FocusSample& b) { return a.z < b.z; });
    std::vector<cv::Point> points;
    for (const FocusSample& s : samples) {
        points.push_back(axes.toPixel(s.z, std::clamp(s.sfr, axes.y().from, axes.y().to)));
    }
    const cv::Scalar colour = edgeColour(e);
    cv::polylines(img, points, false, colour, 1, cv::LINE_AA);
    for (const cv::Point& p : points) {
        cv::circle(img, p, 2, colour, cv::FILLED, cv::LINE_AA);
    }
}

// The zone's mean best focus: a dashed ink line, its value at the top, where the curves have
// long fallen away.
void meanLine(cv::Mat& img, const PlotAxes& axes, double z, const char* which) {
    if (!(z >= axes.x().from && z <= axes.x().to)) {
        return;
    }
    const cv::Point top = axes.toPixel(z, axes.y().to);
    dashedLine(img, axes.toPixel(z, axes.y().from), top, kInk, 8.0, 0.5);
    const std::string text = format(which, z);
    const int width = labelWidth(text);
    const bool left = top.x + 6 + width > axes.toPixel(axes.x().to, 0.0).x;
    boxedLabel(img, text, top + cv::Point(left ? -width - 6 : 6, 14), kInk);
}

cv::Mat curvePanel(const FocusStudy& study, const PlotAxes& axes, const std::string& zone,
                   bool sagittal, bool bottom) {
    cv::Mat img = axes.canvas(bottom ? "z (um)" : "");
    shadeWindow(img, axes, study.window);
    limitLine(img, axes, study.minSfr);
    int edges = 0, open = 0, unoriented = 0;
    for (const FocusEdge& e : study.edges) {
        if (e.zone == zone && inColumn(e, sagittal)) {
            edgeCurve(img, axes, e);
            ++edges;
            open += e.curve.bracketed() ? 0 : 1;
            unoriented += e.orientation == "tangential" || e.orientation == "sagittal" ? 0 : 1;
        }
    }
    // Peaks over every line, so none hides under a neighbour's curve.
    for (const FocusEdge& e : study.edges) {
        if (e.zone == zone && inColumn(e, sagittal) && e.curve.bracketed()) {
            peakMark(img,
                     axes.toPixel(e.curve.bestZ,
                                  std::clamp(e.curve.peakSfr, axes.y().from, axes.y().to)),
                     edgeColour(e));
        }
    }
    if (const FocusZone* z = zoneNamed(study, zone)) {
        meanLine(img, axes, sagittal ? z->sagittalZ : z->tangentialZ,
                 sagittal ? "S mean %.1f um" : "T mean %.1f um");
    }
    // A study without edges has one row and no zone to name.
    std::string title = zone.empty() ? (study.edges.empty() ? "" : "unzoned, ") : zone + ", ";
    title += (sagittal ? "sagittal: " : "tangential: ") + std::to_string(edges) +
             (edges == 1 ? " edge" : " edges");
    if (unoriented > 0) {
        title += " (" + std::to_string(unoriented) + " without orientation, purple)";
    }
    if (open > 0) {
        title += ", " + std::to_string(open) + " not bracketed";
    }
    plotLabel(img, title, {10, 20}, kInk);
    if (edges == 0) {
        plotLabel(img, "no edges", axes.toPixel(axes.x().from, axes.y().to) + cv::Point(180, 100),
                  kInk);
    }
    return img;
}

void curvesHeader(cv::Mat& img, const FocusStudy& study) {
    headerText(img, "Through focus   " + study.measurand + "   " + frequencyTitle(study), {10, 24},
               0.55);
    std::string line = countsLine(study) + "      " + windowText(study);
    headerText(img, line, {10, 48});
    if (study.zones.empty()) {
        return;
    }
    line = "astigmatism T - S (mean best focus T / S):";
    for (const FocusZone& z : study.zones) {
        line += "   " + z.name + " " + umOrDash("%+.1f um", z.astigmatism()) + " (" +
                umOrDash("%.1f", z.tangentialZ) + " / " + umOrDash("%.1f", z.sagittalZ) + ")";
    }
    headerText(img, line, {10, 72});
}

// One row of keys: what each mark on the panels means.
void curvesLegend(cv::Mat& img, const FocusStudy& study) {
    const int y = img.rows - kCurvesLegend / 2;
    int x = 20;
    const auto key = [&](const std::string& text) {
        plotLabel(img, text, {x, y + 5}, kInk);
        x += labelWidth(text) + 28;
    };
    for (const cv::Scalar& colour : {kTangential, kSagittal}) {
        cv::line(img, {x, y}, {x + 30, y}, colour, 1, cv::LINE_AA);
        cv::circle(img, {x + 15, y}, 2, colour, cv::FILLED, cv::LINE_AA);
        x += 38;
        key(colour == kTangential ? "tangential edge" : "sagittal edge");
    }
    peakMark(img, {x + 6, y + 6}, kInk);
    x += 18;
    key("edge best focus");
    dashedLine(img, {x + 6, y - 9}, {x + 6, y + 9}, kInk, 8.0, 0.5);
    x += 16;
    key("zone mean");
    if (study.minSfr > 0.0) {
        dashedLine(img, {x, y}, {x + 30, y}, kLimitInk, 10.0, 0.5);
        x += 38;
        key(format("min SFR %.2f", study.minSfr));
    }
    if (study.window.exists()) {
        cv::Mat swatch = img(cv::Rect(x, y - 9, 24, 18));
        swatch = kWhite * (1.0 - kWindowShare) + kWindow * kWindowShare;
        x += 32;
        key("common window");
    }
}

// ---- best-focus map ----

constexpr int kMapHeader = 60;
const cv::Size kMapArea(720, 560);  // the map with its axes
constexpr int kMapLeft = 56, kMapRight = 24, kMapTop = 30, kMapBottom = 44;
constexpr int kFigures = 96;  // the surface's figures under the map
const cv::Rect kColourBar(760, kMapHeader + 44, 24, 300);
constexpr int kMarker = 6;

// The frame's half width and height in mm; a study that does not know its frame size falls
// back to its edges' extent, rounded out.
cv::Point2d halfExtents(const FocusStudy& study) {
    if (study.width > 0 && study.height > 0 && study.pixelPitchUm > 0.0) {
        return {0.5 * study.width * study.pixelPitchUm / 1000.0,
                0.5 * study.height * study.pixelPitchUm / 1000.0};
    }
    double maxX = 0.0, maxY = 0.0;
    for (const FocusEdge& e : study.edges) {
        maxX = std::max(maxX, std::abs(e.xMm));
        maxY = std::max(maxY, std::abs(e.yMm));
    }
    if (!(maxX > 0.0 || maxY > 0.0)) {
        return {1.0, 1.0};
    }
    const double step = roundStep(std::max(maxX, maxY), 4);
    return {std::max(step, std::ceil(maxX / step) * step),
            std::max(step, std::ceil(maxY / step) * step)};
}

bool fitted(const FocusSurface& s) {
    return std::isfinite(s.z0) && std::isfinite(s.slopeX) && std::isfinite(s.slopeY) &&
           std::isfinite(s.curvature);
}

double surfaceAt(const FocusSurface& s, double x, double y) {
    return s.z0 + s.slopeX * x + s.slopeY * y + s.curvature * (x * x + y * y);
}

// Viridis from `from` (dark) to `to` (light): one table, so the background, the markers and
// the bar agree to the bit.
struct ColourScale {
    double from = 0.0;
    double to = 1.0;
    cv::Mat table;  // 256 x 1 BGR

    ColourScale(double lo, double hi) : from(lo), to(hi) {
        cv::Mat ramp(256, 1, CV_8UC1);
        for (int i = 0; i < 256; ++i) {
            ramp.at<uchar>(i) = static_cast<uchar>(i);
        }
        cv::applyColorMap(ramp, table, cv::COLORMAP_VIRIDIS);
    }
    cv::Vec3b at(double z) const {
        const double t = std::clamp((z - from) / (to - from), 0.0, 1.0);
        return table.at<cv::Vec3b>(static_cast<int>(std::lround(t * 255.0)));
    }
    cv::Scalar colour(double z) const {
        const cv::Vec3b c = at(z);
        return {static_cast<double>(c[0]), static_cast<double>(c[1]), static_cast<double>(c[2])};
    }
};

struct MapGeometry {
    cv::Point2d half;   // the sensor's half extents, mm
    double step = 0.5;  // mm between ticks
    double pxPerMm = 1.0;
    PlotAxes axes;
    cv::Point2d centre;
    cv::Rect sensor;
};

MapGeometry mapGeometry(const FocusStudy& study) {
    const cv::Point2d half = halfExtents(study);
    const double step = roundStep(2.0 * std::max(half.x, half.y), 12);
    const double rx = std::ceil(half.x / step - 1e-9) * step;
    const double ry = std::ceil(half.y / step - 1e-9) * step;
    // Whole pixels per mm, the same both ways: the sensor keeps its shape.
    const double fit = std::min((kMapArea.width - kMapLeft - kMapRight) / (2.0 * rx),
                                (kMapArea.height - kMapTop - kMapBottom) / (2.0 * ry));
    const double scale = std::max(1.0, std::floor(fit));
    const int w = static_cast<int>(std::lround(2.0 * rx * scale));
    const int h = static_cast<int>(std::lround(2.0 * ry * scale));
    const cv::Size size(w + kMapLeft + kMapRight, h + kMapTop + kMapBottom);
    // y runs down, as on the sensor: the axis goes from +ry at the foot to -ry at the top.
    const PlotAxes axes(size, AxisRange{-rx, rx, step, stepFormat(step)},
                        AxisRange{ry, -ry, -step, stepFormat(step)}, kMapLeft, kMapRight, kMapTop,
                        kMapBottom);
    const cv::Point2d centre(kMapLeft + 0.5 * w, kMapHeader + kMapTop + 0.5 * h);
    const cv::Point corner(static_cast<int>(std::lround(centre.x - half.x * scale)),
                           static_cast<int>(std::lround(centre.y - half.y * scale)));
    const cv::Point far(static_cast<int>(std::lround(centre.x + half.x * scale)),
                        static_cast<int>(std::lround(centre.y + half.y * scale)));
    return {half, step, scale, axes, centre, cv::Rect(corner, far)};
}

cv::Point mapPixel(const MapGeometry& g, double xMm, double yMm) {
    return {static_cast<int>(std::lround(g.centre.x + xMm * g.pxPerMm)),
            static_cast<int>(std::lround(g.centre.y + yMm * g.pxPerMm))};
}

// The surface over the sensor, z per picture pixel.
cv::Mat surfaceImage(const FocusSurface& s, const MapGeometry& g) {
    cv::Mat z(g.sensor.size(), CV_32FC1);
    for (int r = 0; r < z.rows; ++r) {
        const double y = (g.sensor.y + r - g.centre.y) / g.pxPerMm;
        for (int c = 0; c < z.cols; ++c) {
            z.at<float>(r, c) =
                static_cast<float>(surfaceAt(s, (g.sensor.x + c - g.centre.x) / g.pxPerMm, y));
        }
    }
    return z;
}

// The scale's ends: every value the map shows (the surface over the sensor and each best
// focus), rounded out to the contour step.
ColourScale mapScale(const FocusStudy& study, const cv::Mat& surface, double& step) {
    double lo = std::numeric_limits<double>::infinity(), hi = -lo;
    if (!surface.empty()) {
        cv::minMaxLoc(surface, &lo, &hi);
    }
    for (const FocusEdge& e : study.edges) {
        if (e.curve.bracketed()) {
            lo = std::min(lo, e.curve.bestZ);
            hi = std::max(hi, e.curve.bestZ);
        }
    }
    if (!(lo <= hi)) {
        for (const FocusFrame& f : study.frames) {
            lo = std::min(lo, f.z);
            hi = std::max(hi, f.z);
        }
    }
    if (!(lo <= hi)) {
        lo = 0.0;
        hi = 1.0;
    }
    // A flat field stays one colour: best foci a fraction of a micrometre apart are the
    // fit's noise, not a shape worth a whole colour scale.
    if (hi - lo < kLeastScaleSpan) {
        const double middle = 0.5 * (lo + hi);
        lo = middle - 0.5 * kLeastScaleSpan;
        hi = middle + 0.5 * kLeastScaleSpan;
    }
    step = roundStep(std::max(hi - lo, 1e-3), 8);
    lo = std::floor(lo / step + 1e-9) * step;
    hi = std::max(std::ceil(hi / step - 1e-9) * step, lo + step);
    return ColourScale(lo, hi);
}

// Runs of a contour off the map's border: findContours closes each region along the border,
// which is no level line.
std::vector<std::vector<cv::Point>> levelRuns(const std::vector<cv::Point>& contour, cv::Size size,
                                              cv::Point offset) {
    std::vector<std::vector<cv::Point>> runs(1);
    for (const cv::Point& p : contour) {
        if (p.x <= 0 || p.y <= 0 || p.x >= size.width - 1 || p.y >= size.height - 1) {
            if (!runs.back().empty()) {
                runs.emplace_back();
            }
            continue;
        }
        runs.back().push_back(p + offset);
    }
    runs.erase(std::remove_if(runs.begin(), runs.end(),
                              [](const std::vector<cv::Point>& r) { return r.size() < 2; }),
               runs.end());
    return runs;
}

// The point of `runs` farthest from every marker and label placed so far (and clear of the
// sensor's border), where the level's value is written.
cv::Point labelPlace(const std::vector<std::vector<cv::Point>>& runs,
                     const std::vector<cv::Point>& taken, const cv::Rect& sensor) {
    cv::Point best(-1, -1);
    double bestRoom = -1.0;
    const cv::Rect inner(sensor.x + 24, sensor.y + 12, sensor.width - 48, sensor.height - 24);
    for (const std::vector<cv::Point>& run : runs) {
        for (std::size_t i = 0; i < run.size(); i += 3) {
            if (!inner.contains(run[i])) {
                continue;
            }
            double room = 80.0;
            for (const cv::Point& t : taken) {
                room = std::min(room, cv::norm(run[i] - t));
            }
            if (room > bestRoom) {
                bestRoom = room;
                best = run[i];
            }
        }
    }
    return best;
}

void contours(cv::Mat& img, const cv::Mat& surface, const MapGeometry& g, const ColourScale& scale,
              double step, std::vector<cv::Point>& taken) {
    const int levels = static_cast<int>(std::lround((scale.to - scale.from) / step));
    for (int k = 1; k < levels; ++k) {
        const double level = scale.from + k * step;
        cv::Mat above = surface >= level;
        std::vector<std::vector<cv::Point>> found;
        cv::findContours(above, found, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
        std::vector<std::vector<cv::Point>> runs;
        for (const std::vector<cv::Point>& c : found) {
            for (auto& run : levelRuns(c, surface.size(), g.sensor.tl())) {
                runs.push_back(std::move(run));
            }
        }
        cv::polylines(img, runs, false, kInk, 1, cv::LINE_AA);
        const cv::Point at = labelPlace(runs, taken, g.sensor);
        if (at.x >= 0) {
            const std::string text = format(stepFormat(step), level);
            boxedLabel(img, text, at + cv::Point(-labelWidth(text) / 2, 6), kInk);
            taken.push_back(at);
        }
    }
}

// An edge's mark: a white halo to lift it off the background, its fill, an ink rim.
void marker(cv::Mat& img, cv::Point at, const std::string& orientation, const cv::Scalar& fill,
            bool hollow) {
    const auto shape = [&](int r, const cv::Scalar& colour, int thickness) {
        if (orientation == "sagittal") {
            cv::rectangle(img, at - cv::Point(r, r), at + cv::Point(r, r), colour, thickness,
                          cv::LINE_AA);
        } else if (orientation == "tangential") {
            cv::circle(img, at, r, colour, thickness, cv::LINE_AA);
        } else {
            const int d = r + 2;
            const std::vector<cv::Point> diamond = {at + cv::Point(0, -d), at + cv::Point(d, 0),
                                                    at + cv::Point(0, d), at + cv::Point(-d, 0)};
            if (thickness < 0) {
                cv::fillConvexPoly(img, diamond, colour, cv::LINE_AA);
            } else {
                cv::polylines(img, diamond, true, colour, thickness, cv::LINE_AA);
            }
        }
    };
    shape(kMarker + 2, kWhite, cv::FILLED);
    if (hollow) {
        shape(kMarker - 1, kNotBracketed, 2);
        return;
    }
    shape(kMarker, fill, cv::FILLED);
    shape(kMarker, kInk, 1);
}

// Which way the plane tilts: an arrow from the centre up the slope.
void tiltArrow(cv::Mat& img, const MapGeometry& g, const FocusSurface& s) {
    const double length = std::hypot(s.slopeX, s.slopeY);
    // A tilt that moves focus by less than a quarter micrometre across the sensor points
    // nowhere in particular.
    if (!(length * std::max(g.half.x, g.half.y) >= kLeastShownRise)) {
        return;
    }
    const double reach = 0.45 * std::min(g.half.x, g.half.y);
    const cv::Point from = mapPixel(g, 0.0, 0.0);
    const cv::Point to = mapPixel(g, reach * s.slopeX / length, reach * s.slopeY / length);
    cv::arrowedLine(img, from, to, kWhite, 5, cv::LINE_AA, 0, 0.15);
    cv::arrowedLine(img, from, to, kInk, 2, cv::LINE_AA, 0, 0.15);
    const std::string text = "tilt: z rises";
    boxedLabel(img, text, to + cv::Point(to.x >= from.x ? 8 : -labelWidth(text) - 8, 4), kInk);
}

void colourBar(cv::Mat& img, const ColourScale& scale, double step) {
    const cv::Rect& bar = kColourBar;
    for (int r = 0; r < bar.height; ++r) {
        const double z = scale.to - (scale.to - scale.from) * r / (bar.height - 1.0);
        cv::line(img, {bar.x, bar.y + r}, {bar.x + bar.width - 1, bar.y + r}, scale.colour(z));
    }
    cv::rectangle(img, cv::Rect(bar.x - 1, bar.y - 1, bar.width + 2, bar.height + 2), kInk, 1);
    plotLabel(img, "best focus z (um)", {bar.x - 10, bar.y - 14}, kInk);
    const int levels = static_cast<int>(std::lround((scale.to - scale.from) / step));
    for (int k = 0; k <= levels; ++k) {
        const double z = scale.from + k * step;
        const int y = bar.y + static_cast<int>(std::lround(
                                  (scale.to - z) / (scale.to - scale.from) * (bar.height - 1.0)));
        cv::line(img, {bar.x + bar.width, y}, {bar.x + bar.width + 5, y}, kInk);
        plotLabel(img, format(stepFormat(step), z), {bar.x + bar.width + 9, y + 5}, kInk);
    }
}

void mapLegend(cv::Mat& img, const FocusStudy& study, const ColourScale& scale, double step,
               bool surface) {
    int y = kColourBar.y + kColourBar.height + 40;
    const int x = kColourBar.x - 10;
    const cv::Scalar middle = scale.colour(0.5 * (scale.from + scale.to));
    const auto key = [&](const std::string& orientation, bool hollow, const std::string& text) {
        marker(img, {x + 8, y}, orientation, middle, hollow);
        plotLabel(img, text, {x + 26, y + 5}, kInk);
        y += 24;
    };
    key("tangential", false, "tangential edge");
    key("sagittal", false, "sagittal edge");
    if (std::any_of(study.edges.begin(), study.edges.end(), [](const FocusEdge& e) {
            return e.orientation != "tangential" && e.orientation != "sagittal";
        })) {
        key("none", false, "edge without orientation");
    }
    key("tangential", true, "focus outside the sweep");
    plotLabel(img, "markers: each edge's best focus", {x, y + 5}, kInk);
    y += 20;
    plotLabel(img, surface ? "background: fitted surface" : "no surface fitted", {x, y + 5},
              surface ? kInk : kSagittal);
    if (surface) {
        plotLabel(img, "lines every " + format(stepFormat(step), step) + " um", {x, y + 25}, kInk);
    }
}

void mapFigures(cv::Mat& img, const FocusStudy& study, const MapGeometry& g, int top) {
    const FocusSurface& s = study.surface;
    std::vector<std::string> left, right;
    if (fitted(s)) {
        left.push_back(format("best focus at the centre z0   %.2f um", s.z0));
        left.push_back(format("tilt about x   %+.1f arcmin", s.tiltAboutXArcmin) +
                       format(": z rises %.2f um/mm to the ", std::abs(s.slopeY)) +
                       (s.slopeY < 0.0 ? "top" : "bottom"));
        left.push_back(format("tilt about y   %+.1f arcmin", s.tiltAboutYArcmin) +
                       format(": z rises %.2f um/mm to the ", std::abs(s.slopeX)) +
                       (s.slopeX < 0.0 ? "left" : "right"));
        right.push_back(format("curvature   %+.3f um/mm^2", s.curvature) +
                        format(" (%+.1f um at the corners)",
                               s.curvature * (g.half.x * g.half.x + g.half.y * g.half.y)));
        right.push_back(format("residual RMS   %.2f um", s.residualRms) + " over " +
                        std::to_string(s.points) + " edges");
    } else {
        left.push_back("no surface fitted:");
        left.push_back(std::to_string(study.edges.size() - notBracketed(study)) +
                       " edges with a best focus, 4 spread over the field needed");
    }
    right.push_back(windowText(study));
    for (std::size_t i = 0; i < left.size(); ++i) {
        headerText(img, left[i], {10, top + 26 + 24 * static_cast<int>(i)}, 0.45,
                   fitted(s) ? kInk : kSagittal);
    }
    for (std::size_t i = 0; i < right.size(); ++i) {
        headerText(img, right[i], {520, top + 26 + 24 * static_cast<int>(i)}, 0.45);
    }
}
}  // namespace

cv::Mat plotFocusCurves(const FocusStudy& study) {
    std::vector<std::string> rows = zoneRows(study);
    const bool empty = rows.empty();
    if (empty) {
        rows.push_back(study.zones.empty() ? std::string() : study.zones.front().name);
    }
    const PlotAxes axes(kPanel, zAxis(study), sfrAxis(study), 56, 16, 30, 50);
    std::vector<cv::Mat> strips;
    strips.emplace_back(kCurvesHeader, kWidth, CV_8UC3, kWhite);
    curvesHeader(strips.back(), study);
    for (std::size_t r = 0; r < rows.size(); ++r) {
        const bool bottom = r + 1 == rows.size();
        cv::Mat row;
        cv::hconcat(curvePanel(study, axes, rows[r], false, bottom),
                    curvePanel(study, axes, rows[r], true, bottom), row);
        strips.push_back(row);
    }
    strips.emplace_back(kCurvesLegend, kWidth, CV_8UC3, kWhite);
    curvesLegend(strips.back(), study);
    cv::Mat out;
    cv::vconcat(strips, out);
    return out;
}

cv::Mat plotFocusMap(const FocusStudy& study, FocusMapLayout* layout) {
    const MapGeometry g = mapGeometry(study);
    const bool surface = fitted(study.surface);
    const cv::Mat z = surface ? surfaceImage(study.surface, g) : cv::Mat();
    double step = 1.0;
    const ColourScale scale = mapScale(study, z, step);

    const int mapHeight = std::max(g.axes.toPixel(0.0, g.axes.y().from).y + kMapBottom,
                                   kColourBar.y + kColourBar.height + 210 - kMapHeader);
    cv::Mat img(kMapHeader + mapHeight + kFigures, kWidth, CV_8UC3, kWhite);
    const cv::Mat axesArea = g.axes.canvas("x (mm from the frame centre, right)");
    axesArea.copyTo(img(cv::Rect(cv::Point(0, kMapHeader), axesArea.size())));
    plotLabel(img, "y (mm, down)", {10, kMapHeader + 16}, kInk);

    cv::Mat sensor = img(g.sensor);
    std::vector<cv::Point> taken;
    for (const FocusEdge& e : study.edges) {
        taken.push_back(mapPixel(g, e.xMm, e.yMm));
    }
    if (surface) {
        for (int r = 0; r < sensor.rows; ++r) {
            for (int c = 0; c < sensor.cols; ++c) {
                sensor.at<cv::Vec3b>(r, c) = scale.at(z.at<float>(r, c));
            }
        }
        taken.push_back(mapPixel(g, 0.0, 0.0));
        contours(img, z, g, scale, step, taken);
    } else {
        sensor.setTo(cv::Scalar(238, 238, 238));
        const std::string text = "no surface fitted";
        boxedLabel(img, text,
                   {g.sensor.x + (g.sensor.width - labelWidth(text)) / 2, g.sensor.y + 24},
                   kSagittal);
    }
    cv::rectangle(img, g.sensor, kInk, 2);
    for (const FocusEdge& e : study.edges) {
        const bool open = !e.curve.bracketed();
        marker(img, mapPixel(g, e.xMm, e.yMm), e.orientation,
               open ? kNotBracketed : scale.colour(e.curve.bestZ), open);
    }
    if (surface) {
        tiltArrow(img, g, study.surface);  // over the markers, so that its label reads
    }
    if (study.edges.empty()) {
        boxedLabel(img, "no edges", mapPixel(g, 0.0, 0.0) + cv::Point(-30, 5), kInk);
    }

    headerText(img, "Best focus map   " + study.measurand + "   " + countsLine(study), {10, 24},
               0.55);
    headerText(img,
               frequencyTitle(study) + (surface ? "   surface z = z0 + sx x + sy y + c (x^2 + y^2)"
                                                : "   NO SURFACE FITTED"),
               {10, 48}, 0.5, surface ? kInk : kSagittal);
    colourBar(img, scale, step);
    mapLegend(img, study, scale, step, surface);
    mapFigures(img, study, g, kMapHeader + mapHeight);

    if (layout != nullptr) {
        *layout = {g.centre, g.pxPerMm, g.sensor, kColourBar, scale.from, scale.to};
    }
    return img;
}

}  // namespace station
}  // namespace talonvireo
