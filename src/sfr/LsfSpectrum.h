// The SFR of a windowed line spread on a regular grid, at any frequency.
//
// The transform is summed directly at each frequency asked for, so a figure such as MTF50 is
// the root of the measured curve itself rather than a point between sampled values. The
// modulus is normalised at zero frequency and divided by the transfer of the Gaussian kernel
// the line spread was built with.
#pragma once

#include <vector>

namespace talonvireo {
namespace sfr {

class LsfSpectrum {
public:
    // Samples value[k] at first + k * step, pixels; `kernelSigma` of the regression kernel.
    LsfSpectrum(std::vector<double> value, double first, double step, double kernelSigma);

    // SFR at f cycles per pixel; NaN when the line spread sums to zero.
    double at(double f) const;

    // at() at 0, step, 2 step, ... (count values), four frequencies per pass over the samples.
    std::vector<double> sampled(int count, double step) const;

    // Frequency where the SFR first falls below `level`: bracketed between two of its sampled
    // values (from frequency 0 in equal steps) and then refined on the curve; NaN when the
    // samples never fall that low.
    double frequencyAtLevel(double level, const std::vector<double>& frequency,
                            const std::vector<double>& sfr) const;

private:
    static constexpr int kLanes = 4;  // independent phasor recurrences keep the multipliers busy
    // |transform| at f[0 .. n), n <= kLanes, in one pass over the samples.
    void moduli(const double* f, int n, double* out) const;

    std::vector<double> value_;
    double first_;
    double step_;
    double kernelSigma_;
    double dc_;
};

}  // namespace sfr
}  // namespace talonvireo
