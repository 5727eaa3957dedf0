#include "RoiCommand.h"

#include <cmath>
#include <cstdio>
#include <optional>
#include <sstream>

#include "ExitStatus.h"
#include "JsonOnFailure.h"
#include "render/RegionEncoding.h"
#include "station/CameraRawFile.h"
#include "station/CurvePlot.h"
#include "station/EdgeReport.h"
#include "station/FrameFile.h"
#include "station/JsonDocument.h"
#include "station/OutputFile.h"
#include "station/RegionCut.h"
#include "station/RegionSide.h"
#include "talonvireo/talonVireoSFR.h"

namespace talonvireo {
namespace cli {

// The commands are thin: what they run is the station's.
using namespace station;

namespace {
namespace pf = talonvireo::PixelFormat;

int formatOf(const cv::Mat& image) {
    switch (image.type()) {
        case CV_8UC1:
            return pf::Grey8;
        case CV_16UC1:
            return pf::Grey16;
        case CV_8UC3:
            return pf::Bgr8;
        case CV_16UC3:
            return pf::Bgr16;
        default:
            throw station::Failure(station::Cause::UnreadableFile,
                                   "an image of 8- or 16-bit grey or colour needed");
    }
}

std::optional<cv::Rect> parseRect(const OptionValues& o) {
    if (!o.has("--rect")) {
        return std::nullopt;
    }
    cv::Rect r;
    char c1 = 0, c2 = 0, c3 = 0;
    std::istringstream in(o.text("--rect"));
    if (!(in >> r.x >> c1 >> r.y >> c2 >> r.width >> c3 >> r.height) || c1 != ',' || c2 != ',' ||
        c3 != ',' || in.peek() != std::char_traits<char>::eof()) {
        throw station::Failure(station::Cause::BadInput, "--rect takes x,y,w,h (four integers)");
    }
    return r;
}

const char* refusal(int status, bool planes) {
    switch (status) {
        case -2:
            return "edge contrast below 20 % (or a zero spectrum)";
        case -3:
            return "edge steeper than 1.25 columns per row (about 51 degrees)";
        case -4:
            return planes ? "edge too close to the pixel grid for each colour plane to see "
                            "enough phases"
                          : "edge exactly on the pixel grid";
        default:
            return "region not measurable (too small, bad format or size)";
    }
}

void writeCurveCsv(std::FILE* out, const SfrCurve& curve) {
    std::fprintf(out, "frequency");
    for (const SfrChannelCurve& ch : curve.channels) {
        std::fprintf(out, ",sfr_%s", ch.name.c_str());
    }
    std::fprintf(out, "\n");
    // Precise channels may end at different frequencies; they share the steps from 0.
    const std::vector<double>* longest = &curve.channels.front().frequency;
    for (const SfrChannelCurve& ch : curve.channels) {
        if (ch.frequency.size() > longest->size()) {
            longest = &ch.frequency;
        }
    }
    const std::vector<double>& f = *longest;
    for (std::size_t k = 0; k < f.size(); ++k) {
        std::fprintf(out, "%.8f", f[k]);
        for (const SfrChannelCurve& ch : curve.channels) {
            if (k < ch.sfr.size() && std::isfinite(ch.sfr[k])) {
                std::fprintf(out, ",%.8f", ch.sfr[k]);
            } else {
                std::fprintf(out, ",");
            }
        }
        std::fprintf(out, "\n");
    }
}

// "-" is standard output, flushed so that the curve is out before any later message.
void writeCurve(const std::string& path, const SfrCurve& curve) {
    if (path == "-") {
        writeCurveCsv(stdout, curve);
        if (std::fflush(stdout) != 0) {
            throw station::Failure(station::Cause::Failed, "cannot write the curve to stdout");
        }
        return;
    }
    OutputFile out(path);
    writeCurveCsv(out.get(), curve);
    out.close();
}

void printTable(std::FILE* out, const SfrCurve& curve, bool custom) {
    std::fprintf(out, "status 0, %zu channel%s%s%s\n", curve.channels.size(),
                 curve.channels.size() == 1 ? "" : "s",
                 curve.method == SfrMethod::kPrecise ? ", precise method" : "",
                 curve.normalFrequencyAxis ? ", frequencies across the edge" : "");
    std::fprintf(out, "%7s %8s %8s %8s %8s %8s %8s%s\n", "channel", "angle", "SFR N/4", "SFR N/2",
                 "MTF50", "MTF30", "MTF10", custom ? "   custom" : "");
    for (const SfrChannelCurve& ch : curve.channels) {
        std::fprintf(out, "%7s %8.3f", ch.name.c_str(), ch.edgeAngle);
        for (double v : {ch.sfrAt[0], ch.sfrAt[1], ch.mtf50, ch.mtf30, ch.mtf10}) {
            printFigure(out, v);
        }
        if (custom) {
            printFigure(out, ch.sfrAt[2]);
        }
        std::fprintf(out, "\n");
    }
}

Json curveJson(const std::string& input, const Region& region, const std::string& road,
               const SfrCurve& curve, double divisor) {
    Json doc = documentHead("region", input);
    doc["width"] = region.pixels.cols;
    doc["height"] = region.pixels.rows;
    doc["format"] = region.format;
    doc["road"] = road;
    doc["method"] = curve.method == SfrMethod::kPrecise ? "precise" : "classic";
    doc["normal_frequency_axis"] = curve.normalFrequencyAxis;
    if (divisor > 0.0) {
        doc["freq_divisor"] = divisor;
    }
    Json channels = Json::array();
    for (const SfrChannelCurve& ch : curve.channels) {
        Json c;
        c["channel"] = ch.name;
        c["edge_angle_deg"] = figure(ch.edgeAngle);
        if (curve.method == SfrMethod::kPrecise) {
            c["kernel_sigma"] = ch.kernelSigma;
        }
        c["sfr_quarter_nyquist"] = figure(ch.sfrAt[0]);
        c["sfr_half_nyquist"] = figure(ch.sfrAt[1]);
        c["mtf50"] = figure(ch.mtf50);
        c["mtf30"] = figure(ch.mtf30);
        c["mtf10"] = figure(ch.mtf10);
        if (divisor > 0.0) {
            c["sfr_custom"] = figure(ch.sfrAt[2]);
        }
        channels.push_back(c);
    }
    doc["channels"] = channels;
    return doc;
}

void declare(OptionValues& o) {
    o.command().description(
        "Measures one slanted-edge region: an image (PNG, TIFF, PGM, JPEG, BMP, ...; 8- or\n"
        "16-bit, grey or colour), a raw file (--width, --height and --format needed) or a\n"
        "camera raw file (DNG, CR2, NEF, ARW, ...: its mosaic, phase and depth). Prints\n"
        "the edge angle, the SFR at Nyquist/4 and Nyquist/2, MTF50, MTF30 and MTF10 per\n"
        "channel (grey, or B, G, R; R, Gr, Gb, B with --per-channel-raw).");
    o.operand("IMAGE", "the image, raw file or camera raw file");
    o.option("--format", "CODE",
             "pixel-format code: 0x100 grey, 0x200 16-bit grey, 0x400 BGR, 0x800 16-bit BGR, "
             "0x011 8-bit Bayer R G, 0x021 16-bit Bayer R G (default: from the image; a camera "
             "raw file's is always 16-bit Bayer in the file's phase)");
    o.option("--width", "W", "width of a raw file");
    o.option("--height", "H", "height of a raw file");
    o.option("--rect", "x,y,w,h",
             "measure this part of the image only (a mosaic's phase follows the offset)");
    o.option("--road", "R",
             "how a 16-bit Bayer R G frame becomes grey: opencv (default, the region API's own), "
             "malvar (the HLX6C/RQ8 members') or edge-directed (the K31R22BX/K74T16BX "
             "members'); the members' roads demosaic the whole frame, then cut --rect");
    o.option("--bits", "B",
             "significant bits of the words for --road malvar|edge-directed (default for a "
             "camera raw file: its own depth)");
    o.option("--freq-divisor", "D", "also report the SFR at Nyquist/D, D above 0");
    o.flag("--normal-axis",
           "frequencies across the edge (not divided by cos(angle) again; right at large angles)");
    o.option("--method", "M",
             "classic (default, as TalonCalSFR) or precise (every sample at its own place; "
             "accurate at every edge angle; frequencies across the edge)");
    o.flag("--per-channel-raw",
           "a Bayer region (--format 0x01N/0x02N): measure the R, Gr, Gb and B planes "
           "separately from their own samples (needs --method precise)");
    o.option("--curve", "OUT.csv",
             "the whole curve: frequency, SFR per channel; - writes it to stdout (the figures "
             "then go to stderr)");
    o.option("--plot", "OUT.png", "a plot of the curve with Nyquist/4, Nyquist/2 and MTF50");
    o.flag("--json", "figures as JSON (on a failure: the error and the exit status)");
    o.command().footer(
        "exit status: 0 measured, 2 bad arguments, 3 unreadable file, 4 wrong raw size,\n"
        "6 rect outside the image, 7 SFR calculation failed, 8 any other failure");
}

// A camera raw file's mosaic as a 16-bit Bayer image; its format and depth from the file.
cv::Mat readCameraRawImage(const std::string& path, const OptionValues& o, int& format, int& bits) {
    const CameraRaw raw = readCameraRaw(path);
    const int phase = bayerPhaseOf(raw.pattern);
    if (phase == 0) {
        throw station::Failure(station::Cause::UnreadableFile,
                               path + " holds a " + raw.pattern + " mosaic, not a 2 x 2 Bayer one");
    }
    const int fileFormat = pf::Bayer16 | phase;
    if (o.has("--format") && format != fileFormat) {
        char code[16];
        std::snprintf(code, sizeof code, "0x%03x", fileFormat);
        throw station::Failure(station::Cause::BadInput, "--format " + o.text("--format") +
                                                             " does not fit " + path +
                                                             ": its mosaic is " + raw.pattern +
                                                             " in 16-bit words (" + code + ")");
    }
    format = fileFormat;
    if (!o.has("--bits")) {
        bits = raw.bits;
    }
    return raw.mosaic;
}

int measureRegion(const OptionValues& o) {
    const std::string path = o.text("IMAGE");
    const bool hasFormat = o.has("--format");
    int format = o.integer("--format", 0, 1, 0xFFF);
    const int width = o.integer("--width", 0, 1, 100000);
    const int height = o.integer("--height", 0, 1, 100000);
    const std::optional<cv::Rect> rect = parseRect(o);
    const RoiRoad road = parseRoad(o.text("--road", "opencv"));
    int bits = o.integer("--bits", 0, 1, 16);
    const double divisor = o.number("--freq-divisor", 0.0, 0.0, 1e6, true);
    const SfrMethod method = parseMethod(o.text("--method", "classic"));
    const bool planes = o.has("--per-channel-raw");
    if (planes && method != SfrMethod::kPrecise) {
        throw station::Failure(station::Cause::BadInput,
                               "--per-channel-raw needs --method precise");
    }
    const bool curveToStdout = o.text("--curve") == "-";
    if (curveToStdout && o.has("--json")) {
        throw station::Failure(station::Cause::BadInput,
                               "--curve - and --json both write to stdout; give --curve a file");
    }
    if (o.has("--curve") && !curveToStdout) {
        checkOutputPath("--curve", o.text("--curve"));
    }
    if (o.has("--plot")) {
        checkImageOutputPath("--plot", o.text("--plot"));
    }

    cv::Mat image;
    if (isCameraRawPath(path)) {
        image = readCameraRawImage(path, o, format, bits);
    } else if (isImagePath(path)) {
        image = readImage(path);
        if (!hasFormat) {
            format = formatOf(image);
        }
    } else {
        if (!hasFormat) {
            throw station::Failure(station::Cause::BadInput, "a raw region needs --format");
        }
        const int type = render::formatMatrixType(format);
        if (type < 0) {
            throw station::Failure(station::Cause::BadInput,
                                   "unknown --format " + o.text("--format"));
        }
        image = readRawImage(path, width, height, type);
    }
    // The buffer handed to the library must hold what the format says, sample for sample.
    if (render::formatMatrixType(format) != image.type()) {
        throw station::Failure(station::Cause::BadInput, "--format " + o.text("--format") +
                                                             " does not fit the image's samples");
    }
    const Region region = cutRegion(image, format, rect, road, bits);
    warnSmallRegion(region.pixels.cols, region.pixels.rows, stderr);
    if (planes && !isMosaicFormat(region.format)) {
        throw station::Failure(
            station::Cause::BadInput,
            "--per-channel-raw needs a Bayer region (--format 0x01N or 0x02N, road "
            "opencv)");
    }

    SfrCurveOptions options;
    options.normalFrequencyAxis = o.has("--normal-axis");
    options.method = method;
    options.perChannelRaw = planes;
    options.frequencies = {0.125, 0.25};
    if (divisor > 0.0) {
        options.frequencies.push_back(0.5 / divisor);
    }
    SfrCurve curve;
    const int status = measureSfrCurve(region.pixels.data, region.pixels.cols, region.pixels.rows,
                                       region.format, options, curve);
    if (status != 0) {
        throw station::Failure(station::Cause::SfrFailed,
                               std::string("SFR calculation failed: ") + refusal(status, planes));
    }
    // The JSON document last: a file that cannot be written leaves only the failure's.
    if (!o.has("--json")) {
        printTable(curveToStdout ? stderr : stdout, curve, divisor > 0.0);
    }
    if (o.has("--curve")) {
        writeCurve(o.text("--curve"), curve);
    }
    if (o.has("--plot")) {
        writeImage(o.text("--plot"), plotCurve(curve));
    }
    if (o.has("--json")) {
        Json doc = curveJson(path, region, o.text("--road", "opencv"), curve, divisor);
        doc["exit_status"] = kExitOk;
        writeJson(stdout, doc);
    }
    return kExitOk;
}

int run(const OptionValues& o) {
    return runWithJsonOnFailure(o, "region", "IMAGE", measureRegion);
}
}  // namespace

Command roiCommand() {
    return {"roi", "measure one slanted-edge region from a file; the whole SFR curve on request",
            declare, run};
}

}  // namespace cli
}  // namespace talonvireo
