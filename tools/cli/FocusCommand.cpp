#include "FocusCommand.h"

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "ExitStatus.h"
#include "FrameArguments.h"
#include "station/CsvField.h"
#include "station/FocusJson.h"
#include "station/FocusPlot.h"
#include "station/FocusStudy.h"
#include "station/FrameStream.h"
#include "station/JsonDocument.h"
#include "station/LiveFocus.h"
#include "station/OutputFile.h"
#include "station/PixelPitch.h"

namespace talonvireo {
namespace cli {

using namespace station;

namespace {

void declare(OptionValues& o) {
    o.operands("FRAMES", "frame files at their focus positions: FILE@Z, z in micrometres", false);
    declareFrameArguments(o);
    o.option("--z-list", "FILE.csv", "the stack as file,z lines (instead of, or beside, FILE@Z)");
    o.option("--frequency", "F",
             "the frequency whose SFR is followed through focus, cycles per pixel (default "
             "0.125, Nyquist/4)");
    o.option("--min-sfr", "L",
             "the limit each edge's depth of focus and the common window are read at (default "
             "0.3)");
    o.flag("--live",
           "read raw frames (--width x --height 16-bit little-endian words each) from standard "
           "input as a capture program pipes them, and write one JSON line per frame as soon "
           "as it is measured: each edge's SFR at --frequency, the zones' tangential and "
           "sagittal means, whether the chart was located afresh");
    o.option("--plot", "PREFIX",
             "pictures: PREFIX-curves.png (SFR against z per field zone, tangential and "
             "sagittal apart) and PREFIX-map.png (each edge's best focus over the fitted "
             "image surface)");
    o.flag("--json", "output as JSON");
    o.flag("--csv", "output as CSV: one line per edge and focus position");
    o.command().description(
        "Measures every frame of a through-focus stack (a member's, or a chart's by a "
        "description) and reports each edge's best focus (the peak of a parabola fitted to "
        "the logarithm of its SFR near the maximum, exact for a Gaussian defocus), its peak "
        "SFR and the z range above --min-sfr; per field zone the tangential and sagittal best "
        "focus and their difference (astigmatism); the image surface z = z0 + sx x + sy y + "
        "c (x^2 + y^2) (x right, y down, mm from the frame centre) with its tilts in arcmin; "
        "and the focus window every edge shares.");
}

void printStudy(const FocusStudy& s) {
    std::printf("%s through focus: %zu frames, SFR at %.4g cycles/px, limit %.3g\n",
                s.measurand.c_str(), s.frames.size(), s.frequency, s.minSfr);
    for (std::size_t i = 0; i < s.frames.size(); ++i) {
        if (!s.frameErrors[i].empty()) {
            std::printf("frame %s (z %g um) not measured: %s\n", s.frames[i].path.c_str(),
                        s.frames[i].z, s.frameErrors[i].c_str());
        }
    }
    std::printf("%5s %-8s %15s %-10s %-6s %9s %8s %9s %9s\n", "edge", "name", "centre", "facing",
                "zone", "best z", "peak", "from z", "to z");
    for (const FocusEdge& e : s.edges) {
        std::printf("%5d %-8s %7.1f,%-7.1f %-10s %-6s %9.2f %8.4f %9.2f %9.2f\n", e.edge,
                    e.name.c_str(), e.x, e.y, e.orientation.c_str(), e.zone.c_str(), e.curve.bestZ,
                    e.curve.peakSfr, e.curve.fromZ, e.curve.toZ);
    }
    for (const FocusZone& z : s.zones) {
        std::printf(
            "zone %-6s tangential %8.2f um (%d), sagittal %8.2f um (%d), astigmatism %7.2f um\n",
            z.name.c_str(), z.tangentialZ, z.tangential, z.sagittalZ, z.sagittal, z.astigmatism());
    }
    const FocusSurface& f = s.surface;
    std::printf(
        "surface: best focus %.2f um at the centre; slopes %.3f, %.3f um/mm: tilt %.2f arcmin "
        "about x, %.2f about y; curvature %.4f um/mm^2; residual %.2f um over %d edges\n",
        f.z0, f.slopeX, f.slopeY, f.tiltAboutXArcmin, f.tiltAboutYArcmin, f.curvature,
        f.residualRms, f.points);
    if (s.window.exists()) {
        std::printf("common focus window %.2f .. %.2f um, centre %.2f um\n", s.window.fromZ,
                    s.window.toZ, s.window.centreZ());
    } else {
        std::printf("no common focus window: the edges' ranges above %.3g do not overlap\n",
                    s.minSfr);
    }
}

void printCsv(const FocusStudy& s) {
    std::printf("edge,name,x,y,orientation,zone,z_um,sfr,best_focus_z_um,peak_sfr\n");
    for (const FocusEdge& e : s.edges) {
        for (const FocusSample& p : e.samples) {
            std::printf(
                "%d,%s,%.3f,%.3f,%s,%s,%.6g,%.6f,%s,%s\n", e.edge, csvField(e.name).c_str(), e.x,
                e.y, e.orientation.c_str(), e.zone.c_str(), p.z, p.sfr,
                std::isfinite(e.curve.bestZ) ? std::to_string(e.curve.bestZ).c_str() : "",
                std::isfinite(e.curve.peakSfr) ? std::to_string(e.curve.peakSfr).c_str() : "");
        }
    }
}

// Frames of W x H words from standard input, one JSON line each, until the input ends. A
// short last frame is an error line and its own status.
int runLive(FrameStream& stream, double frequency) {
    const RawLayout& layout = stream.options().layout;
    if (layout.width <= 0 || layout.height <= 0) {
        throw Failure(Cause::BadInput, "--live needs --width and --height");
    }
    if (layout.packing != Packing::Words16 || layout.stride != 0 || layout.offset != 0) {
        throw Failure(Cause::BadInput, "--live reads 16-bit words, unpacked and unpadded");
    }
    LiveFocusFeed feed(stdin, stream, frequency, layout.width, layout.height);
    while (const std::optional<Json> line = feed.next()) {
        const std::string text = line->dump(-1, ' ', false, Json::error_handler_t::replace);
        std::printf("%s\n", text.c_str());
        std::fflush(stdout);
    }
    return feed.shortFrame() ? kExitWrongFileSize : kExitOk;
}

int run(const OptionValues& o) {
    if (o.has("--json") && o.has("--csv")) {
        throw Failure(Cause::BadInput, "--json and --csv exclude each other");
    }
    const bool live = o.has("--live");
    if (live &&
        (o.has("--json") || o.has("--csv") || o.has("--z-list") || !o.list("FRAMES").empty())) {
        throw Failure(Cause::BadInput,
                      "--live reads its frames from standard input and writes JSON lines: no "
                      "frame files, --z-list, --json, --csv or --plot");
    }
    if (!live && !o.has("--pixel-pitch")) {
        throw Failure(Cause::BadInput, "--pixel-pitch is required: the surface is in mm");
    }
    const std::vector<Member> members = allMembers();
    if (o.has("--chart") && (o.text("--chart") == "auto" || o.text("--chart") == "AUTO")) {
        throw Failure(Cause::BadInput,
                      "focus needs edges that keep their slot from frame to frame: a member "
                      "or a chart description, not --chart auto");
    }
    const Measurand measurand =
        o.has("--chart") && !o.has("--member")
            ? chartMeasurand(chooseChart(o.text("--chart")), chartSamples(o), o.has("--bayer"))
            : memberMeasurand(memberArgument(o, members));
    const double frequency = o.number("--frequency", 0.125, 0.0, 0.5, true);
    FrameOptions options = frameArguments(o);
    if (std::abs(frequency - 0.125) > 1e-12) {
        options.param.freqDivisor = static_cast<float>(0.5 / frequency);
    }
    FrameStream stream(measurand, options);
    if (live) {
        return runLive(stream, frequency);
    }
    std::vector<FocusFrame> frames;
    for (const std::string& arg : o.list("FRAMES")) {
        frames.push_back(parseFocusFrame(arg));
    }
    if (o.has("--z-list")) {
        const std::vector<FocusFrame> listed = readFocusList(o.text("--z-list"));
        frames.insert(frames.end(), listed.begin(), listed.end());
    }
    const double minSfr = o.number("--min-sfr", 0.3, 0.0, 2.0);
    const std::string plot = o.text("--plot", "");
    if (!plot.empty()) {
        checkImageOutputPath("--plot", plot + "-curves.png");
    }
    const FocusStudy study = studyFocus(stream, frames, frequency, minSfr, options.pixelPitchUm);
    if (!plot.empty()) {
        writeImage(plot + "-curves.png", plotFocusCurves(study));
        writeImage(plot + "-map.png", plotFocusMap(study));
    }
    if (o.has("--json")) {
        writeJson(stdout, focusStudyJson(study));
    } else if (o.has("--csv")) {
        printCsv(study);
    } else {
        printStudy(study);
        if (!plot.empty()) {
            std::printf("wrote %s-curves.png, %s-map.png\n", plot.c_str(), plot.c_str());
        }
    }
    return kExitOk;
}

}  // namespace

Command focusCommand() {
    return {"focus", "through-focus analysis of a stack: best focus, astigmatism, tilt, curvature",
            declare, run};
}

}  // namespace cli
}  // namespace talonvireo
