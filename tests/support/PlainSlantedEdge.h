// A plain, unoptimised transcription of the slanted-edge method, used as an oracle for the
// library's optimised core: OpenCV's filter2D for the derivatives, a cosine per window
// sample, one sine and one cosine per transform term, sequential sums everywhere.
#pragma once

#include <array>
#include <vector>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace testing {

struct PlainSfrOutcome {
    int status = 0;
    int channels = 0;
    std::vector<std::array<double, 4>> freq;
    std::vector<std::array<double, 4>> sfr;
    double nyquist = 0.0;
    double edgeAngle = 0.0;
};

// Runs the method on a prepared region (8- or 16-bit, one or three channels).
PlainSfrOutcome plainSlantedEdge(const cv::Mat& region);

// Direct transform magnitudes |sum_j lsf(j) e^(i 2 pi j k / n)|, k = 0..count-1.
std::vector<double> plainSpectrum(const std::vector<double>& lsf, int count);

// The read-outs, as written: SFR at 0.5 / divisor and MTF50 of channel c.
double plainSfrAt(const PlainSfrOutcome& o, int c, double divisor);
double plainMtf50(const PlainSfrOutcome& o, int c);

}  // namespace testing
}  // namespace talonvireo
