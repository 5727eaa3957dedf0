// talonvireo-method-sweep: every curve method on rendered edges of known blur, one CSV line
// per case and method. Feeds scripts/method_accuracy_table.py.
//
//   talonvireo-method-sweep [--sizes 100,60] [--sigmas 0.5,...] [--angles 1:44:0.5]
//                           [--offsets 0,0.25,0.5,0.75] [--noise 0] [--seeds 1] [--depth 8]
//                           [--methods classic,normal-axis,precise] [--raw-gains R,G,B]
// --raw-gains measures the four planes of an RG-phase mosaic (precise, per channel) instead.
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "accuracy/MethodAccuracy.h"

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
void print(const char* method, const EdgeCase& c, const Reading& r) {
    std::printf("%s,%d,%g,%.4f,%g,%g,%u,%d,%d,%.6f,%.6f,%.4f,%.5f,%.5f,%.5f,%.5f,%.5f,%.4f\n",
                method, c.size, c.sigma, c.angle, c.offset, c.noise, c.seed, c.depth, r.status,
                r.mtf50, r.trueMtf50, r.mtf50ErrorPercent, r.sfrQuarterNyquist,
                r.trueQuarterNyquist, r.sfrHalfNyquist, r.trueHalfNyquist, r.edgeAngle,
                r.kernelSigma);
}
}  // namespace

int main(int argc, char** argv) {
    std::string sizes = "100,60", sigmas = "0.5,0.8,1.2,1.5", angles = "1:44:0.5",
                offsets = "0,0.25,0.5,0.75", noise = "0", seeds = "1", depth = "8",
                methods = "classic,normal-axis,precise", rawGains = "";
    bool fractions = true;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        std::string* target = arg == "--sizes"       ? &sizes
                              : arg == "--sigmas"    ? &sigmas
                              : arg == "--angles"    ? &angles
                              : arg == "--offsets"   ? &offsets
                              : arg == "--noise"     ? &noise
                              : arg == "--seeds"     ? &seeds
                              : arg == "--depth"     ? &depth
                              : arg == "--methods"   ? &methods
                              : arg == "--raw-gains" ? &rawGains
                                                     : nullptr;
        if (arg == "--no-fractions") {
            fractions = false;
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
        std::cout << "method,size,sigma,angle,offset,noise,seed,depth,status,mtf50,true_mtf50,"
                     "mtf50_error_percent,sfr_quarter_nyquist,true_quarter_nyquist,"
                     "sfr_half_nyquist,true_half_nyquist,edge_angle,kernel_sigma\n";
        for (double size : numbers(sizes)) {
            for (double sigma : numbers(sigmas)) {
                for (double angle : angleList) {
                    for (double offset : numbers(offsets)) {
                        for (double seed : numbers(seeds)) {
                            EdgeCase c;
                            c.size = static_cast<int>(size);
                            c.sigma = sigma;
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
                                    print(("raw-" + names[k]).c_str(), c, planes[k]);
                                }
                                continue;
                            }
                            for (Method m : methodList) {
                                print(methodName(m), c, readEdge(c, m));
                            }
                        }
                    }
                }
            }
        }
    } catch (const std::exception& e) {
        std::cerr << "talonvireo-method-sweep: " << e.what() << "\n";
        return 1;
    }
    return 0;
}
