#include "MeasureCommand.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>

#include "ExitStatus.h"
#include "FrameArguments.h"
#include "JsonOnFailure.h"
#include "station/EdgeReport.h"
#include "station/FieldCurve.h"
#include "station/FieldPlot.h"
#include "station/FrameFile.h"
#include "station/FrameGrading.h"
#include "station/Limits.h"
#include "station/Measurand.h"
#include "station/Members.h"
#include "station/OutputFile.h"
#include "station/Overlay.h"
#include "station/PixelPitch.h"
#include "station/RegionCut.h"
#include "station/RegionSide.h"

namespace talonvireo {
namespace cli {

// The commands are thin: what they run is the station's.
using namespace station;

namespace {
constexpr int kMaxSide = 100000;  // pixels; far beyond any sensor, well inside int

void declare(OptionValues& o) {
    o.operand("FRAME",
              "raw file (.raw .bin .dat or no extension) of 16-bit little-endian words, or as "
              "--packing, --stride and --offset say; a 16-bit PGM/PNG/TIFF (with --chart also "
              "8-bit and colour PNG/TIFF/JPEG); or a camera raw file (DNG, CR2, NEF, ARW, ...) "
              "read through LibRaw");
    declareFrameArguments(o);
    o.flag("--json", "output as JSON");
    o.flag("--csv", "output as CSV");
    o.option("--overlay", "OUT.png",
             "the frame with every region, its index and SFR at Nyquist/4; when the member "
             "fails, a diagnosis: where each edge was found and which failed");
    o.flag("--partial",
           "when the member fails, measure its regions one by one and report them, each edge "
           "with its state (measured, not located, off the frame, refused by the SFR); the "
           "exit status stays the member's failure");
    o.option("--overlay-width", "INT", "shrink the overlay picture to W pixels across");
    o.option("--field-plot", "OUT.png",
             "the field at a glance: every edge coloured by its SFR at Nyquist/4 over a faint "
             "frame, failing edges crossed out, with the yield");
    o.option("--min-sfr", "NUMBER",
             "limit 0 .. 2 on the SFR at Nyquist/4: failing edges are marked and the exit "
             "status is 1");
    o.option("--field-curve", "OUT.png",
             "SFR at Nyquist/4 (MTF50 when measured) against image height, tangential and "
             "sagittal edges apart");
    o.command().footer(
        "exit status: 0 measured, 1 an edge below --min-sfr or failing --limits, 2 bad\n"
        "arguments (a limits file's error names its line), 3 unreadable\n"
        "file, 4 file size not W x H x 2, 5 chart not located, 6 region out of bounds,\n"
        "7 SFR calculation failed, 8 any other failure, 9 not the member's chart,\n"
        "10 samples exceed the member's bit depth, 11 the chart is in view but edges were\n"
        "found off its design, 12 (--chart) no quadrilateral in the frame; with --partial,\n"
        "5 to 8 come with the report of every edge.\n"
        "Graded (--limits, --min-sfr), an edge also fails for a flag: clipped, off the\n"
        "design, SFR above 1, low contrast, noisy (see the README's thresholds)");
}

int measure(const OptionValues& o) {
    // Every argument and output path is checked before the frame is read.
    const bool asChart = o.has("--chart");
    const std::vector<Member> members = allMembers();
    if (asChart && o.has("--member")) {
        throw station::Failure(station::Cause::BadInput, "--member and --chart exclude each other");
    }
    if (asChart && o.has("--partial")) {
        throw station::Failure(station::Cause::BadInput,
                               "--partial goes with --member: a chart's report always holds "
                               "every edge");
    }
    const Measurand measurand =
        asChart ? chartMeasurand(chooseChart(o.text("--chart")), chartSamples(o), o.has("--bayer"))
                : memberMeasurand(memberArgument(o, members));
    const Member* member = measurand.member;
    if (o.has("--json") && o.has("--csv")) {
        throw station::Failure(station::Cause::BadInput, "--json and --csv exclude each other");
    }
    if (o.has("--limits") && o.has("--min-sfr")) {
        throw station::Failure(station::Cause::BadInput,
                               "--limits and --min-sfr exclude each other");
    }
    FrameOptions options = frameArguments(o);
    if (options.limits) {
        checkLimitSlots(*options.limits, measurand.name(), measurand.slotCount());
        checkLimitUnits(*options.limits, options.pixelPitchUm);
    }
    if (!asChart) {
        if (o.has("--roi") && !member->forced90) {
            warnSmallRegion(options.param.roiSize, options.param.roiSize, stderr);
        }
        // The overlay needs the diagnosis too when the member fails.
        options.partial = o.has("--partial") || o.has("--overlay");
    }
    const double minSfr = o.number("--min-sfr", 0.0, 0.0, 2.0);
    const int overlayWidth = o.integer("--overlay-width", 0, 1, kMaxSide);
    if (o.has("--overlay")) {
        checkImageOutputPath("--overlay", o.text("--overlay"));
    }
    for (const char* picture : {"--field-plot", "--field-curve"}) {
        if (o.has(picture)) {
            checkImageOutputPath(picture, o.text(picture));
        }
    }

    GradedFrame graded = gradeFrame(measurand, o.text("FRAME"), options);
    FrameReport& report = graded.report;
    printWarnings(stderr, report.warnings);
    const cv::Mat grey = graded.pictureGrey(asChart ? 8 : member->bits);
    const auto writeOverlay = [&] {
        writeImage(o.text("--overlay"),
                   shrinkTo(drawOverlay(grey, report, overlayWidth), overlayWidth));
    };
    if (report.partial() && !o.has("--partial")) {
        writeOverlay();
        throw station::Failure(
            report.memberCause,
            report.memberFailure + " (the overlay shows where each edge was found)");
    }
    if (o.has("--min-sfr")) {
        report.hasLimit = true;
        report.minSfr = minSfr;
    }
    // The pictures first: a JSON document on stdout is the run's last word, so a picture that
    // cannot be written leaves only the failure's document there.
    if (!o.has("--json")) {
        if (o.has("--csv")) {
            printCsv(stdout, report);
        } else {
            printTable(stdout, report);
        }
    }
    if (o.has("--overlay")) {
        writeOverlay();
    }
    if (o.has("--field-plot")) {
        writeImage(o.text("--field-plot"), plotField(grey, report));
    }
    if (o.has("--field-curve")) {
        writeImage(o.text("--field-curve"),
                   plotFieldCurve(report, true, options.limits ? &*options.limits : nullptr));
    }
    const int status = report.partial()         ? exitStatusFor(report.memberCause)
                       : report.failures() == 0 ? kExitOk
                                                : kExitBelowLimit;
    if (o.has("--json")) {
        Json doc = frameJson(report);
        if (report.partial()) {
            doc["error"] = report.memberFailure;
        }
        doc["exit_status"] = status;
        writeJson(stdout, doc);
    }
    if (report.partial()) {
        std::fprintf(stderr, "talonvireo-sfr measure: %s (partial, region by region, on stdout)\n",
                     report.memberFailure.c_str());
    }
    return status;
}

int run(const OptionValues& o) {
    return runWithJsonOnFailure(o, "frame", "FRAME", measure);
}
}  // namespace

Command measureCommand() {
    return {"measure", "measure a raw chart frame from a file with one library member", declare,
            run};
}

}  // namespace cli
}  // namespace talonvireo
