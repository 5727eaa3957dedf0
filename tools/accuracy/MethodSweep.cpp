// talonvireo-method-sweep: every curve method on rendered edges of known blur, one CSV line
// per case and method. Feeds scripts/method_accuracy_table.py.
//
//   talonvireo-method-sweep [--sizes 100,60] [--sigmas 0.5,...] [--angles 1:44:0.5]
//                           [--offsets 0,0.25,0.5,0.75] [--noise 0] [--seeds 1] [--depth 8]
//                           [--methods classic,normal-axis,precise] [--raw-gains R,G,B]
//                           [--lenses f/4,f/8+defocus:4,gauss:0.5+skirt:0.05:8]
//                           [--aperture 1] [--wavelength 0.537] [--pitch 4.345]
//                           [--photon-noise] [--no-fractions] [--plot FILE.png]
// --raw-gains measures the four planes of an RG-phase mosaic (precise, per channel) instead.
// --lenses replaces the Gaussian sigmas by lenses (see lensFromText), each pixel a square
// aperture of side --aperture; --photon-noise adds Poisson noise of one photon per word step.
// --plot draws each method's MTF50 error against the angle, a panel per blur, for the first
// size, offset and seed.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "accuracy/AccuracyPlot.h"
#include "accuracy/MethodAccuracy.h"
#include "station/OutputFile.h"

namespace {
using namespace talonvireo::accuracy;

std::vector<std::string> split(const std::string& s) {
    std::vector<std::string> out;
    std::stringstream in(s);
    for (std::string item; std::getline(in, item, ',');) {
        out.push_back(item);
    }
    return out;
}

// "a,b,c" or "from:to:step" (plus the simple-fraction angles when `fractions`).
std::vector<double> numbers(const std::string& s) {
    std::vector<double> out;
    for (const std::string& item : split(s)) {
        double from = 0.0, to = 0.0, step = 0.0;
        if (std::sscanf(item.c_str(), "%lf:%lf:%lf", &from, &to, &step) == 3 && step > 0.0) {
            for (int k = 0; from + k * step <= to + 1e-9; ++k) {
                out.push_back(from + k * step);
            }
        } else {
            out.push_back(std::stod(item));
        }
    }
    return out;
}
void print(const char* method, const std::string& lens, const EdgeCase& c, const Reading& r) {
    std::printf(
        "%s,%s,%g,%d,%g,%.4f,%g,%g,%d,%u,%d,%d,%.6f,%.6f,%.4f,%.5f,%.5f,%.5f,%.5f,%.5f,%.4f\n",
        method, lens.c_str(), c.aperture, c.size, c.sigma, c.angle, c.offset, c.noise,
        c.photonNoise ? 1 : 0, c.seed, c.depth, r.status, r.mtf50, r.trueMtf50, r.mtf50ErrorPercent,
        r.sfrQuarterNyquist, r.trueQuarterNyquist, r.sfrHalfNyquist, r.trueHalfNyquist, r.edgeAngle,
        r.kernelSigma);
}

// One blur of the sweep: a Gaussian sigma, or a lens with its table.
struct Blur {
    std::string name;
    double sigma = 0.0;
    std::shared_ptr<talonvireo::render::EdgeSpreadTable> lens;
};
}  // namespace

int main(int argc, char** argv) {
    std::string sizes = "100,60", sigmas = "0.5,0.8,1.2,1.5", angles = "1:44:0.5",
                offsets = "0,0.25,0.5,0.75", noise = "0", seeds = "1", depth = "8",
                methods = "classic,normal-axis,precise", rawGains = "", lenses = "", aperture = "1",
                wavelength = "0.537", pitch = "4.345", plot = "";
    bool fractions = true, photonNoise = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        std::string* target = arg == "--sizes"        ? &sizes
                              : arg == "--sigmas"     ? &sigmas
                              : arg == "--angles"     ? &angles
                              : arg == "--offsets"    ? &offsets
                              : arg == "--noise"      ? &noise
                              : arg == "--seeds"      ? &seeds
                              : arg == "--depth"      ? &depth
                              : arg == "--methods"    ? &methods
                              : arg == "--raw-gains"  ? &rawGains
                              : arg == "--lenses"     ? &lenses
                              : arg == "--aperture"   ? &aperture
                              : arg == "--wavelength" ? &wavelength
                              : arg == "--pitch"      ? &pitch
                              : arg == "--plot"       ? &plot
                                                      : nullptr;
        if (arg == "--no-fractions") {
            fractions = false;
            continue;
        }
        if (arg == "--photon-noise") {
            photonNoise = true;
            continue;
        }
        if (target == nullptr || i + 1 >= argc) {
            std::cerr << "talonvireo-method-sweep: unknown option or missing value: " << arg
                      << "\n";
            return 2;
        }
        *target = argv[++i];
    }
    try {
        std::vector<double> angleList = numbers(angles);
        if (fractions) {
            for (double a : simpleFractionAngles()) {
                angleList.push_back(a);
            }
        }
        std::vector<Method> methodList;
        for (const std::string& m : split(methods)) {
            methodList.push_back(m == "classic"       ? Method::Classic
                                 : m == "normal-axis" ? Method::NormalAxis
                                                      : Method::Precise);
        }
        const std::vector<double> sizeList = numbers(sizes);
        std::vector<Blur> blurs;
        if (lenses.empty()) {
            for (double sigma : numbers(sigmas)) {
                char name[32];
                std::snprintf(name, sizeof name, "gauss:%g", sigma);
                blurs.push_back({name, sigma, nullptr});
            }
        } else {
            const double largest = *std::max_element(sizeList.begin(), sizeList.end());
            // A region's corner lies at most half its diagonal from an edge through its middle.
            const double reach = 0.5 * std::sqrt(2.0) * largest + 3.0;
            for (const std::string& text : split(lenses)) {
                const auto lens = lensFromText(text, std::stod(wavelength), std::stod(pitch));
                blurs.push_back(
                    {text, 0.0,
                     std::make_shared<talonvireo::render::EdgeSpreadTable>(lens, reach)});
            }
        }
        std::cout << "method,lens,aperture,size,sigma,angle,offset,noise,photon_noise,seed,depth,"
                     "status,mtf50,true_mtf50,mtf50_error_percent,sfr_quarter_nyquist,"
                     "true_quarter_nyquist,sfr_half_nyquist,true_half_nyquist,edge_angle,"
                     "kernel_sigma\n";
        std::vector<AccuracyPanel> panels(blurs.size());
        for (double size : sizeList) {
            for (size_t b = 0; b < blurs.size(); ++b) {
                const Blur& blur = blurs[b];
                panels[b].title = blur.lens ? blur.lens->lens().describe() : blur.name;
                for (double angle : angleList) {
                    for (double offset : numbers(offsets)) {
                        for (double seed : numbers(seeds)) {
                            EdgeCase c;
                            c.size = static_cast<int>(size);
                            c.sigma = blur.sigma;
                            c.lens = blur.lens.get();
                            c.aperture = std::stod(aperture);
                            c.photonNoise = photonNoise;
                            c.angle = angle;
                            c.offset = offset;
                            c.noise = std::stod(noise);
                            c.seed = static_cast<std::uint32_t>(seed);
                            c.depth = std::stoi(depth);
                            if (!rawGains.empty()) {
                                const std::vector<double> g = numbers(rawGains);
                                std::vector<std::string> names;
                                const std::vector<Reading> planes =
                                    readRawPlanes(c, {g.at(0), g.at(1), g.at(2)}, 1, &names);
                                for (size_t k = 0; k < planes.size(); ++k) {
                                    print(("raw-" + names[k]).c_str(), blur.name, c, planes[k]);
                                }
                                continue;
                            }
                            panels[b].series.resize(methodList.size());
                            for (size_t k = 0; k < methodList.size(); ++k) {
                                const Reading r = readEdge(c, methodList[k]);
                                print(methodName(methodList[k]), blur.name, c, r);
                                if (size == sizeList.front() &&
                                    offset == numbers(offsets).front() &&
                                    seed == numbers(seeds).front()) {
                                    AccuracySeries& s = panels[b].series[k];
                                    s.method = methodName(methodList[k]);
                                    s.angle.push_back(angle);
                                    s.error.push_back(r.mtf50ErrorPercent);
                                }
                            }
                        }
                    }
                }
            }
        }
        if (!plot.empty()) {
            for (AccuracyPanel& panel : panels) {
                for (AccuracySeries& s : panel.series) {
                    // Simple-fraction angles come last in the sweep: draw in angle order.
                    std::vector<size_t> order(s.angle.size());
                    for (size_t k = 0; k < order.size(); ++k) {
                        order[k] = k;
                    }
                    std::sort(order.begin(), order.end(),
                              [&](size_t a, size_t b) { return s.angle[a] < s.angle[b]; });
                    AccuracySeries sorted{s.method, {}, {}};
                    for (size_t k : order) {
                        sorted.angle.push_back(s.angle[k]);
                        sorted.error.push_back(s.error[k]);
                    }
                    s = sorted;
                }
            }
            char caption[96];
            std::snprintf(caption, sizeof caption, "%g x %g px, %s-bit, aperture %s",
                          sizeList.front(), sizeList.front(), depth.c_str(), aperture.c_str());
            talonvireo::station::writeImage(plot, plotAccuracy(panels, caption));
        }
    } catch (const std::exception& e) {
        std::cerr << "talonvireo-method-sweep: " << e.what() << "\n";
        return 1;
    }
    return 0;
}
