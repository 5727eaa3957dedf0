#include "ChartCommand.h"

#include <chrono>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "CommandLine.h"
#include "render/ChartDesign.h"
#include "render/ChartRenderer.h"
#include "render/ChartTruth.h"
#include "render/SfrTruth.h"

namespace talonvireo {
namespace cli {

namespace {
// Ring radii (markSearchSize) for which single-corner edge centres are listed.
constexpr int kRingRadii[] = {90, 100, 120};

// MIPI RAW10: four samples in five bytes, bits 9..2 of each, then their bits 1..0 packed
// into the fifth byte with the first sample in the lowest pair. A last group of fewer than
// four samples is padded with zeros.
void writeMipi10(const cv::Mat& frame, const std::string& path) {
    std::vector<unsigned short> samples(frame.begin<unsigned short>(), frame.end<unsigned short>());
    samples.resize((samples.size() + 3) / 4 * 4, 0);
    std::ofstream out(path, std::ios::binary);
    for (std::size_t g = 0; g < samples.size(); g += 4) {
        char bytes[5] = {};
        for (int lane = 0; lane < 4; ++lane) {
            const unsigned v = samples[g + lane] & 0x3FFu;
            bytes[lane] = static_cast<char>(v >> 2);
            bytes[4] =
                static_cast<char>(static_cast<unsigned char>(bytes[4]) | (v & 3u) << (2 * lane));
        }
        out.write(bytes, 5);
    }
    if (!out) {
        throw std::runtime_error("cannot write " + path);
    }
}

void writeRaw(const cv::Mat& frame, const std::string& path) {
    std::ofstream out(path, std::ios::binary);
    for (int r = 0; r < frame.rows; ++r) {
        if (frame.depth() == CV_8U) {
            out.write(reinterpret_cast<const char*>(frame.ptr(r)), frame.cols);
            continue;
        }
        const unsigned short* row = frame.ptr<unsigned short>(r);
        for (int c = 0; c < frame.cols; ++c) {
            const char bytes[2] = {static_cast<char>(row[c] & 0xFF),
                                   static_cast<char>(row[c] >> 8)};
            out.write(bytes, 2);  // little-endian whatever the host
        }
    }
    if (!out) {
        throw std::runtime_error("cannot write " + path);
    }
}

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
    std::FILE* f = std::fopen(path.c_str(), "w");
    if (f == nullptr) {
        throw std::runtime_error("cannot write " + path);
    }
    std::fprintf(f, "{\n  \"project\": \"%s\",\n  \"width\": %d,\n  \"height\": %d,\n",
                 render::projectName(design.project), width, height);
    std::fprintf(f, "  \"bits\": %d,\n  \"sigma\": %.6f,\n  \"layouts\": [\n", bits, sigma);
    for (std::size_t l = 0; l < design.layouts.size(); ++l) {
        const render::LayoutTruth t = render::layoutTruth(design, static_cast<int>(l), transform);
        std::fprintf(f, "    {\n      \"name\": \"%s\",\n      \"corners\": [\n",
                     design.layouts[l].name.c_str());
        for (std::size_t i = 0; i < t.corners.size(); ++i) {
            std::fprintf(f, "        {\"row\": %zu, \"x\": %.6f, \"y\": %.6f, \"kind\": %d}%s\n", i,
                         t.corners[i].position.x, t.corners[i].position.y, t.corners[i].kind,
                         i + 1 < t.corners.size() ? "," : "");
        }
        std::fprintf(f, "      ],\n      \"edges\": [\n");
        for (std::size_t e = 0; e < t.edges.size(); ++e) {
            const render::EdgeTruth& edge = t.edges[e];
            const double angle = render::edgeAngleDeg(design, t, edge, transform, kRingRadii[0]);
            std::fprintf(f,
                         "        {\"index\": %d, \"corners\": %d, \"code\": %d, "
                         "\"angleDeg\": %.6f,\n         \"centres\": {",
                         edge.edgeIndex, edge.cornerCount, edge.code, angle);
            for (std::size_t k = 0; k < std::size(kRingRadii); ++k) {
                const cv::Point2d c = render::edgeCentre(design, t, edge, transform, kRingRadii[k]);
                std::fprintf(f, "\"%d\": [%.6f, %.6f]%s", kRingRadii[k], c.x, c.y,
                             k + 1 < std::size(kRingRadii) ? ", " : "");
            }
            std::fprintf(f,
                         "},\n         \"sfrQuarterNyquist\": %.6f, \"sfrHalfNyquist\": %.6f, "
                         "\"mtf50\": %.6f}%s\n",
                         render::trueSfr(0.125, sigma, angle), render::trueSfr(0.25, sigma, angle),
                         render::trueMtf50(sigma, angle), e + 1 < t.edges.size() ? "," : "");
        }
        std::fprintf(f, "      ]\n    }%s\n", l + 1 < design.layouts.size() ? "," : "");
    }
    std::fprintf(f, "  ]\n}\n");
    const bool ok = std::ferror(f) == 0;
    std::fclose(f);
    if (!ok) {
        throw std::runtime_error("cannot write " + path);
    }
}
}  // namespace

const char* chartHelp() {
    return "usage: talonvireo-sfr render [options]   (also: talonvireo-sfr chart)\n"
           "Renders a synthetic chart frame exactly (Gaussian blur integrated over each pixel)\n"
           "and writes PREFIX.raw (8-bit bytes or 16-bit little-endian words), PREFIX.png (an\n"
           "8-bit view) and PREFIX.json (corners, edge centres for rings 90/100/120, angles,\n"
           "true SFR at Nyquist/4 and Nyquist/2, MTF50).\n"
           "  --project NAME   K74T16BX, K83P09BQ, HLX6C or K31R22BX (default K74T16BX)\n"
           "  --width W --height H   frame size (default 4000 x 3000; the chart keeps its place)\n"
           "  --bits B         8 (grey bytes), 10, 14 or 16 (raw words) (default 10)\n"
           "  --bayer          mosaic of phase R G (rows R G / G B)\n"
           "  --gain-r G --gain-g G --gain-b G   per-site gains of the mosaic (default 1)\n"
           "  --sigma S        blur standard deviation in pixels (default 1)\n"
           "  --dark D --light L   levels as fractions of full scale (default 0.12, 0.8)\n"
           "  --shift-x X --shift-y Y --rotation DEG --scale S --persp-x P --persp-y P\n"
           "                   chart placement (default: nominal)\n"
           "  --shot-noise N   noise sd at full scale, output units (default 0)\n"
           "  --read-noise N   level-independent noise sd, output units (default 0)\n"
           "  --seed N         noise seed (default 1)\n"
           "  --packing P      words16 (default) or mipi10 (10-bit raw only: 4 pixels in 5 bytes)\n"
           "  --out PREFIX     output path prefix (default chart)\n";
}

int runChart(const std::vector<std::string>& args) {
    const CommandLine cl(
        args, {"--project",  "--width", "--height",  "--bits",    "--gain-r",     "--gain-g",
               "--gain-b",   "--sigma", "--dark",    "--light",   "--shift-x",    "--shift-y",
               "--rotation", "--scale", "--persp-x", "--persp-y", "--shot-noise", "--read-noise",
               "--seed",     "--out",   "--packing"},
        {"--bayer"});
    render::ChartProject project;
    const std::string name = cl.text("--project", "K74T16BX");
    if (!render::parseProject(name, project)) {
        throw std::invalid_argument("unknown project '" + name + "'");
    }
    const int width = cl.integer("--width", 4000);
    const int height = cl.integer("--height", 3000);
    const double sigma = cl.number("--sigma", 1.0);
    render::ChartTransform transform;
    transform.shiftX = cl.number("--shift-x", 0.0);
    transform.shiftY = cl.number("--shift-y", 0.0);
    transform.rotationDeg = cl.number("--rotation", 0.0);
    transform.scale = cl.number("--scale", 1.0);
    transform.perspX = cl.number("--persp-x", 0.0);
    transform.perspY = cl.number("--persp-y", 0.0);
    render::ChartExposure exposure;
    exposure.bits = cl.integer("--bits", 10);
    exposure.bayer = cl.has("--bayer");
    exposure.gainRed = cl.number("--gain-r", 1.0);
    exposure.gainGreen = cl.number("--gain-g", 1.0);
    exposure.gainBlue = cl.number("--gain-b", 1.0);
    exposure.dark = cl.number("--dark", exposure.dark);
    exposure.light = cl.number("--light", exposure.light);
    exposure.shotNoise = cl.number("--shot-noise", 0.0);
    exposure.readNoise = cl.number("--read-noise", 0.0);
    exposure.seed = static_cast<std::uint32_t>(cl.integer("--seed", 1));
    const std::string prefix = cl.text("--out", "chart");

    const auto start = std::chrono::steady_clock::now();
    const render::ChartDesign design = render::designChart(project);
    const cv::Mat coverage = render::chartCoverage(design.squares, transform, sigma, width, height);
    const cv::Mat frame = render::exposeChart(coverage, exposure);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    const std::string packing = cl.text("--packing", "words16");
    if (packing == "mipi10") {
        if (exposure.bits != 10) {
            throw std::invalid_argument("--packing mipi10 needs --bits 10");
        }
        writeMipi10(frame, prefix + ".raw");
    } else if (packing == "words16") {
        writeRaw(frame, prefix + ".raw");
    } else {
        throw std::invalid_argument("unknown packing '" + packing + "' (words16 or mipi10)");
    }
    if (!cv::imwrite(prefix + ".png", viewable(frame, exposure.bits))) {
        throw std::runtime_error("cannot write " + prefix + ".png");
    }
    writeTruth(prefix + ".json", design, transform, sigma, width, height, exposure.bits);
    std::printf("%s chart, %d x %d, %d bits%s, sigma %.2f: rendered in %.2f s\n", name.c_str(),
                width, height, exposure.bits, exposure.bayer ? " Bayer RG" : "", sigma, seconds);
    std::printf("wrote %s.raw, %s.png, %s.json\n", prefix.c_str(), prefix.c_str(), prefix.c_str());
    return 0;
}

}  // namespace cli
}  // namespace talonvireo
