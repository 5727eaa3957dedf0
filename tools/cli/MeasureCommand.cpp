#include "MeasureCommand.h"

#include <cmath>
#include <cstdio>
#include <optional>
#include <string>

#include "CliError.h"
#include "EdgeReport.h"
#include "FieldCurve.h"
#include "FieldPlot.h"
#include "FrameFile.h"
#include "FrameGrading.h"
#include "Limits.h"
#include "Members.h"
#include "OutputFile.h"
#include "PixelPitch.h"
#include "RegionCut.h"

namespace talonvireo {
namespace cli {

namespace {
constexpr int kMaxSide = 100000;  // pixels; far beyond any sensor, well inside int

std::string memberNames(const std::vector<Member>& members) {
    std::string names;
    for (const Member& m : members) {
        names += "\n  " + m.name;
    }
    return names;
}

void declare(OptionValues& o) {
    o.operand("FRAME",
              "raw file of 16-bit little-endian words (W x H x 2 bytes; .raw .bin .dat or no "
              "extension), packed MIPI RAW10 with --packing mipi10, or a 16-bit PGM/PNG/TIFF");
    o.option("--member", "NAME",
             "the library member: talonvireoSFR/K31R22BX, talonvireoSFR/K74T16BX, "
             "talonvireoSFR_raw14/K31R22BX, talonvireoSFR_raw14/K74T16BX, talonvireoSFR_raw16, "
             "talonvireoSFR_raw16_HLX5_8K, talonvireoSFR_raw{10,14,16}_HLX6C, "
             "talonvireoSFR_raw16_HLX6C_8K, talonvireoSFR_raw{10,14,16}_RQ8 (required)");
    o.option("--width", "INT", "frame width of a raw file");
    o.option("--height", "INT", "frame height of a raw file");
    o.option("--roi", "INT", "region side (default 80)");
    o.option("--mark", "INT", "markSearchSize, the ring radius (default 100)");
    o.option("--freq-divisor", "NUMBER",
             "also report the SFR at Nyquist/D, D above 0 (default: not reported)");
    o.option("--packing", "P", "words16 (default) or mipi10, for raw files");
    o.option("--method", "M",
             "precise: also measure every region the member cut with the precise method "
             "(SFR at Nyquist/4, /2 and MTF50 across the edge) and give MTF50 by the member's "
             "own method; the member's figures are unchanged (default: classic, none added)");
    o.flag("--per-channel-raw",
           "with --method precise: also measure the raw colour planes R, Gr, Gb, B under each "
           "region, each from its own samples");
    o.flag("--json", "output as JSON");
    o.flag("--csv", "output as CSV");
    o.option("--overlay", "OUT.png", "the frame with every region, its index and SFR at Nyquist/4");
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
    o.option("--pixel-pitch", "LENGTH",
             "the sensor's pixel pitch with its unit (1.12um, 0.00112mm): MTF50 is also given in "
             "line pairs per mm and line widths per picture height");
    o.option("--limits", "FILE.toml",
             "grade every edge against a limits file (minimums per field zone, orientation and "
             "slot on sfr_quarter_nyquist, sfr_half_nyquist, sfr_custom, mtf50): failing edges "
             "name the limit, and the exit status is 1");
    o.option("--chart-fit-limit", "PX",
             "refuse a frame whose centres fit the member's chart design worse than this "
             "(rms px, default 35)");
    o.command().footer(
        "exit status: 0 measured, 1 an edge below --min-sfr or failing --limits, 2 bad\n"
        "arguments (a limits file's error names its line), 3 unreadable\n"
        "file, 4 file size not W x H x 2, 5 chart not located, 6 region out of bounds,\n"
        "7 SFR calculation failed, 8 any other failure, 9 not the member's chart,\n"
        "10 samples exceed the member's bit depth");
}

int run(const OptionValues& o) {
    // Every argument and output path is checked before the frame is read.
    const std::vector<Member> members = allMembers();
    if (!o.has("--member")) {
        throw CliError(kExitBadArguments, "--member is required; one of:" + memberNames(members));
    }
    const Member* member = findMember(members, o.text("--member"));
    if (member == nullptr) {
        throw CliError(kExitBadArguments, "unknown member '" + o.text("--member") +
                                              "'; one of:" + memberNames(members));
    }
    if (o.has("--json") && o.has("--csv")) {
        throw CliError(kExitBadArguments, "--json and --csv exclude each other");
    }
    FrameOptions options;
    options.param =
        SFRParam{static_cast<float>(o.number("--freq-divisor", 0.0, 0.0, 1e6, true)),
                 o.integer("--roi", 80, 1, kMaxSide), o.integer("--mark", 100, 1, kMaxSide)};
    options.width = o.integer("--width", 0, 1, kMaxSide);
    options.height = o.integer("--height", 0, 1, kMaxSide);
    options.packing = parsePacking(o.text("--packing", "words16"));
    const double minSfr = o.number("--min-sfr", 0.0, 0.0, 2.0);
    options.chartFitLimit = o.number("--chart-fit-limit", kChartFitLimitPx, 0.0, 1e6, true);
    const int overlayWidth = o.integer("--overlay-width", 0, 1, kMaxSide);
    if (o.has("--limits") && o.has("--min-sfr")) {
        throw CliError(kExitBadArguments, "--limits and --min-sfr exclude each other");
    }
    // A limits file is read and checked before any measuring.
    if (o.has("--limits")) {
        options.limits = readLimits(o.text("--limits"));
    }
    if (o.has("--pixel-pitch")) {
        options.pixelPitchUm = parsePixelPitch(o.text("--pixel-pitch"));
    }
    options.precise = parseMethod(o.text("--method", "classic")) == SfrMethod::kPrecise;
    options.planes = o.has("--per-channel-raw");
    checkFrameOptions(options);
    if (o.has("--overlay")) {
        checkImageOutputPath("--overlay", o.text("--overlay"));
    }
    for (const char* picture : {"--field-plot", "--field-curve"}) {
        if (o.has(picture)) {
            checkImageOutputPath(picture, o.text(picture));
        }
    }

    GradedFrame graded = gradeFrameFile(*member, o.text("FRAME"), options, stderr);
    FrameReport& report = graded.report;
    if (o.has("--min-sfr")) {
        report.hasLimit = true;
        report.minSfr = minSfr;
    }
    if (o.has("--json")) {
        writeJson(stdout, frameJson(report));
    } else if (o.has("--csv")) {
        printCsv(stdout, report);
    } else {
        printTable(stdout, report);
    }
    if (o.has("--overlay")) {
        writeImage(o.text("--overlay"),
                   shrinkTo(drawOverlay(greyView(graded.raw, member->bits), report, overlayWidth),
                            overlayWidth));
    }
    if (o.has("--field-plot")) {
        writeImage(o.text("--field-plot"), plotField(greyView(graded.raw, member->bits), report));
    }
    if (o.has("--field-curve")) {
        writeImage(o.text("--field-curve"), plotFieldCurve(report, true));
    }
    return report.failures() == 0 ? kExitOk : kExitBelowLimit;
}
}  // namespace

Command measureCommand() {
    return {"measure", "measure a raw chart frame from a file with one library member", declare,
            run};
}

}  // namespace cli
}  // namespace talonvireo
