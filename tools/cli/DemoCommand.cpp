#include "DemoCommand.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "ExitStatus.h"
#include "render/ChartRenderer.h"
#include "render/RecordTruth.h"
#include "station/EdgeReport.h"
#include "station/FieldPosition.h"
#include "station/FrameJob.h"
#include "station/Members.h"
#include "station/OutputFile.h"
#include "station/Overlay.h"

namespace talonvireo {
namespace cli {

// The commands are thin: what they run is the station's.
using namespace station;

namespace {
void declare(OptionValues& o) {
    o.command().description(
        "Renders a project's chart as a raw Bayer R G frame with a known Gaussian blur,\n"
        "measures it with the matching library member and prints every edge's centre and\n"
        "SFR beside the truth; writes PREFIX.png (overlay) and PREFIX.json (report).");
    o.option("--project", "NAME", "K31R22BX, K74T16BX, K83P09BQ or HLX6C (default K31R22BX)");
    o.option("--bits", "B", "10, 14 or 16 significant bits per word (default 10)");
    o.flag("--8k", "a 7680 x 4320 frame (K74T16BX and HLX6C at 16 bits)");
    o.option("--sigma", "S", "blur standard deviation in pixels, 0.3 .. 5 (default 0.8)");
    o.option("--roi", "INT", "region side (default 80)");
    o.option("--mark", "INT", "markSearchSize, the ring radius (default 100)");
    o.option("--freq-divisor", "D", "custom frequency Nyquist/D, D above 0 (default 8)");
    o.option("--min-sfr", "X", "limit 0 .. 2 on the SFR at Nyquist/4 for the pass/fail column");
    o.option("--overlay-width", "INT", "shrink the overlay picture to W pixels across");
    o.option("--out", "PREFIX", "output prefix (default talonvireo-demo)");
}

struct Summary {
    double worstCentreError = 0.0;
    double meanQuarterError = 0.0;  // measured - true, at Nyquist/4
    double meanHalfError = 0.0;
};

Summary summarise(const FrameReport& report) {
    Summary s;
    int n = 0;
    for (const EdgeRow& row : report.rows) {
        if (!row.hasTruth) {
            continue;
        }
        s.worstCentreError = std::max(
            s.worstCentreError,
            std::hypot(row.measured.x - row.truth.centre.x, row.measured.y - row.truth.centre.y));
        s.meanQuarterError += row.measured.sfrQuarterNyquist - row.truth.sfrQuarter;
        s.meanHalfError += row.measured.sfrHalfNyquist - row.truth.sfrHalf;
        ++n;
    }
    if (n > 0) {
        s.meanQuarterError /= n;
        s.meanHalfError /= n;
    }
    return s;
}

int run(const OptionValues& o) {
    render::ChartProject project;
    const std::string projectName = o.text("--project", "K31R22BX");
    if (!render::parseProject(projectName, project)) {
        throw station::Failure(
            station::Cause::BadInput,
            "unknown project '" + projectName + "' (K31R22BX, K74T16BX, K83P09BQ or HLX6C)");
    }
    const int bits = o.integer("--bits", 10, 1, 16);
    const bool eightK = o.has("--8k");
    const std::vector<Member> members = allMembers();
    const Member* member = memberFor(members, projectName, bits, eightK);
    if (member == nullptr) {
        throw station::Failure(station::Cause::BadInput,
                               "no member measures " + projectName + " at " + std::to_string(bits) +
                                   " bits" + (eightK ? " on 8K frames" : ""));
    }
    const double sigma = o.number("--sigma", 0.8, 0.3, 5.0);
    const SFRParam param{static_cast<float>(o.number("--freq-divisor", 8.0, 0.0, 1e6, true)),
                         o.integer("--roi", 80, 1, 100000), o.integer("--mark", 100, 1, 100000)};
    const double minSfr = o.number("--min-sfr", 0.0, 0.0, 2.0);
    const int overlayWidth = o.integer("--overlay-width", 0, 1, 100000);
    const std::string prefix = o.text("--out", "talonvireo-demo");
    const int width = eightK ? 7680 : 4000;
    const int height = eightK ? 4320 : 3000;
    validateParam(*member, width, param);
    checkImageOutputPath("--out", prefix + ".png");
    checkOutputPath("--out", prefix + ".json");

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
    requireMemberSuccess(report);
    describeField(report);
    report.hasLimit = o.has("--min-sfr");
    report.minSfr = minSfr;
    const std::vector<render::EntryTruth> truth =
        render::recordTruth(project, {}, sigma, report.param.markSearchSize);
    for (EdgeRow& row : report.rows) {
        if (row.index < static_cast<int>(truth.size())) {
            row.hasTruth = true;
            row.truth = truth[static_cast<std::size_t>(row.index)];
        }
    }
    printTable(stdout, report);
    const Summary s = summarise(report);
    const bool malvar = member->road == GreyRoad::kMalvar;
    std::printf(
        "summary: worst centre error %.2f px; mean SFR - truth %+.3f at Nyquist/4, %+.3f at "
        "Nyquist/2. %s\n",
        s.worstCentreError, s.meanQuarterError, s.meanHalfError,
        malvar ? "The Malvar demosaic's 5 x 5 kernels sharpen a neutral edge a little, so the "
                 "SFR reads above the optics' truth."
               : "The edge-directed demosaic interpolates across the edge and softens it, so "
                 "the SFR reads below the optics' truth.");
    std::printf("status 0\n");

    writeImage(prefix + ".png",
               shrinkTo(drawOverlay(greyView(raw, bits), report, overlayWidth), overlayWidth));
    OutputFile json(prefix + ".json");
    writeJson(json.get(), frameJson(report));
    json.close();
    std::printf("wrote %s.png (overlay) and %s.json (report)\n", prefix.c_str(), prefix.c_str());
    return report.failures() == 0 ? kExitOk : kExitBelowLimit;
}
}  // namespace

Command demoCommand() {
    return {"demo",
            "render a project's chart as a raw frame, measure it, show measured vs true (the "
            "main job)",
            declare, run};
}

}  // namespace cli
}  // namespace talonvireo
