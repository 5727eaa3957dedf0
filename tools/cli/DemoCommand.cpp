#include "DemoCommand.h"

#include <chrono>
#include <cstdio>

#include "CliError.h"
#include "CommandLine.h"
#include "EdgeReport.h"
#include "FrameJob.h"
#include "Members.h"
#include "OutputFile.h"
#include "render/ChartRenderer.h"
#include "render/RecordTruth.h"

namespace talonvireo {
namespace cli {

const char* demoHelp() {
    return "usage: talonvireo-sfr demo [options]\n"
           "Renders a project's chart as a raw Bayer R G frame with a known Gaussian blur,\n"
           "measures it with the matching library member and prints every edge's centre and\n"
           "SFR beside the truth; writes PREFIX.png (overlay) and PREFIX.json (report).\n"
           "  --project NAME   K31R22BX, K74T16BX, K83P09BQ or HLX6C (default K31R22BX)\n"
           "  --bits B         10, 14 or 16 significant bits per word (default 10)\n"
           "  --8k             a 7680 x 4320 frame (K74T16BX and HLX6C at 16 bits)\n"
           "  --sigma S        blur standard deviation in pixels (default 0.8)\n"
           "  --roi N          region side (default 80)\n"
           "  --mark N         markSearchSize, the ring radius (default 100)\n"
           "  --freq-divisor D custom frequency Nyquist/D (default 8)\n"
           "  --min-sfr X      limit on the SFR at Nyquist/4 for the pass/fail column\n"
           "  --overlay-width W  shrink the overlay picture to W pixels across\n"
           "  --out PREFIX     output prefix (default talonvireo-demo)\n";
}

int runDemo(const std::vector<std::string>& args) {
    const CommandLine cl(args,
                         {"--project", "--bits", "--sigma", "--roi", "--mark", "--freq-divisor",
                          "--min-sfr", "--out", "--overlay-width"},
                         {"--8k"});
    render::ChartProject project;
    const std::string projectName = cl.text("--project", "K31R22BX");
    if (!render::parseProject(projectName, project)) {
        throw CliError(kExitBadArguments, "unknown project '" + projectName +
                                              "' (K31R22BX, K74T16BX, K83P09BQ or HLX6C)");
    }
    const int bits = cl.integer("--bits", 10);
    const bool eightK = cl.has("--8k");
    const std::vector<Member> members = allMembers();
    const Member* member = memberFor(members, project, bits, eightK);
    if (member == nullptr) {
        throw CliError(kExitBadArguments, "no member measures " + projectName + " at " +
                                              std::to_string(bits) + " bits" +
                                              (eightK ? " on 8K frames" : ""));
    }
    const double sigma = cl.number("--sigma", 0.8);
    const SFRParam param{static_cast<float>(cl.number("--freq-divisor", 8.0)),
                         cl.integer("--roi", 80), cl.integer("--mark", 100)};
    const std::string prefix = cl.text("--out", "talonvireo-demo");
    const int width = eightK ? 7680 : 4000;
    const int height = eightK ? 4320 : 3000;

    const auto start = std::chrono::steady_clock::now();
    render::ChartExposure exposure;
    exposure.bayer = true;
    exposure.bits = bits;
    const render::ChartDesign design = render::designChart(project);
    cv::Mat raw = render::exposeChart(
        render::chartCoverage(design.squares, {}, sigma, width, height), exposure);
    std::printf("rendered the %s chart: %d x %d, Bayer R G, %d-bit words, sigma %.2f (%.1f s)\n",
                projectName.c_str(), width, height, bits, sigma,
                std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());

    FrameReport report = measureRawFrame(*member, raw, param);
    report.hasLimit = cl.has("--min-sfr");
    report.minSfr = cl.number("--min-sfr", 0.0);
    const std::vector<render::EntryTruth> truth =
        render::recordTruth(project, {}, sigma, report.param.markSearchSize);
    for (EdgeRow& row : report.rows) {
        if (row.index < static_cast<int>(truth.size())) {
            row.hasTruth = true;
            row.truth = truth[static_cast<std::size_t>(row.index)];
        }
    }
    printTable(stdout, report);
    std::printf("status 0\n");

    const int overlayWidth = cl.integer("--overlay-width", 0);
    writeImage(prefix + ".png",
               shrinkTo(drawOverlay(greyView(raw, bits), report, overlayWidth), overlayWidth));
    OutputFile json(prefix + ".json");
    printJson(json.get(), report);
    json.close();
    std::printf("wrote %s.png (overlay) and %s.json (report)\n", prefix.c_str(), prefix.c_str());
    return report.failures() == 0 ? kExitOk : kExitBelowLimit;
}

}  // namespace cli
}  // namespace talonvireo
