#include "ChartCommand.h"

#include <chrono>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "ExitStatus.h"
#include "RenderDescription.h"
#include "render/ChartDesign.h"
#include "render/ChartRenderer.h"
#include "render/ChartTruth.h"
#include "render/SfrTruth.h"
#include "station/DngWriter.h"
#include "station/FrameFile.h"
#include "station/JsonDocument.h"
#include "station/OutputFile.h"

namespace talonvireo {
namespace cli {

// The commands are thin: what they run is the station's.
using namespace station;

namespace {
// Ring radii (markSearchSize) for which single-corner edge centres are listed.
constexpr int kRingRadii[] = {90, 100, 120};

// MIPI RAW10: four samples in five bytes, bits 9..2 of each, then their bits 1..0 packed
// into the fifth byte with the first sample in the lowest pair. A last group of fewer than
// four samples is padded with zeros.
// An 8-bit view of the frame: raw words scaled down to 8 bits.
cv::Mat viewable(const cv::Mat& frame, int bits) {
    if (frame.depth() == CV_8U) {
        return frame;
    }
    cv::Mat view;
    frame.convertTo(view, CV_8U, 255.0 / (std::ldexp(1.0, bits) - 1.0));
    return view;
}

void writeTruth(const std::string& path, const render::ChartDesign& design,
                const render::ChartTransform& transform, double sigma, int width, int height,
                int bits) {
    Json doc = documentHead("chart-truth", "");
    doc["project"] = render::projectName(design.project);
    doc["width"] = width;
    doc["height"] = height;
    doc["bits"] = bits;
    doc["sigma"] = sigma;
    Json layouts = Json::array();
    for (std::size_t l = 0; l < design.layouts.size(); ++l) {
        const render::LayoutTruth t = render::layoutTruth(design, static_cast<int>(l), transform);
        Json corners = Json::array();
        for (std::size_t i = 0; i < t.corners.size(); ++i) {
            corners.push_back({{"row", i},
                               {"x", t.corners[i].position.x},
                               {"y", t.corners[i].position.y},
                               {"kind", t.corners[i].kind}});
        }
        Json edges = Json::array();
        for (const render::EdgeTruth& edge : t.edges) {
            const double angle = render::edgeAngleDeg(design, t, edge, transform, kRingRadii[0]);
            Json centres;
            for (int radius : kRingRadii) {
                const cv::Point2d c = render::edgeCentre(design, t, edge, transform, radius);
                centres[std::to_string(radius)] = {c.x, c.y};
            }
            Json e;
            e["index"] = edge.edgeIndex;
            e["corners"] = edge.cornerCount;
            e["code"] = edge.code;
            e["angle_deg"] = angle;
            e["centres"] = centres;
            e["sfr_quarter_nyquist"] = render::trueSfr(0.125, sigma, angle);
            e["sfr_half_nyquist"] = render::trueSfr(0.25, sigma, angle);
            e["mtf50"] = render::trueMtf50(sigma, angle);
            edges.push_back(e);
        }
        layouts.push_back(
            {{"name", design.layouts[l].name}, {"corners", corners}, {"edges", edges}});
    }
    doc["layouts"] = layouts;
    OutputFile out(path);
    writeJson(out.get(), doc);
    out.close();
}
void declare(OptionValues& o) {
    o.command().description(
        "Renders a synthetic chart frame exactly (Gaussian blur integrated over each pixel)\n"
        "and writes PREFIX.raw (8-bit bytes or 16-bit little-endian words), PREFIX.png (an\n"
        "8-bit view) and PREFIX.json (corners, edge centres for rings 90/100/120, angles,\n"
        "true SFR at Nyquist/4 and Nyquist/2, MTF50).");
    o.option("--project", "NAME", "K74T16BX, K83P09BQ, HLX6C or K31R22BX (default K74T16BX)");
    o.option("--width", "W", "frame width (default 4000; the chart keeps its place)");
    o.option("--height", "H", "frame height (default 3000)");
    o.option("--bits", "B", "8 (grey bytes), 10, 14 or 16 (raw words) (default 10)");
    o.flag("--bayer", "mosaic of phase R G (rows R G / G B)");
    o.option("--gain-r", "G", "gain of the red sites (default 1)");
    o.option("--gain-g", "G", "gain of the green sites (default 1)");
    o.option("--gain-b", "G", "gain of the blue sites (default 1)");
    o.option("--sigma", "S", "blur standard deviation in pixels, 0.3 .. 5 (default 1)");
    o.option("--dark", "D", "dark level, fraction of full scale (default 0.12)");
    o.option("--light", "L",
             "light level, fraction of full scale (default 0.8); above 1 the frame is "
             "over-exposed and clips at full scale");
    o.option("--shift-x", "X", "chart shift right, pixels");
    o.option("--shift-y", "Y", "chart shift down, pixels");
    o.option("--rotation", "DEG", "chart rotation, degrees");
    o.option("--scale", "S", "chart scale (default 1)");
    o.option("--persp-x", "P", "perspective along x");
    o.option("--persp-y", "P", "perspective along y");
    o.option("--shot-noise", "N", "noise sd at full scale, output units (default 0)");
    o.option("--read-noise", "N", "level-independent noise sd, output units (default 0)");
    o.option("--seed", "N", "noise seed (default 1)");
    o.option("--packing", "P",
             "words16 (default; raw8 for --bits 8), mipi10 (--bits 10: 4 pixels in 5 bytes), "
             "mipi12 (--bits 8 or 10: 2 pixels in 3 bytes) or raw8 (--bits 8)");
    o.option("--stride", "BYTES", "bytes from one line to the next (padded lines)");
    o.option("--offset", "BYTES", "zero bytes before the first line (a header)");
    o.flag("--dng", "also write the mosaic as PREFIX.dng (needs --bayer), as a bench camera would");
    o.option("--out", "PREFIX", "output path prefix (default chart)");
    declareDescriptionOptions(o);
}

int run(const OptionValues& o) {
    if (o.has("--chart")) {
        if (o.has("--project") || o.has("--persp-x") || o.has("--persp-y")) {
            throw station::Failure(station::Cause::BadInput,
                                   "--chart excludes --project, --persp-x and --persp-y");
        }
        return renderDescriptionFrame(o);
    }
    for (const char* only :
         {"--k1", "--sigma-corner", "--corner-light", "--clutter", "--focus-z", "--focus-stack",
          "--best-focus", "--focus-slope-x", "--focus-slope-y", "--focus-curvature",
          "--astigmatism", "--defocus-gain", "--pixel-pitch"}) {
        if (o.has(only)) {
            throw station::Failure(station::Cause::BadInput,
                                   std::string(only) + " goes with --chart");
        }
    }
    render::ChartProject project;
    const std::string name = o.text("--project", "K74T16BX");
    if (!render::parseProject(name, project)) {
        throw station::Failure(station::Cause::BadInput, "unknown project '" + name + "'");
    }
    const int width = o.integer("--width", 4000, 1, 20000);
    const int height = o.integer("--height", 3000, 1, 20000);
    const double sigma = o.number("--sigma", 1.0, 0.3, 5.0);
    const double big = 1e5;
    render::ChartTransform transform;
    transform.shiftX = o.number("--shift-x", 0.0, -big, big);
    transform.shiftY = o.number("--shift-y", 0.0, -big, big);
    transform.rotationDeg = o.number("--rotation", 0.0, -360.0, 360.0);
    transform.scale = o.number("--scale", 1.0, 0.0, 100.0, true);
    transform.perspX = o.number("--persp-x", 0.0, -1.0, 1.0);
    transform.perspY = o.number("--persp-y", 0.0, -1.0, 1.0);
    render::ChartExposure exposure;
    exposure.bits = o.integer("--bits", 10, 8, 16);
    if (exposure.bits != 8 && exposure.bits != 10 && exposure.bits != 14 && exposure.bits != 16) {
        throw station::Failure(station::Cause::BadInput, "--bits must be 8, 10, 14 or 16");
    }
    exposure.bayer = o.has("--bayer");
    exposure.gainRed = o.number("--gain-r", 1.0, 0.0, 100.0);
    exposure.gainGreen = o.number("--gain-g", 1.0, 0.0, 100.0);
    exposure.gainBlue = o.number("--gain-b", 1.0, 0.0, 100.0);
    exposure.dark = o.number("--dark", exposure.dark, 0.0, 1.0);
    exposure.light = o.number("--light", exposure.light, 0.0, 50.0);
    exposure.shotNoise = o.number("--shot-noise", 0.0, 0.0, big);
    exposure.readNoise = o.number("--read-noise", 0.0, 0.0, big);
    exposure.seed = static_cast<std::uint32_t>(o.integer("--seed", 1, 0, 2147483647));
    const std::string prefix = o.text("--out", "chart");
    const std::string packingName = o.text("--packing", exposure.bits == 8 ? "raw8" : "words16");
    RawLayout layout;
    layout.width = width;
    layout.height = height;
    layout.packing = parsePacking(packingName);
    layout.stride = o.integer("--stride", 0, 1, 1 << 30);
    layout.offset = o.integer("--offset", 0, 0, 1 << 30);
    checkRawLayout(layout);
    const int most = packingBits(layout.packing);
    if (exposure.bits > most || (layout.packing == Packing::Mipi10 && exposure.bits != 10)) {
        throw station::Failure(
            station::Cause::BadInput,
            "--packing " + packingName + " needs --bits " +
                (layout.packing == Packing::Mipi10 ? std::string("10")
                                                   : std::to_string(most) + " or fewer"));
    }
    if (o.has("--dng") && !exposure.bayer) {
        throw station::Failure(station::Cause::BadInput,
                               "--dng needs --bayer: a DNG holds a mosaic");
    }
    checkOutputPath("--out", prefix + ".raw");
    checkImageOutputPath("--out", prefix + ".png");

    const auto start = std::chrono::steady_clock::now();
    const render::ChartDesign design = render::designChart(project);
    const cv::Mat coverage = render::chartCoverage(design.squares, transform, sigma, width, height);
    const cv::Mat frame = render::exposeChart(coverage, exposure);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    writeRawFrame(prefix + ".raw", frame, layout);
    if (o.has("--dng")) {
        cv::Mat words;
        frame.convertTo(words, CV_16U);
        writeDng(prefix + ".dng", words, exposure.bits);
    }
    writeImage(prefix + ".png", viewable(frame, exposure.bits));
    writeTruth(prefix + ".json", design, transform, sigma, width, height, exposure.bits);
    std::printf("%s chart, %d x %d, %d bits%s, sigma %.2f: rendered in %.2f s\n", name.c_str(),
                width, height, exposure.bits, exposure.bayer ? " Bayer RG" : "", sigma, seconds);
    std::printf("wrote %s.raw, %s.png, %s.json%s\n", prefix.c_str(), prefix.c_str(), prefix.c_str(),
                o.has("--dng") ? (", " + prefix + ".dng").c_str() : "");
    return 0;
}
}  // namespace

Command renderCommand() {
    return {"render", "render a synthetic chart frame and write it with its ground truth", declare,
            run};
}

}  // namespace cli
}  // namespace talonvireo
