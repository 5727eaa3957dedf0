#include "RenderDescription.h"

#include <cctype>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "render/DescriptionRenderer.h"
#include "render/DescriptionTruth.h"
#include "render/GridChart.h"
#include "station/BuiltinCharts.h"
#include "station/DngWriter.h"
#include "station/Failure.h"
#include "station/FrameFile.h"
#include "station/JsonDocument.h"
#include "station/OutputFile.h"
#include "station/PixelPitch.h"

namespace talonvireo {
namespace cli {

using namespace station;

namespace {

constexpr int kMostFocusPositions = 61;
constexpr double kFarthestFocusUm = 1e4;    // lens positions and best focus, um
constexpr double kMostDefocusSigma = 50.0;  // px: past it a frame is a grey wash, slow to paint

// The options of the focus model's surface, meaningless without a lens position.
const char* const kSurfaceOptions[] = {"--best-focus",      "--focus-slope-x", "--focus-slope-y",
                                       "--focus-curvature", "--astigmatism",   "--defocus-gain",
                                       "--pixel-pitch"};

// The focus model, and the lens positions of a through-focus stack (empty for one frame).
struct FocusRequest {
    render::FocusSettings settings;
    std::vector<double> stack;
};

// FROM:TO:STEP, um: FROM, FROM + STEP, ... up to TO within rounding.
std::vector<double> stackPositions(const std::string& text) {
    const std::string usage =
        "--focus-stack takes FROM:TO:STEP in um, such as -20:20:2.5, not '" + text + "'";
    double v[3] = {0.0, 0.0, 0.0};
    std::size_t at = 0;
    for (int k = 0; k < 3; ++k) {
        const std::size_t colon = k < 2 ? text.find(':', at) : text.size();
        if (colon == std::string::npos) {
            throw Failure(Cause::BadInput, usage);
        }
        const std::string part = text.substr(at, colon - at);
        char* end = nullptr;
        v[k] = std::strtod(part.c_str(), &end);
        if (part.empty() || end != part.c_str() + part.size() ||
            std::isspace(static_cast<unsigned char>(part[0])) || !std::isfinite(v[k])) {
            throw Failure(Cause::BadInput, usage);
        }
        at = colon + 1;
    }
    const double from = v[0], to = v[1], step = v[2];
    if (std::abs(from) > kFarthestFocusUm || std::abs(to) > kFarthestFocusUm) {
        throw Failure(
            Cause::BadInput,
            "--focus-stack positions must lie within -10000 .. 10000 um, not '" + text + "'");
    }
    if (!(step > 0.0)) {
        throw Failure(Cause::BadInput, "--focus-stack STEP must be above 0, not '" + text + "'");
    }
    if (to < from) {
        throw Failure(Cause::BadInput,
                      "--focus-stack runs up from FROM to TO: TO is below FROM in '" + text + "'");
    }
    // A hair over, so that TO counts when rounding left it just short.
    const double span = (to - from) / step + 1e-9;
    if (span >= kMostFocusPositions) {
        char count[40];
        std::snprintf(count, sizeof count, "%.0f", std::floor(span) + 1.0);
        throw Failure(Cause::BadInput, "--focus-stack '" + text + "' gives " + count +
                                           " positions, at most " +
                                           std::to_string(kMostFocusPositions));
    }
    std::vector<double> positions;
    for (int i = 0; i <= static_cast<int>(std::floor(span)); ++i) {
        // To the nanometre's millionth, so 0:1:0.1 gives 0.3, not 0.30000000000000004.
        positions.push_back(std::round((from + i * step) * 1e9) / 1e9);
    }
    return positions;
}

FocusRequest focusRequest(const OptionValues& o) {
    FocusRequest r;
    const bool single = o.has("--focus-z"), stack = o.has("--focus-stack");
    if (single && stack) {
        throw Failure(Cause::BadInput, "--focus-z and --focus-stack exclude each other");
    }
    if (!single && !stack) {
        for (const char* only : kSurfaceOptions) {
            if (o.has(only)) {
                throw Failure(Cause::BadInput,
                              std::string(only) + " needs --focus-z or --focus-stack");
            }
        }
        return r;
    }
    render::FocusSettings& f = r.settings;
    f.on = true;
    if (single) {
        f.lensZ = o.number("--focus-z", 0.0, -kFarthestFocusUm, kFarthestFocusUm);
    } else {
        r.stack = stackPositions(o.text("--focus-stack"));
    }
    f.bestFocusZ = o.number("--best-focus", 0.0, -kFarthestFocusUm, kFarthestFocusUm);
    f.slopeX = o.number("--focus-slope-x", 0.0, -1000.0, 1000.0);
    f.slopeY = o.number("--focus-slope-y", 0.0, -1000.0, 1000.0);
    f.curvature = o.number("--focus-curvature", 0.0, -1000.0, 1000.0);
    f.astigmatism = o.number("--astigmatism", 0.0, -1000.0, 1000.0);
    f.defocusGain = o.number("--defocus-gain", 0.1, 0.0, 10.0);
    if (o.has("--pixel-pitch")) {
        f.pixelPitchUm = parsePixelPitch(o.text("--pixel-pitch"));
    }
    return r;
}

// Refuses a lens position whose defocus would blur the frame past kMostDefocusSigma.
void checkDefocus(render::DescriptionRenderSettings s, double lensZ) {
    s.focus.lensZ = lensZ;
    const double sigma = render::fieldBlur(s).largest();
    if (!(sigma <= kMostDefocusSigma)) {
        char text[200];
        std::snprintf(text, sizeof text,
                      "at lens position %g um the defocus blurs the frame to sigma %.0f px, "
                      "beyond %.0f: keep the lens nearer best focus or lower --defocus-gain",
                      lensZ, sigma, kMostDefocusSigma);
        throw Failure(Cause::BadInput, text);
    }
}

// The stack's position nearest the best focus at the frame centre.
int nearestBestFocus(const std::vector<double>& positions, double bestFocusZ) {
    int nearest = 0;
    for (int i = 1; i < static_cast<int>(positions.size()); ++i) {
        if (std::abs(positions[i] - bestFocusZ) < std::abs(positions[nearest] - bestFocusZ)) {
            nearest = i;
        }
    }
    return nearest;
}

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

// The truth of the frame `s` renders; for a stack (`positions`) s holds the position the
// edges' sigma and SFR are given at.
void writeTruth(const std::string& path, const ChartDescription& chart,
                const render::DescriptionRenderSettings& s, const std::vector<double>& positions) {
    Json doc = documentHead("description-truth", "");
    doc["chart"] = chart.name;
    doc["width"] = s.width;
    doc["height"] = s.height;
    doc["bits"] = s.bits;
    doc["k1"] = s.placement.k1;
    doc["sigma_centre"] = s.sigmaCentre;
    doc["sigma_corner"] = s.sigmaCorner;
    const render::FocusSettings& f = s.focus;
    if (f.on) {
        Json focus;
        if (positions.empty()) {
            focus["lens_z_um"] = f.lensZ;
        } else {
            focus["positions_um"] = positions;
        }
        focus["best_focus_z_um"] = f.bestFocusZ;
        focus["slope_x_um_per_mm"] = f.slopeX;
        focus["slope_y_um_per_mm"] = f.slopeY;
        focus["curvature_um_per_mm2"] = f.curvature;
        focus["astigmatism_um"] = f.astigmatism;
        focus["defocus_gain_px_per_um"] = f.defocusGain;
        focus["pixel_pitch_um"] = f.pixelPitchUm;
        doc["focus"] = focus;
    }
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
        if (f.on) {
            e["best_focus_z_um"] = t.bestFocusZ;
            e["tangential_z_um"] = t.tangentialZ;
            e["sagittal_z_um"] = t.sagittalZ;
            e["x_mm"] = t.xMm;
            e["y_mm"] = t.yMm;
        }
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
    o.option("--focus-z", "Z",
             "with --chart: render with the lens at Z um against a best-focus surface, each "
             "point blurred by its defocus on top of --sigma (elliptical under --astigmatism); "
             "PREFIX.json then gives every edge's best focus");
    o.option("--focus-stack", "FROM:TO:STEP",
             "with --chart: render a through-focus stack instead, um (such as -20:20:2.5, TO "
             "included, at most 61 positions): PREFIX-00.raw, PREFIX-01.raw, ..., each with its "
             "own noise, PREFIX.csv listing them with their z for focus --z-list, PREFIX.png of "
             "the one nearest --best-focus, and PREFIX.json");
    o.option("--best-focus", "Z0",
             "with --focus-z or --focus-stack: best focus at the frame centre, um (default 0)");
    o.option("--focus-slope-x", "S",
             "with --focus-z or --focus-stack: best focus tilt to the right, um per mm "
             "(default 0)");
    o.option("--focus-slope-y", "S",
             "with --focus-z or --focus-stack: best focus tilt downwards, um per mm (default 0)");
    o.option("--focus-curvature", "C",
             "with --focus-z or --focus-stack: field curvature, um per mm^2 of the squared "
             "distance from the frame centre (default 0)");
    o.option("--astigmatism", "A",
             "with --focus-z or --focus-stack: tangential minus sagittal best focus at the "
             "frame corners, um, growing with the square of the field from none at the centre "
             "(default 0)");
    o.option("--defocus-gain", "G",
             "with --focus-z or --focus-stack: blur sigma per um of defocus, px (default 0.1)");
    o.option("--pixel-pitch", "LENGTH",
             "with --focus-z or --focus-stack: the sensor's pixel pitch with its unit, which "
             "puts the surface in mm (default 1.4um)");
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
    const FocusRequest focus = focusRequest(o);
    s.focus = focus.settings;
    try {
        render::checkRenderSettings(s);
    } catch (const std::invalid_argument& e) {
        throw Failure(Cause::BadInput, e.what());
    }
    const std::vector<double>& stack = focus.stack;
    if (s.focus.on) {
        for (const double z : stack.empty() ? std::vector<double>{s.focus.lensZ} : stack) {
            checkDefocus(s, z);
        }
    }
    if (o.has("--packing") || o.has("--stride") || o.has("--offset")) {
        throw Failure(Cause::BadInput, "--chart frames are written as words or bytes, unpacked");
    }
    const std::string prefix = o.text("--out", "chart");
    // A stack's frames are PREFIX-00 ..., listed in PREFIX.csv by their names in its folder.
    auto framePrefix = [&](int i) {
        char number[16];
        std::snprintf(number, sizeof number, "-%02d", i);
        return prefix + number;
    };
    const bool dng = o.has("--dng");
    checkOutputPath("--out", (stack.empty() ? prefix : framePrefix(0)) + ".raw");
    checkImageOutputPath("--out", prefix + ".png");
    if (!stack.empty()) {
        checkOutputPath("--out", prefix + ".csv");
    }
    if (dng && !s.bayer) {
        throw Failure(Cause::BadInput, "--dng needs --bayer: a DNG holds a mosaic");
    }
    RawLayout layout;
    layout.width = width;
    layout.height = height;
    layout.packing = s.bits == 8 ? Packing::Raw8 : Packing::Words16;
    auto viewOf = [&](const cv::Mat& frame) {
        cv::Mat view = frame;
        if (frame.depth() != CV_8U) {
            frame.convertTo(view, CV_8U, 255.0 / (std::ldexp(1.0, s.bits) - 1.0));
        }
        return view;
    };
    char frameText[160];
    std::snprintf(frameText, sizeof frameText,
                  " chart, %d x %d, %d bits%s, sigma %.2f to %.2f, k1 %+.3f", width, height, s.bits,
                  s.bayer ? " Bayer RG" : "", s.sigmaCentre, s.sigmaCorner, s.placement.k1);
    const std::string look = chart.name + frameText;

    // Renders `s` into NAME.raw (and NAME.dng), adding its time to `seconds`.
    double seconds = 0.0;
    auto renderTo = [&](const std::string& name) {
        const auto start = std::chrono::steady_clock::now();
        const cv::Mat frame = render::renderDescription(chart, s);
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        writeRawFrame(name + ".raw", frame, layout);
        if (dng) {
            writeDng(name + ".dng", frame, s.bits);
        }
        return frame;
    };
    if (stack.empty()) {
        writeImage(prefix + ".png", viewOf(renderTo(prefix)));
        writeTruth(prefix + ".json", chart, s, {});
        if (s.focus.on) {
            std::printf("%s, focus at %g um: rendered in %.2f s\n", look.c_str(), s.focus.lensZ,
                        seconds);
        } else {
            std::printf("%s: rendered in %.2f s\n", look.c_str(), seconds);
        }
        std::printf("wrote %s.raw, %s.png, %s.json%s\n", prefix.c_str(), prefix.c_str(),
                    prefix.c_str(), dng ? (", " + prefix + ".dng").c_str() : "");
        return 0;
    }

    // The stack: each frame with its own noise; the truth's sigma and SFR at the position
    // nearest best focus, the frame shown as PREFIX.png.
    const int nearestFocus = nearestBestFocus(stack, s.focus.bestFocusZ);
    const std::uint32_t seed = s.seed;
    const std::string listedPrefix = std::filesystem::path(prefix).filename().string();
    OutputFile list(prefix + ".csv");
    std::fprintf(list.get(), "file,z\n");
    for (int i = 0; i < static_cast<int>(stack.size()); ++i) {
        s.focus.lensZ = stack[i];
        s.seed = seed + static_cast<std::uint32_t>(i);
        const cv::Mat frame = renderTo(framePrefix(i));
        if (i == nearestFocus) {
            writeImage(prefix + ".png", viewOf(frame));
        }
        std::fprintf(list.get(), "%s-%02d.raw,%.15g\n", listedPrefix.c_str(), i, stack[i]);
    }
    list.close();
    s.focus.lensZ = stack[nearestFocus];
    writeTruth(prefix + ".json", chart, s, stack);
    const int last = static_cast<int>(stack.size()) - 1;
    std::printf("%s, %d focus position%s %g .. %g um: rendered in %.2f s\n", look.c_str(), last + 1,
                last > 0 ? "s" : "", stack.front(), stack.back(), seconds);
    std::printf("wrote %s.raw .. %s.raw, %s%s.png, %s.csv, %s.json\n", framePrefix(0).c_str(),
                framePrefix(last).c_str(),
                dng ? (framePrefix(0) + ".dng .. " + framePrefix(last) + ".dng, ").c_str() : "",
                prefix.c_str(), prefix.c_str(), prefix.c_str());
    return 0;
}

}  // namespace cli
}  // namespace talonvireo
