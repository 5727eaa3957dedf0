// The pixels of one channel as samples on a lattice in upright coordinates.
//
// The precise method places every sample at its own position rather than in a bin, so a
// whole channel and one colour plane of a mosaic (every second pixel of every second row)
// are measured by the same code; only the lattice differs.
#pragma once

#include <opencv2/core.hpp>

namespace talonvireo {
namespace sfr {

// Levels on a lattice of the upright frame, where the edge runs down the columns: sample
// (i, j) of `values` sits at column x0 + pitch j, row y0 + pitch i.
struct EdgeSamples {
    cv::Mat values;  // CV_32FC1: exact for 8- and 16-bit levels, half the memory of double
    int x0 = 0;
    int y0 = 0;
    int pitch = 1;

    int rows() const { return values.rows; }
    int cols() const { return values.cols; }
    double x(int j) const { return x0 + pitch * static_cast<double>(j); }
    double y(int i) const { return y0 + pitch * static_cast<double>(i); }
};

// Every pixel of one channel of `region` (8- or 16-bit), given the quarter turn (transpose,
// then rows reversed) when `rotated`.
EdgeSamples imageSamples(const cv::Mat& region, int channel, bool rotated);

// The samples at (ox + 2u, oy + 2v) of a one-channel mosaic, in the upright frame of the
// whole mosaic (a quarter turn, transpose then rows reversed, when `rotated`).
EdgeSamples planeSamples(const cv::Mat& mosaic, int ox, int oy, bool rotated);

}  // namespace sfr
}  // namespace talonvireo
