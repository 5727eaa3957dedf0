#include "FrameArguments.h"

#include <string>

#include "ExitStatus.h"
#include "station/FrameFile.h"
#include "station/Limits.h"
#include "station/PixelPitch.h"
#include "station/RegionCut.h"

namespace talonvireo {
namespace cli {

// The commands are thin: what they run is the station's.
using namespace station;

namespace {
constexpr int kMaxSide = 100000;  // pixels; far beyond any sensor, well inside int
constexpr int kMaxLayoutBytes = 1 << 30;

std::string memberNames(const std::vector<Member>& members) {
    std::string names;
    for (const Member& m : members) {
        names += "\n  " + m.name;
    }
    return names;
}
}  // namespace

void declareFrameArguments(OptionValues& o) {
    o.option("--member", "NAME",
             "the library member: talonvireoSFR/K31R22BX, talonvireoSFR/K74T16BX, "
             "talonvireoSFR_raw14/K31R22BX, talonvireoSFR_raw14/K74T16BX, talonvireoSFR_raw16, "
             "talonvireoSFR_raw16_HLX5_8K, talonvireoSFR_raw{10,14,16}_HLX6C, "
             "talonvireoSFR_raw16_HLX6C_8K, talonvireoSFR_raw{10,14,16}_RQ8 (this or --chart)");
    o.option("--chart", "CHART",
             "measure any chart instead of a member: auto (every slanted edge of every "
             "dark-on-light or light-on-dark quadrilateral found), a built-in chart's name "
             "(K74T16BX, K83P09BQ, HLX6C, K31R22BX) or a chart description file (.toml); the "
             "precise method unless --method classic");
    o.option("--bayer", "PHASE",
             "with --chart: the mosaic of a raw file or one-channel image: RG (default for raw "
             "files), GR, GB, BG, or none for grey samples (default for images)");
    o.option("--bits", "INT",
             "with --chart: significant bits of 16-bit samples (default: the packing's, 16 for "
             "words16)");
    o.option("--width", "INT", "frame width of a raw file");
    o.option("--height", "INT", "frame height of a raw file");
    o.option("--packing", "P",
             "a raw file's samples: words16 (default, little-endian 16-bit words), mipi10 or "
             "mipi12 (MIPI CSI-2 RAW10 / RAW12), raw8 (one byte per sample)");
    o.option("--stride", "BYTES",
             "bytes from one line of a raw file to the next (default: the packed line, no "
             "padding)");
    o.option("--offset", "BYTES", "bytes before the first line of a raw file (a header)");
    o.option("--roi", "INT", "region side (default 80)");
    o.option("--mark", "INT", "markSearchSize, the ring radius (default 100)");
    o.option("--freq-divisor", "NUMBER",
             "also report the SFR at Nyquist/D, D above 0 (default: not reported)");
    o.option("--method", "M",
             "precise: also measure every region the member cut with the precise method "
             "(SFR at Nyquist/4, /2 and MTF50 across the edge) and give MTF50 by the member's "
             "own method; the member's figures are unchanged (default: classic, none added)");
    o.flag("--per-channel-raw",
           "with --method precise: also measure the raw colour planes R, Gr, Gb, B under each "
           "region, each from its own samples");
    o.option("--pixel-pitch", "LENGTH",
             "the sensor's pixel pitch with its unit (1.12um, 1120nm, 0.00112mm; the micro sign "
             "and the Greek mu stand for u too): MTF50 is also given in line pairs per mm and "
             "line widths per picture height");
    o.option("--limits", "FILE.toml",
             "grade every edge against a limits file (minimums per field zone, orientation and "
             "slot on sfr_quarter_nyquist, sfr_half_nyquist, sfr_custom, mtf50, and with "
             "--pixel-pitch mtf50_lp_per_mm, mtf50_lw_per_ph): failing edges name the limit, "
             "and the exit status is 1");
    o.flag("--accept-clipped",
           "an edge whose transition zone is clipped (over 5 % of its raw samples at the white "
           "level) is warned about but not flagged, so it passes on its figures");
    o.option("--chart-fit-limit", "PX",
             "refuse a frame whose centres fit the member's chart design worse than this "
             "(rms px, default 35)");
}

const Member& memberArgument(const OptionValues& o, const std::vector<Member>& members) {
    if (o.has("--member") && o.has("--chart")) {
        throw station::Failure(station::Cause::BadInput, "--member and --chart exclude each other");
    }
    if (!o.has("--member")) {
        throw station::Failure(station::Cause::BadInput,
                               "--member is required; one of:" + memberNames(members));
    }
    const Member* member = findMember(members, o.text("--member"));
    if (member == nullptr) {
        throw station::Failure(station::Cause::BadInput, "unknown member '" + o.text("--member") +
                                                             "'; one of:" + memberNames(members));
    }
    return *member;
}

ChartSamples chartSamples(const OptionValues& o) {
    ChartSamples samples;
    samples.bayer = o.text("--bayer", "RG");
    samples.bits = o.integer("--bits", 0, 8, 16);
    return samples;
}

FrameOptions frameArguments(const OptionValues& o) {
    FrameOptions options;
    options.param =
        SFRParam{static_cast<float>(o.number("--freq-divisor", 0.0, 0.0, 1e6, true)),
                 o.integer("--roi", 80, 1, kMaxSide), o.integer("--mark", 100, 1, kMaxSide)};
    options.layout.width = o.integer("--width", 0, 1, kMaxSide);
    options.layout.height = o.integer("--height", 0, 1, kMaxSide);
    options.layout.packing = parsePacking(o.text("--packing", "words16"));
    options.layout.stride = o.integer("--stride", 0, 1, kMaxLayoutBytes);
    options.layout.offset = o.integer("--offset", 0, 0, kMaxLayoutBytes);
    checkRawLayout(options.layout);
    options.chartFitLimit = o.number("--chart-fit-limit", kChartFitLimitPx, 0.0, 1e6, true);
    options.acceptClipped = o.has("--accept-clipped");
    if (o.has("--limits")) {
        options.limits = readLimits(o.text("--limits"));
    }
    if (o.has("--pixel-pitch")) {
        options.pixelPitchUm = parsePixelPitch(o.text("--pixel-pitch"));
    }
    options.planes = o.has("--per-channel-raw");
    if (o.has("--chart")) {
        // A chart's figures are the method's own, precise unless asked otherwise.
        options.chartMethod = parseMethod(o.text("--method", "precise"));
        return options;
    }
    if (o.has("--bayer") || o.has("--bits")) {
        throw station::Failure(station::Cause::BadInput,
                               "--bayer and --bits go with --chart (a member knows its own)");
    }
    options.precise = parseMethod(o.text("--method", "classic")) == SfrMethod::kPrecise;
    checkFrameOptions(options);
    return options;
}

}  // namespace cli
}  // namespace talonvireo
