#include "station/ChartJob.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>

#include <opencv2/imgproc.hpp>

#include "station/BuiltinCharts.h"
#include "station/CameraRawFile.h"
#include "station/EdgePlausibility.h"
#include "station/Failure.h"
#include "station/FieldPosition.h"
#include "station/Grading.h"
#include "talonvireo/PixelFormat.h"

namespace talonvireo {
namespace station {

namespace {

namespace pf = PixelFormat;

int phaseNamed(const std::string& bayer) {
    if (bayer == "RG") {
        return pf::PhaseRG;
    }
    if (bayer == "GR") {
        return pf::PhaseGR;
    }
    if (bayer == "GB") {
        return pf::PhaseGB;
    }
    if (bayer == "BG") {
        return pf::PhaseBG;
    }
    if (bayer == "none") {
        return 0;
    }
    throw Failure(Cause::BadInput,
                  "--bayer must be RG, GR, GB, BG or none (grey samples), not '" + bayer + "'");
}

bool lowerEquals(std::string a, const char* b) {
    std::transform(a.begin(), a.end(), a.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return a == b;
}

// The largest sample against the bits the frame is said to carry.
void checkBits(const cv::Mat& samples, int bits, const std::string& path) {
    if (bits <= 0 || bits >= 16 || samples.depth() != CV_16U) {
        return;
    }
    double largest = 0.0;
    cv::minMaxLoc(samples.reshape(1), nullptr, &largest);
    const int full = (1 << bits) - 1;
    if (largest > full) {
        throw Failure(Cause::SampleDepth, path + ": samples reach " +
                                              std::to_string(static_cast<long>(largest)) +
                                              ", above " + std::to_string(bits) +
                                              "-bit full scale " + std::to_string(full));
    }
}

EdgeState rowState(ChartEdgeState state) {
    switch (state) {
        case ChartEdgeState::kMeasured:
            return EdgeState::kMeasured;
        case ChartEdgeState::kOffFrame:
            return EdgeState::kOffFrame;
        case ChartEdgeState::kRefused:
            return EdgeState::kRefused;
        default:
            return EdgeState::kNotLocated;
    }
}

EdgeRow rowOf(const ChartEdgeReport& e) {
    EdgeRow row;
    row.index = e.edge;
    row.state = rowState(e.state);
    row.sfrStatus = e.sfrStatus;
    EdgeRow::ChartEdge chart;
    chart.name = e.name;
    chart.zone = e.zone;
    chart.state = e.state;
    chart.region = cv::Rect(e.region.x, e.region.y, e.region.width, e.region.height);
    chart.x = e.x;
    chart.y = e.y;
    if (e.found) {
        chart.angleDeg = e.geometry.angleDeg;
        chart.lengthPx = e.geometry.length;
        chart.bowPx = e.geometry.bow;
        double normal = e.geometry.angleDeg - 90.0;
        normal += normal <= -90.0 ? 180.0 : 0.0;
        row.normalDeg = normal;
    }
    chart.registrationDistance = e.registrationDistance;
    if (std::isfinite(e.x) && std::isfinite(e.y)) {
        row.centre = {static_cast<float>(e.x), static_cast<float>(e.y)};
        row.x = static_cast<int>(std::lround(e.x));
        row.y = static_cast<int>(std::lround(e.y));
        row.measured.x = row.x;
        row.measured.y = row.y;
    }
    row.side = std::max(e.region.width, e.region.height);
    const CurveFigures& f = e.figures;
    row.sfrQuarterNyquist = static_cast<float>(f.sfrQuarterNyquist);
    row.sfrHalfNyquist = static_cast<float>(f.sfrHalfNyquist);
    row.sfrCustom = static_cast<float>(f.sfrCustom);
    row.measured.sfrQuarterNyquist = row.sfrQuarterNyquist;
    row.measured.sfrHalfNyquist = row.sfrHalfNyquist;
    row.measured.sfrCustom = row.sfrCustom;
    row.mtf50 = f.mtf50;
    row.edgeAngle = e.edgeAngle;
    row.darkLevel = e.darkLevel;
    row.lightLevel = e.lightLevel;
    row.contrast = e.contrast;
    row.snr = e.snr;
    row.clippedShare = e.clippedShare;
    row.transitionSamples = e.transitionSamples;
    // Off where the registration puts its slot: the design check of a member's frame.
    row.designDistance = e.registrationDistance;
    row.planes = e.planes;
    row.chart = chart;
    return row;
}

// The frame as 8-bit grey for pictures: scaled from its bits, a mosaic through OpenCV's
// Bayer-to-grey of its phase, colour to grey.
cv::Mat pictureOf(const ChartFrame& f) {
    const int bits = f.image.depth() == CV_16U ? (f.bits > 0 ? f.bits : 16) : 8;
    cv::Mat bytes;
    f.image.convertTo(bytes, CV_8U, 255.0 / (std::ldexp(1.0, bits) - 1.0));
    cv::Mat grey;
    switch (f.format & pf::PhaseMask) {
        case pf::PhaseRG:
            cv::cvtColor(bytes, grey, cv::COLOR_BayerRG2GRAY);
            return grey;
        case pf::PhaseGR:
            cv::cvtColor(bytes, grey, cv::COLOR_BayerGR2GRAY);
            return grey;
        case pf::PhaseGB:
            cv::cvtColor(bytes, grey, cv::COLOR_BayerGB2GRAY);
            return grey;
        case pf::PhaseBG:
            cv::cvtColor(bytes, grey, cv::COLOR_BayerBG2GRAY);
            return grey;
        default:
            break;
    }
    if (bytes.channels() == 3) {
        cv::cvtColor(bytes, grey, cv::COLOR_BGR2GRAY);
        return grey;
    }
    return bytes;
}

// The finder's own reasons an edge carries no figure, as flags beside its state.
void flagUnmeasured(FrameReport& report) {
    for (EdgeRow& row : report.rows) {
        if (!row.chart) {
            continue;
        }
        switch (row.chart->state) {
            case ChartEdgeState::kCut:
                row.flags.push_back("cut by the frame");
                break;
            case ChartEdgeState::kTooShort:
                row.flags.push_back("too short");
                break;
            case ChartEdgeState::kNearAxis:
                row.flags.push_back("near an axis");
                break;
            default:
                break;
        }
    }
}

}  // namespace

ChartChoice chooseChart(const std::string& arg) {
    ChartChoice choice;
    if (lowerEquals(arg, "auto")) {
        return choice;
    }
    choice.description = resolveChart(arg);
    choice.label = choice.description->name;
    return choice;
}

ChartFrame readChartFrame(const std::string& path, const RawLayout& layout,
                          const ChartSamples& samples, bool samplesGiven) {
    ChartFrame f;
    if (samples.bits != 0 && (samples.bits < 8 || samples.bits > 16)) {
        throw Failure(Cause::BadInput,
                      "--bits must be 8 to 16, not " + std::to_string(samples.bits));
    }
    if (isCameraRawPath(path)) {
        const CameraRaw camera = readCameraRaw(path);
        const int phase = bayerPhaseOf(camera.pattern);
        if (phase == 0) {
            throw Failure(Cause::BadInput, path + ": the mosaic is " + camera.pattern +
                                               ", not a Bayer pattern this tool reads");
        }
        f.image = camera.mosaic;
        f.format = pf::Bayer16 + phase;
        f.bits = camera.bits;
        f.whiteLevel = camera.whiteLevel;
        f.grey = pictureOf(f);
        return f;
    }
    if (isImagePath(path)) {
        f.image = readImage(path);
        const bool deep = f.image.depth() == CV_16U;
        if (f.image.channels() == 3) {
            f.format = deep ? pf::Bgr16 : pf::Bgr8;
        } else {
            const int phase = samplesGiven ? phaseNamed(samples.bayer) : 0;
            f.format =
                (deep ? (phase ? pf::Bayer16 : pf::Grey16) : (phase ? pf::Bayer8 : pf::Grey8)) +
                phase;
        }
        f.bits = deep ? samples.bits : 0;
        checkBits(f.image, f.bits, path);
        f.grey = pictureOf(f);
        return f;
    }
    if (layout.width <= 0 || layout.height <= 0) {
        throw Failure(Cause::BadInput, "a raw file needs --width and --height");
    }
    const int bits = samples.bits > 0 ? samples.bits : packingBits(layout.packing);
    f = chartFrameOfSamples(readFrame(path, layout), samples.bayer, bits, path);
    f.grey = pictureOf(f);
    return f;
}

ChartFrame chartFrameOfSamples(const cv::Mat& samples, const std::string& bayer, int bits,
                               const std::string& name) {
    ChartFrame f;
    f.image = samples;
    const int phase = phaseNamed(bayer);
    f.bits = bits;
    if (f.image.depth() == CV_8U) {
        f.format = phase ? pf::Bayer8 + phase : pf::Grey8;
        f.bits = 0;
    } else {
        f.format = phase ? pf::Bayer16 + phase : pf::Grey16;
    }
    checkBits(f.image, f.bits, name);
    return f;
}

FrameReport measureChartFrame(const ChartChoice& chart, const ChartFrame& frame,
                              const FrameOptions& options) {
    const auto start = std::chrono::steady_clock::now();
    ChartMeasureOptions o;
    o.method = options.chartMethod;
    o.rawPlanes = options.planes;
    o.bits = frame.bits;
    o.whiteLevel = frame.whiteLevel;
    o.nyquistDivisor = static_cast<double>(options.param.freqDivisor);
    if (options.planes && (frame.format & pf::PhaseMask) == 0) {
        throw Failure(Cause::BadInput,
                      "--per-channel-raw needs a mosaic (a raw file with --bayer, "
                      "or a camera raw file)");
    }
    if (options.planes && o.method != SfrMethod::kPrecise) {
        throw Failure(Cause::BadInput, "--per-channel-raw needs --method precise");
    }
    ChartReport measured;
    const ChartDescription* description = chart.description ? &*chart.description : nullptr;
    const int status = measureChart(frame.image.data, frame.image.cols, frame.image.rows,
                                    frame.format, description, o, measured);
    if (status == -1) {
        throw Failure(Cause::BadInput, "the chart measurement refused the frame (" +
                                           std::to_string(frame.image.cols) + " x " +
                                           std::to_string(frame.image.rows) + ")");
    }
    if (measured.quads.empty()) {
        throw Failure(Cause::NoQuadrilateral,
                      "no dark-on-light or light-on-dark quadrilateral found in the frame: no "
                      "edge to measure");
    }
    if (status == -2) {
        throw Failure(Cause::WrongChart, "frame does not look like the " + chart.label +
                                             " chart: its " +
                                             std::to_string(measured.quads.size()) +
                                             " quadrilaterals do not register to the description");
    }
    FrameReport report;
    report.chart = chart.label;
    report.project = chart.label;
    report.member = "chart " + chart.label;
    report.width = frame.image.cols;
    report.height = frame.image.rows;
    report.param = options.param;
    report.hasMtf50 = true;
    report.hasPlanes = options.planes;
    report.chartMethod = o.method;
    report.whiteLevel = measured.whiteLevel;
    report.clippedShare = measured.clippedShare;
    if (description != nullptr) {
        report.registeredShapes = measured.registration.matchedShapes;
        report.registrationResidual = measured.registration.residualRms;
        report.distortionK1 = measured.registration.k1;
    }
    for (const ChartEdgeReport& e : measured.edges) {
        report.rows.push_back(rowOf(e));
    }
    report.milliseconds =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    return report;
}

GradedFrame gradeChartFrame(const ChartChoice& chart, const ChartFrame& frame,
                            const FrameOptions& options, const std::string& input) {
    if (options.limits && options.limits->needsCustom() && !(options.param.freqDivisor > 0.0f)) {
        throw Failure(Cause::BadInput, "the limits set sfr_custom: --freq-divisor is needed");
    }
    if (options.limits) {
        checkLimitUnits(*options.limits, options.pixelPitchUm);
    }
    GradedFrame out;
    out.raw = frame.image;
    out.grey = frame.grey;
    FrameReport& report = out.report;
    report = measureChartFrame(chart, frame, options);
    report.input = input;
    describeField(report);
    report.pixelPitchUm = options.pixelPitchUm;
    PlausibilityOptions plausibility;
    plausibility.acceptClipped = options.acceptClipped;
    plausibility.minContrast = kMinChartContrast;
    flagImplausibleEdges(report, plausibility);
    flagUnmeasured(report);
    if (options.limits) {
        report.limitsPath = options.limits->path;
        report.hasLimit = true;
        gradeReport(report, *options.limits);
        failUnmeasuredAndFlagged(report);
    }
    return out;
}

GradedFrame gradeChartFile(const ChartChoice& chart, const std::string& path,
                           const FrameOptions& options, const ChartSamples& samples,
                           bool samplesGiven) {
    return gradeChartFrame(chart, readChartFrame(path, options.layout, samples, samplesGiven),
                           options, path);
}

}  // namespace station
}  // namespace talonvireo
