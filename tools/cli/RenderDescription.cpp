#include "RenderDescription.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <string>

#include "render/DescriptionRenderer.h"
#include "render/DescriptionTruth.h"
#include "render/GridChart.h"
#include "station/BuiltinCharts.h"
#include "station/DngWriter.h"
#include "station/Failure.h"
#include "station/FrameFile.h"
#include "station/JsonDocument.h"
#include "station/OutputFile.h"

namespace talonvireo {
namespace cli {

using namespace station;

namespace {

ChartDescription describedChart(const std::string& arg) {
    if (arg == "grid") {
        ChartDescription grid = render::gridChart();
        grid.name = "grid";
        return grid;
    }
    return resolveChart(arg);
}

// Lamps, marks and print between the squares of a 4000 x 3000 frame, scaled to the frame.
render::RenderClutter clutterFor(int width, int height) {
    render::RenderClutter c;
    const double sx = width / 4000.0, sy = height / 3000.0;
    for (int k = 0; k < 6; ++k) {
        c.discs.push_back({333.3 * (2 * k + 1) * sx, 333.3 * (k % 3 + 1) * sy, 40.0 * sx, 1});
        c.texts.push_back({(333.3 * (2 * k + 1) - 40.0) * sx, (333.3 * (k % 4 + 1) + 150.0) * sy,
                           20.0 * sx, "TALON-" + std::to_string(k), 3.0 * k, 1});
    }
    c.spots.push_back({2000.0 * sx, 1333.3 * sy, 25.0 * sx, 4.0});
    return c;
}

void writeTruth(const std::string& path, const ChartDescription& chart,
                const render::DescriptionRenderSettings& s) {
    Json doc = documentHead("description-truth", "");
    doc["chart"] = chart.name;
    doc["width"] = s.width;
    doc["height"] = s.height;
    doc["bits"] = s.bits;
    doc["k1"] = s.placement.k1;
    doc["sigma_centre"] = s.sigmaCentre;
    doc["sigma_corner"] = s.sigmaCorner;
    Json edges = Json::array();
    for (const render::DescriptionEdgeTruth& t : render::descriptionTruth(chart, s)) {
        Json e;
        e["edge"] = t.slot;
        e["name"] = t.name;
        e["x"] = t.centre.x;
        e["y"] = t.centre.y;
        e["midpoint"] = {t.midpoint.x, t.midpoint.y};
        e["angle_deg"] = t.angleDeg;
        e["length_px"] = t.length;
        e["bow_px"] = t.bow;
        e["sigma"] = t.sigma;
        e["inside"] = t.inside;
        e["sfr_quarter_nyquist"] = t.sfr(0.125);
        e["sfr_half_nyquist"] = t.sfr(0.25);
        edges.push_back(e);
    }
    doc["edges"] = edges;
    OutputFile out(path);
    writeJson(out.get(), doc);
    out.close();
}

}  // namespace

void declareDescriptionOptions(OptionValues& o) {
    o.option("--chart", "CHART",
             "render a chart description instead of a project's chart: a built-in chart's "
             "name, a .toml file, or grid (9 x 12 turned squares); PREFIX.json then holds "
             "every edge's truth");
    o.option("--k1", "K",
             "with --chart: radial distortion at the frame corners, -0.3 .. 0.3 (-0.1: 10 % "
             "barrel, 0.1: 10 % pincushion; default 0)");
    o.option("--sigma-corner", "S",
             "with --chart: blur at the frame corners, growing with the square of the field "
             "from --sigma at the centre (default: --sigma)");
    o.option("--corner-light", "L",
             "with --chart: illumination at the frame corners, 0.05 .. 1 (default 1)");
    o.flag("--clutter", "with --chart: add round marks, print and a clipping lamp between squares");
}

int renderDescriptionFrame(const OptionValues& o) {
    const ChartDescription chart = describedChart(o.text("--chart"));
    const int width = o.integer("--width", 4000, 1, 20000);
    const int height = o.integer("--height", 3000, 1, 20000);
    render::DescriptionRenderSettings s = render::settingsForFrame(width, height);
    // Shift, turn and scale about the frame centre, then the distortion.
    const double big = 1e5;
    const double scale = o.number("--scale", 1.0, 0.0, 100.0, true);
    const double turn = o.number("--rotation", 0.0, -360.0, 360.0) * M_PI / 180.0;
    const double c = scale * std::cos(turn), sn = scale * std::sin(turn);
    const double cx = s.placement.centreX, cy = s.placement.centreY;
    const double sx = o.number("--shift-x", 0.0, -big, big);
    const double sy = o.number("--shift-y", 0.0, -big, big);
    const double h[9] = {
        c, -sn, cx - c * cx + sn * cy + sx, sn, c, cy - sn * cx - c * cy + sy, 0.0, 0.0, 1.0};
    std::copy(h, h + 9, s.placement.homography);
    s.placement.k1 = o.number("--k1", 0.0, -0.3, 0.3);
    s.sigmaCentre = o.number("--sigma", 1.0, 0.3, 5.0);
    s.sigmaCorner = o.number("--sigma-corner", s.sigmaCentre, 0.3, 5.0);
    s.dark = o.number("--dark", s.dark, 0.0, 1.0);
    s.light = o.number("--light", s.light, 0.0, 1.0);
    s.cornerLight = o.number("--corner-light", 1.0, 0.05, 1.0);
    s.shotNoise = o.number("--shot-noise", 0.0, 0.0, big);
    s.readNoise = o.number("--read-noise", 0.0, 0.0, big);
    s.seed = static_cast<std::uint32_t>(o.integer("--seed", 1, 0, 2147483647));
    s.bits = o.integer("--bits", 10, 8, 16);
    s.bayer = o.has("--bayer");
    s.gainRed = o.number("--gain-r", 1.0, 0.0, 100.0, true);
    s.gainGreen = o.number("--gain-g", 1.0, 0.0, 100.0, true);
    s.gainBlue = o.number("--gain-b", 1.0, 0.0, 100.0, true);
    if (o.has("--clutter")) {
        s.clutter = clutterFor(width, height);
    }
    if (s.bits != 8 && s.bits != 10 && s.bits != 14 && s.bits != 16) {
        throw Failure(Cause::BadInput, "--bits must be 8, 10, 14 or 16");
    }
    try {
        render::checkRenderSettings(s);
    } catch (const std::invalid_argument& e) {
        throw Failure(Cause::BadInput, e.what());
    }
    if (o.has("--packing") || o.has("--stride") || o.has("--offset")) {
        throw Failure(Cause::BadInput, "--chart frames are written as words or bytes, unpacked");
    }
    const std::string prefix = o.text("--out", "chart");
    checkOutputPath("--out", prefix + ".raw");
    checkImageOutputPath("--out", prefix + ".png");
    if (o.has("--dng") && !s.bayer) {
        throw Failure(Cause::BadInput, "--dng needs --bayer: a DNG holds a mosaic");
    }
    const auto start = std::chrono::steady_clock::now();
    const cv::Mat frame = render::renderDescription(chart, s);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    RawLayout layout;
    layout.width = width;
    layout.height = height;
    layout.packing = s.bits == 8 ? Packing::Raw8 : Packing::Words16;
    writeRawFrame(prefix + ".raw", frame, layout);
    if (o.has("--dng")) {
        writeDng(prefix + ".dng", frame, s.bits);
    }
    cv::Mat view = frame;
    if (frame.depth() != CV_8U) {
        frame.convertTo(view, CV_8U, 255.0 / (std::ldexp(1.0, s.bits) - 1.0));
    }
    writeImage(prefix + ".png", view);
    writeTruth(prefix + ".json", chart, s);
    std::printf("%s chart, %d x %d, %d bits%s, sigma %.2f to %.2f, k1 %+.3f: rendered in %.2f s\n",
                chart.name.c_str(), width, height, s.bits, s.bayer ? " Bayer RG" : "",
                s.sigmaCentre, s.sigmaCorner, s.placement.k1, seconds);
    std::printf("wrote %s.raw, %s.png, %s.json%s\n", prefix.c_str(), prefix.c_str(), prefix.c_str(),
                o.has("--dng") ? (", " + prefix + ".dng").c_str() : "");
    return 0;
}

}  // namespace cli
}  // namespace talonvireo
