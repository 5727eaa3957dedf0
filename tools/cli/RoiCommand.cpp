#include "RoiCommand.h"

#include <cmath>
#include <cstdio>
#include <sstream>

#include "CliError.h"
#include "CommandLine.h"
#include "CurvePlot.h"
#include "FrameFile.h"
#include "OutputFile.h"
#include "render/RegionEncoding.h"
#include "talonvireo/talonVireoSFR.h"

namespace talonvireo {
namespace cli {

namespace {
namespace pf = talonvireo::PixelFormat;

int formatOf(const cv::Mat& image) {
    switch (image.type()) {
        case CV_8UC1:
            return pf::Grey8;
        case CV_16UC1:
            return pf::Grey16;
        case CV_8UC3:
            return pf::Bgr8;
        case CV_16UC3:
            return pf::Bgr16;
        default:
            throw CliError(kExitUnreadableFile, "an image of 8- or 16-bit grey or colour needed");
    }
}

cv::Rect parseRect(const std::string& text) {
    cv::Rect r;
    char c1 = 0, c2 = 0, c3 = 0;
    std::istringstream in(text);
    if (!(in >> r.x >> c1 >> r.y >> c2 >> r.width >> c3 >> r.height) || c1 != ',' || c2 != ',' ||
        c3 != ',' || in.peek() != std::char_traits<char>::eof()) {
        throw CliError(kExitBadArguments, "--rect takes x,y,w,h");
    }
    return r;
}

const char* refusal(int status) {
    switch (status) {
        case -2:
            return "edge contrast below 20 % (or a zero spectrum)";
        case -3:
            return "edge steeper than 1.25 columns per row (about 51 degrees)";
        case -4:
            return "edge exactly on the pixel grid";
        default:
            return "region not measurable (too small, bad format or size)";
    }
}

void writeCurveCsv(const std::string& path, const SfrCurve& curve) {
    OutputFile out(path);
    std::fprintf(out.get(), "frequency");
    for (std::size_t c = 0; c < curve.channels.size(); ++c) {
        std::fprintf(out.get(), ",sfr_%zu", c);
    }
    std::fprintf(out.get(), "\n");
    const std::vector<double>& f = curve.channels.front().frequency;
    for (std::size_t k = 0; k < f.size(); ++k) {
        std::fprintf(out.get(), "%.8f", f[k]);
        for (const SfrChannelCurve& ch : curve.channels) {
            std::fprintf(out.get(), ",%.8f", k < ch.sfr.size() ? ch.sfr[k] : NAN);
        }
        std::fprintf(out.get(), "\n");
    }
    out.close();
}

void printFigures(const SfrCurve& curve, bool custom, double divisor, bool json) {
    if (json) {
        std::printf("{\n  \"status\": 0,\n  \"normalFrequencyAxis\": %s,\n  \"channels\": [\n",
                    curve.normalFrequencyAxis ? "true" : "false");
    } else {
        std::printf("status 0, %zu channel%s%s\n", curve.channels.size(),
                    curve.channels.size() == 1 ? "" : "s",
                    curve.normalFrequencyAxis ? ", frequencies across the edge" : "");
        std::printf("%7s %8s %8s %8s %8s %8s %8s%s\n", "channel", "angle", "SFR N/4", "SFR N/2",
                    "MTF50", "MTF30", "MTF10", custom ? "   custom" : "");
    }
    for (std::size_t c = 0; c < curve.channels.size(); ++c) {
        const SfrChannelCurve& ch = curve.channels[c];
        if (json) {
            std::printf(
                "    {\"edgeAngle\": %.6f, \"sfrQuarterNyquist\": %.6f, "
                "\"sfrHalfNyquist\": %.6f, \"mtf50\": %.6f, \"mtf30\": %.6f, "
                "\"mtf10\": %.6f",
                ch.edgeAngle, ch.sfrAt[0], ch.sfrAt[1], ch.mtf50, ch.mtf30, ch.mtf10);
            if (custom) {
                std::printf(", \"divisor\": %g, \"sfrCustom\": %.6f", divisor, ch.sfrAt[2]);
            }
            std::printf("}%s\n", c + 1 < curve.channels.size() ? "," : "");
        } else {
            std::printf("%7zu %8.3f %8.4f %8.4f %8.4f %8.4f %8.4f", c, ch.edgeAngle, ch.sfrAt[0],
                        ch.sfrAt[1], ch.mtf50, ch.mtf30, ch.mtf10);
            if (custom) {
                std::printf(" %8.4f", ch.sfrAt[2]);
            }
            std::printf("\n");
        }
    }
    if (json) {
        std::printf("  ]\n}\n");
    }
}
}  // namespace

const char* roiHelp() {
    return "usage: talonvireo-sfr roi IMAGE [options]\n"
           "Measures one slanted-edge region: a PNG/TIFF/PGM image (8- or 16-bit, grey or\n"
           "colour) or a raw file (--width, --height and --format needed). Prints the edge\n"
           "angle, the SFR at Nyquist/4 and Nyquist/2, MTF50, MTF30 and MTF10 per channel.\n"
           "  --format CODE      pixel-format code: 0x100 grey, 0x200 16-bit grey, 0x400 BGR,\n"
           "                     0x800 16-bit BGR, 0x011 8-bit Bayer R G, 0x021 16-bit Bayer\n"
           "                     R G (default: from the image)\n"
           "  --width W --height H   size of a raw region\n"
           "  --rect x,y,w,h     measure this part of the image only\n"
           "  --freq-divisor D   also report the SFR at Nyquist/D\n"
           "  --normal-axis      frequencies across the edge (not divided by cos(angle) again;\n"
           "                     right at large angles)\n"
           "  --curve OUT.csv    the whole curve: frequency, SFR per channel\n"
           "  --plot OUT.png     a plot of the curve with Nyquist/4, Nyquist/2 and MTF50\n"
           "  --json             figures as JSON\n"
           "exit status: 0 measured, 2 bad arguments, 3 unreadable file, 4 wrong raw size,\n"
           "6 rect outside the image, 7 SFR calculation failed, 8 any other failure\n";
}

int runRoi(const std::vector<std::string>& args) {
    std::vector<std::string> optionArgs;
    const std::string path = leadingOperand(args, "roi needs an IMAGE file first", optionArgs);
    const CommandLine cl(
        optionArgs,
        {"--format", "--width", "--height", "--rect", "--freq-divisor", "--curve", "--plot"},
        {"--normal-axis", "--json"});
    cv::Mat image;
    int format = cl.integer("--format", 0);
    if (isImagePath(path)) {
        image = readImage(path);
        if (format == 0) {
            format = formatOf(image);
        }
    } else {
        if (!cl.has("--format")) {
            throw CliError(kExitBadArguments, "a raw region needs --format");
        }
        const int type = render::formatMatrixType(format);
        if (type < 0) {
            throw CliError(kExitBadArguments, "unknown --format " + cl.text("--format", ""));
        }
        image = readRawImage(path, cl.integer("--width", 0), cl.integer("--height", 0), type);
    }
    if (render::formatMatrixType(format) != image.type()) {
        throw CliError(kExitBadArguments,
                       "--format " + cl.text("--format", "") + " does not fit the image's samples");
    }
    if (cl.has("--rect")) {
        const cv::Rect r = parseRect(cl.text("--rect", ""));
        if (r.width <= 0 || r.height <= 0 || (r & cv::Rect(0, 0, image.cols, image.rows)) != r) {
            throw CliError(kExitRegionOutOfBounds, "--rect lies outside the " +
                                                       std::to_string(image.cols) + " x " +
                                                       std::to_string(image.rows) + " image");
        }
        image = image(r).clone();
    }

    const double divisor = cl.number("--freq-divisor", 0.0);
    SfrCurveOptions options;
    options.normalFrequencyAxis = cl.has("--normal-axis");
    options.frequencies = {0.125, 0.25};
    if (divisor > 0.0) {
        options.frequencies.push_back(0.5 / divisor);
    }
    SfrCurve curve;
    const int status = measureSfrCurve(image.data, image.cols, image.rows, format, options, curve);
    if (status != 0) {
        throw CliError(kExitSfrFailed, std::string("SFR calculation failed: ") + refusal(status));
    }
    printFigures(curve, divisor > 0.0, divisor, cl.has("--json"));
    if (cl.has("--curve")) {
        writeCurveCsv(cl.text("--curve", ""), curve);
    }
    if (cl.has("--plot")) {
        writeImage(cl.text("--plot", ""), plotCurve(curve));
    }
    return kExitOk;
}

}  // namespace cli
}  // namespace talonvireo
