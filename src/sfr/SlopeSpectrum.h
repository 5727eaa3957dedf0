// The transform of a fitted edge profile's slope, read at any frequency.
//
// The slope samples come from the local regression of the region's samples against their
// distance from the edge line. Because the magnitude can be read at any frequency, not just on
// a fixed grid, the 50 % point is found on the curve itself. Readings are normalised by the
// magnitude at f = 0, and the smoothing the regression kernel applied is undone by dividing
// by that kernel's Gaussian response.
#pragma once

#include <complex>
#include <vector>

#include "sfr/LineSpreadTails.h"

namespace talonvireo {
namespace sfr {

class SlopeSpectrum {
public:
    // Slope samples value[k] at positions first + k * step (pixels), and `tails` beyond
    // them; `kernelSigma` is the width of the kernel that produced them.
    SlopeSpectrum(std::vector<double> value, double first, double step, double kernelSigma,
                  std::vector<TailBlob> tails = {});

    // Normalised magnitude at frequency f (per pixel); NaN when the slope samples add up to
    // nothing.
    double at(double f) const;

    // at() at 0, step, 2 step, ... (count values), four frequencies per pass over the samples.
    std::vector<double> sampled(int count, double step) const;

    // Where the magnitude crosses under `level`. The sweep in `frequency` and `sfr` (from 0,
    // equal steps) is walked up to its earliest entry under `level`; that entry and the one
    // before it bracket the crossing, which halving the bracket on at() then narrows. NaN
    // when no entry is under `level`.
    double frequencyAtLevel(double level, const std::vector<double>& frequency,
                            const std::vector<double>& sfr) const;

    // frequencyAtLevel for each of `levels`, the same figures: the bisections run side by
    // side, reading their midpoints in one pass over the samples.
    std::vector<double> frequenciesAtLevels(const std::vector<double>& levels,
                                            const std::vector<double>& frequency,
                                            const std::vector<double>& sfr) const;

    // at(f[i]) into out[i] for i < n, up to four frequencies per pass over the samples.
    void atEach(const double* f, int n, double* out) const;

private:
    static constexpr int kLanes = 4;  // independent phasor recurrences keep the multipliers busy
    // The slope samples' transform at f[0 .. n), n <= kLanes, in one pass over them.
    void coreTransforms(const double* f, int n, std::complex<double>* out) const;
    // The tails' share of the transform at f, added to `sum`.
    void addTails(double f, std::complex<double>& sum) const;
    // Samples and tails at f.
    std::complex<double> transform(double f) const;

    std::vector<double> value_;
    std::vector<TailBlob> tails_;
    double first_;
    double step_;
    double kernelSigma_;
    double centre_;  // phases count from here: the middle of the slope samples
    double dc_;
};

}  // namespace sfr
}  // namespace talonvireo
