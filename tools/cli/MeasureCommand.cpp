#include "MeasureCommand.h"

#include <cstdio>
#include <string>

#include "CliError.h"
#include "CommandLine.h"
#include "EdgeReport.h"
#include "FrameFile.h"
#include "FrameJob.h"
#include "Members.h"
#include "OutputFile.h"

namespace talonvireo {
namespace cli {

namespace {
std::string memberNames(const std::vector<Member>& members) {
    std::string names;
    for (const Member& m : members) {
        names += "\n  " + m.name;
    }
    return names;
}
}  // namespace

const char* measureHelp() {
    return "usage: talonvireo-sfr measure FRAME --width W --height H --member NAME [options]\n"
           "Measures a raw chart frame with one library member and prints every edge.\n"
           "FRAME is a raw file of 16-bit little-endian words (W x H x 2 bytes), packed MIPI\n"
           "RAW10 with --packing mipi10 (4 pixels in 5 bytes), or a 16-bit PGM/PNG/TIFF.\n"
           "  --member NAME      talonvireoSFR/K31R22BX, talonvireoSFR/K74T16BX,\n"
           "                     talonvireoSFR_raw14/K31R22BX, talonvireoSFR_raw14/K74T16BX,\n"
           "                     talonvireoSFR_raw16, talonvireoSFR_raw16_HLX5_8K,\n"
           "                     talonvireoSFR_raw{10,14,16}_HLX6C, talonvireoSFR_raw16_HLX6C_8K,\n"
           "                     talonvireoSFR_raw{10,14,16}_RQ8\n"
           "  --roi N            region side (default 80)\n"
           "  --mark N           markSearchSize, the ring radius (default 100)\n"
           "  --freq-divisor D   also report the SFR at Nyquist/D (default 0: not reported)\n"
           "  --packing P        words16 (default) or mipi10, for raw files\n"
           "  --json | --csv     output format (default: a table)\n"
           "  --overlay OUT.png  the frame with every region, its index and SFR at Nyquist/4\n"
           "  --overlay-width W  shrink the overlay picture to W pixels across\n"
           "  --min-sfr X        limit on the SFR at Nyquist/4: failing edges are marked red\n"
           "                     and the exit status is 1\n"
           "exit status: 0 measured, 1 an edge below --min-sfr, 2 bad arguments, 3 unreadable\n"
           "file, 4 file size not W x H x 2, 5 chart not located, 6 region out of bounds,\n"
           "7 SFR calculation failed, 8 any other failure\n";
}

int runMeasure(const std::vector<std::string>& args) {
    std::vector<std::string> optionArgs;
    const std::string path = leadingOperand(args, "measure needs a FRAME file first", optionArgs);
    const CommandLine cl(optionArgs,
                         {"--width", "--height", "--member", "--roi", "--mark", "--freq-divisor",
                          "--packing", "--overlay", "--overlay-width", "--min-sfr"},
                         {"--json", "--csv"});
    const std::vector<Member> members = allMembers();
    if (!cl.has("--member")) {
        throw CliError(kExitBadArguments, "--member is required; one of:" + memberNames(members));
    }
    const Member* member = findMember(members, cl.text("--member", ""));
    if (member == nullptr) {
        throw CliError(kExitBadArguments, "unknown member '" + cl.text("--member", "") +
                                              "'; one of:" + memberNames(members));
    }
    if (cl.has("--json") && cl.has("--csv")) {
        throw CliError(kExitBadArguments, "--json and --csv exclude each other");
    }
    const SFRParam param{static_cast<float>(cl.number("--freq-divisor", 0.0)),
                         cl.integer("--roi", 80), cl.integer("--mark", 100)};
    cv::Mat raw = readFrame(path, cl.integer("--width", 0), cl.integer("--height", 0),
                            parsePacking(cl.text("--packing", "words16")));

    FrameReport report = measureRawFrame(*member, raw, param);
    report.hasLimit = cl.has("--min-sfr");
    report.minSfr = cl.number("--min-sfr", 0.0);
    if (cl.has("--json")) {
        printJson(stdout, report);
    } else if (cl.has("--csv")) {
        printCsv(stdout, report);
    } else {
        printTable(stdout, report);
    }
    if (cl.has("--overlay")) {
        const int overlayWidth = cl.integer("--overlay-width", 0);
        writeImage(
            cl.text("--overlay", ""),
            shrinkTo(drawOverlay(greyView(raw, member->bits), report, overlayWidth), overlayWidth));
    }
    return report.failures() == 0 ? kExitOk : kExitBelowLimit;
}

}  // namespace cli
}  // namespace talonvireo
