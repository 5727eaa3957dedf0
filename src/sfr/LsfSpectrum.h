// The precise method's SFR read off a line spread at any frequency a caller names.
//
// The spectrum is evaluated frequency by frequency from the line spread's samples, so MTF50
// can be solved on a continuous curve instead of between fixed bins. The magnitude is taken
// relative to its value at zero frequency, and the Gaussian kernel that smoothed the line
// spread has its transfer divided back out.
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

    // Frequency where the SFR first drops below `level`. `frequency` and `sfr` are a coarse
    // sweep from 0 in equal steps that locates the crossing; bisection on at() then pins it
    // down. NaN when the sweep never drops that low.
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
