// The precise slanted-edge method on one channel's samples.
//
// Every sample keeps its own distance from an edge line refined against all samples; the
// edge profile is a local linear regression whose kernel widens only where the sample phases
// bunch (simple-fraction slopes); the line spread is the regression's own slope, at full
// resolution over a core sized from the measured blur and, beyond it out to the region's
// reach, as blobs that widen with the distance and the noise, so that a lens's long tails keep
// their light; its transform is divided by the kernel's known transfer. Frequencies are across
// the edge, in cycles per pixel.
#pragma once

#include <stdexcept>
#include <vector>

#include "sfr/EdgeSamples.h"
#include "sfr/SfrContext.h"

namespace talonvireo {
namespace sfr {

struct PreciseCurve {
    std::vector<double> frequency;  // cycles per pixel across the edge, from 0
    std::vector<double> sfr;
    std::vector<double> esf;  // smoothed edge spread over the core, dark to light
    std::vector<double> lsf;  // the line spread's core
    double step = 0.0;        // pixels between esf/lsf samples
    double edgeAngle = 0.0;   // degrees, of the refined line
    double kernelSigma = 0.0;
    double mtf10 = 0.0;
    double mtf30 = 0.0;
    double mtf50 = 0.0;
    std::vector<double> sfrAt;  // at the frequencies asked for
};

// The samples give no line spread to transform (nothing under the window, or a spread that
// sums to zero): the same refusal as the classic method's zero spectrum.
struct NoSpectrum : std::runtime_error {
    NoSpectrum() : std::runtime_error("no spectrum") {}
};

// Measures `samples` (upright) along the line `initial`, first refined against the samples
// when `refine`. Throws NoSpectrum when they give no curve, std::invalid_argument for fewer
// than four samples.
PreciseCurve measurePrecise(const EdgeSamples& samples, const EdgeLine& initial,
                            const std::vector<double>& frequencies, bool refine = true);

// The line `initial` refined against `samples`, as measurePrecise refines it.
EdgeLine refinePreciseLine(const EdgeSamples& samples, const EdgeLine& initial);

}  // namespace sfr
}  // namespace talonvireo
