#include "sfr/KernelWidth.h"

#include <cmath>
#include <vector>

#include "sfr/LocalLinearProfile.h"

namespace talonvireo {
namespace sfr {

namespace {
constexpr double kNarrowest = 0.2;
constexpr double kWidest = 2.0;
constexpr double kLadderStep = 0.025;
}  // namespace

double kernelSigmaFor(const PhaseWeights& weights, double slope, int pitch, double residual) {
    const double cosA = 1.0 / std::sqrt(1.0 + slope * slope);
    const double spacing = pitch * cosA;  // distance between lattice columns along the normal
    std::vector<double> component;        // computed once, on demand
    for (double sigma = kNarrowest; sigma < kWidest; sigma += kLadderStep) {
        bool quiet = true;
        for (int k = 1;; ++k) {
            const double transfer = gaussianTransfer(sigma, k / spacing);
            if (transfer <= residual) {
                break;  // no component exceeds 1
            }
            if (component.size() < static_cast<size_t>(k)) {
                component.push_back(phaseComponent(weights, k));
            }
            if (component[static_cast<size_t>(k - 1)] * transfer > residual) {
                quiet = false;
                break;
            }
        }
        if (quiet) {
            return sigma;
        }
    }
    return kWidest;
}

}  // namespace sfr
}  // namespace talonvireo
