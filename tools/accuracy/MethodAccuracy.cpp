#include "accuracy/MethodAccuracy.h"

#include <cmath>
#include <cstdio>
#include <sstream>
#include <stdexcept>

#include "render/RegionEncoding.h"
#include "render/SfrTruth.h"
#include "render/SlantedEdgeRenderer.h"
#include "talonvireo/PixelFormat.h"

namespace talonvireo {
namespace accuracy {

const char* methodName(Method m) {
    switch (m) {
        case Method::Classic:
            return "classic";
        case Method::NormalAxis:
            return "normal-axis";
        case Method::Precise:
            return "precise";
    }
    return "?";
}

std::vector<double> simpleFractionAngles() {
    std::vector<double> out;
    for (auto [p, q] : {std::pair{1, 5}, {1, 4}, {1, 3}, {2, 5}, {1, 2}, {2, 3}, {3, 4}}) {
        out.push_back(std::atan2(p, q) * 180.0 / 3.141592653589793);
    }
    return out;
}

render::LensBlur lensFromText(const std::string& text, double wavelengthUm, double pitchUm) {
    render::LensBlur lens;
    lens.wavelengthUm = wavelengthUm;
    lens.pixelPitchUm = pitchUm;
    std::stringstream parts(text);
    for (std::string part; std::getline(parts, part, '+');) {
        double a = 0.0, b = 0.0;
        char tail = 0;
        if (std::sscanf(part.c_str(), "f/%lf%c", &a, &tail) == 1 && a > 0.0) {
            lens.fNumber = a;
        } else if (std::sscanf(part.c_str(), "gauss:%lf%c", &a, &tail) == 1) {
            lens.sigma = a;
        } else if (std::sscanf(part.c_str(), "defocus:%lf%c", &a, &tail) == 1) {
            lens.defocusDiameter = a;
        } else if (std::sscanf(part.c_str(), "skirt:%lf:%lf%c", &a, &b, &tail) == 2) {
            lens.skirtShare = a;
            lens.skirtWidth = b;
        } else {
            throw std::invalid_argument("unknown lens part '" + part + "' in '" + text + "'");
        }
    }
    render::checkLens(lens);
    return lens;
}

namespace {
// Levels per 8-bit level in the stored words.
double wordScale(int depth) {
    return depth == 16 ? 256.0 : depth == 14 ? 64.0 : 1.0;
}

cv::Mat renderLevels(const EdgeCase& c) {
    render::SlantedEdgeScene scene;
    scene.width = c.size;
    scene.height = c.size;
    scene.sigma = c.sigma;
    scene.angleDeg = c.angle;
    scene.shiftX = c.offset;
    scene.noise = c.noise;
    scene.photonsPerLevel = c.photonNoise ? wordScale(c.depth) : 0.0;
    scene.seed = c.seed;
    return c.lens != nullptr ? render::renderSlantedEdge(scene, *c.lens, c.aperture)
                             : render::renderSlantedEdge(scene);
}

cv::Mat quantised(const EdgeCase& c, const cv::Mat& levels) {
    return c.depth == 8 ? render::quantise8(levels)
                        : render::quantise16(levels, wordScale(c.depth));
}

Reading truthOf(const EdgeCase& c) {
    Reading r;
    if (c.lens != nullptr) {
        const render::LensBlur& lens = c.lens->lens();
        r.trueMtf50 = render::trueFrequencyAtLevel(0.5, lens, c.angle, c.aperture);
        // An SFR is a modulus: past a defocused lens's first zero it reads the lobe's size.
        r.trueQuarterNyquist = std::fabs(render::trueSfr(0.125, lens, c.angle, c.aperture));
        r.trueHalfNyquist = std::fabs(render::trueSfr(0.25, lens, c.angle, c.aperture));
        return r;
    }
    r.trueMtf50 = render::trueMtf50(c.sigma, c.angle);
    r.trueQuarterNyquist = render::trueSfr(0.125, c.sigma, c.angle);
    r.trueHalfNyquist = render::trueSfr(0.25, c.sigma, c.angle);
    return r;
}

void readChannel(const SfrChannelCurve& ch, Reading& r) {
    r.mtf50 = ch.mtf50;
    r.mtf50ErrorPercent = 100.0 * (ch.mtf50 - r.trueMtf50) / r.trueMtf50;
    r.sfrQuarterNyquist = ch.sfrAt.at(0);
    r.sfrHalfNyquist = ch.sfrAt.at(1);
    r.edgeAngle = ch.edgeAngle;
    r.kernelSigma = ch.kernelSigma;
}

void markRefused(Reading& r) {
    r.mtf50 = r.mtf50ErrorPercent = r.sfrQuarterNyquist = r.sfrHalfNyquist = std::nan("");
}

// Which channel a site of the mosaic holds: 0 red, 1 green, 2 blue.
int siteChannel(int phase, int x, int y) {
    // [phase][row parity][column parity], phases RG, GR, GB, BG.
    static constexpr int kCells[4][2][2] = {
        {{0, 1}, {1, 2}}, {{1, 0}, {2, 1}}, {{1, 2}, {0, 1}}, {{2, 1}, {1, 0}}};
    const int index = phase == PixelFormat::PhaseRG   ? 0
                      : phase == PixelFormat::PhaseGR ? 1
                      : phase == PixelFormat::PhaseGB ? 2
                                                      : 3;
    return kCells[index][y % 2][x % 2];
}
}  // namespace

Reading readEdge(const EdgeCase& c, Method method) {
    const cv::Mat image = quantised(c, renderLevels(c));
    const int format = c.depth == 8 ? PixelFormat::Grey8 : PixelFormat::Grey16;

    SfrCurveOptions options;
    options.frequencies = {0.125, 0.25};
    options.normalFrequencyAxis = method == Method::NormalAxis;
    options.method = method == Method::Precise ? SfrMethod::kPrecise : SfrMethod::kClassic;
    SfrCurve curve;
    Reading r = truthOf(c);
    r.status = measureSfrCurve(image.data, image.cols, image.rows, format, options, curve);
    if (r.status != 0 || curve.channels.empty()) {
        markRefused(r);
        return r;
    }
    readChannel(curve.channels.front(), r);
    return r;
}

cv::Mat renderRawMosaic(const EdgeCase& c, ChannelGains gains, int phase) {
    const cv::Mat levels = renderLevels(c);
    const double gain[3] = {gains.red, gains.green, gains.blue};
    cv::Mat scaled(levels.size(), CV_64F);
    for (int y = 0; y < levels.rows; ++y) {
        for (int x = 0; x < levels.cols; ++x) {
            scaled.at<double>(y, x) = levels.at<double>(y, x) * gain[siteChannel(phase, x, y)];
        }
    }
    return quantised(c, scaled);
}

std::vector<Reading> readRawPlanes(const EdgeCase& c, ChannelGains gains, int phase,
                                   std::vector<std::string>* names) {
    const cv::Mat image = renderRawMosaic(c, gains, phase);
    const bool eight = c.depth == 8;
    const int format = (eight ? PixelFormat::Bayer8 : PixelFormat::Bayer16) + phase;
    SfrCurveOptions options;
    options.frequencies = {0.125, 0.25};
    options.method = SfrMethod::kPrecise;
    options.perChannelRaw = true;
    SfrCurve curve;
    const int status = measureSfrCurve(image.data, image.cols, image.rows, format, options, curve);
    std::vector<Reading> out;
    if (names != nullptr) {
        names->clear();
    }
    for (size_t k = 0; k < (status == 0 ? curve.channels.size() : size_t{4}); ++k) {
        Reading r = truthOf(c);
        r.status = status;
        if (status == 0) {
            readChannel(curve.channels[k], r);
        } else {
            markRefused(r);
        }
        if (names != nullptr) {
            names->push_back(status == 0 ? curve.channels[k].name : "?");
        }
        out.push_back(r);
    }
    return out;
}

}  // namespace accuracy
}  // namespace talonvireo
