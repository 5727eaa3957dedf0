// Per-region working state of the slanted-edge core.
#pragma once

#include <array>
#include <vector>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace sfr {

// One row of the frequency or SFR table: one column per channel.
using SfrRecord = std::array<double, 4>;

// Derivative kernels, signed so that the derivative across the edge is positive.
struct DerivativeKernels {
    double twoTap[2];
    double threeTap[3];
};

// Edge line in the upright working image: column = intercept + slope * row.
struct EdgeLine {
    double slope = 0.0;
    double intercept = 0.0;
};

// What one channel's tables were computed from, kept for the curve-level read-out.
struct ChannelProfile {
    std::vector<double> esf;  // edge spread, quarter-pixel bins along the edge normal
    std::vector<double> lsf;  // its derivative, centred and Hamming-windowed
    double edgeAngle = 0.0;   // degrees
    double delfac = 1.0;
    EdgeLine line;         // the fitted edge in the upright working image
    bool rotated = false;  // the working image was given a quarter turn
};

struct SfrContext {
    int sixteenBit = 0;  // 1 when the region's samples are 16-bit
    cv::Mat region;      // private deep copy of the region, all channels
    cv::Mat working;     // current channel as CV_64F; turned upright and cropped in place
    int rotated = 0;     // 1 when the working image was given a quarter turn
    DerivativeKernels kernels{};
    std::vector<double> rowCentroids;  // edge position per working-image row
    EdgeLine line;
    double delfac = 1.0;               // cos(atan(slope))
    std::vector<SfrRecord> freqTable;  // cycles per pixel, divided by delfac
    std::vector<SfrRecord> sfrTable;
    double nyquist = 0.0;                  // 1 / (2 delfac)
    double edgeAngle = 0.0;                // degrees
    std::vector<ChannelProfile> profiles;  // index = channel, filled as tables are written
    int status = 0;
    // false when only the edge lines and refusals are wanted (the precise method starts from
    // them): the spectrum then stops at its DC term and the tables stay zero past row 0.
    bool sfrWanted = true;
};

// Builds a context holding a deep copy of `region`. Throws std::invalid_argument for samples
// deeper than 16 bits or more than three channels.
SfrContext makeSfrContext(const cv::Mat& region);

}  // namespace sfr
}  // namespace talonvireo
