// Projection of a region onto the edge normal: the 4x oversampled edge-spread function.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace sfr {

// Quarter-pixel bins along the edge normal: how many pixels fell in each, and their sum.
// Counts are doubles because an empty bin is filled with the mean of its neighbours' counts.
struct ProjectionBins {
    std::vector<double> counts;
    std::vector<double> sums;
    long long start = 1;  // first bin of the profile
};

// round(-rows * slope * 4), rounding halves away from zero; `rows` is the row count after
// the phase-cycle crop.
long long projectionOffset(int rows, double slope);

// Adds every pixel of the upright working image (CV_64F) to the bin of its distance
// x cos(theta) - m sin(theta) in quarter pixels, shifted so that no bin index is negative.
ProjectionBins projectOntoEdgeNormal(const cv::Mat& working, double slope);

// Bins start .. start + n - 1 that are empty, in increasing order, take the mean of their
// neighbours' counts and sums (bin 1 copies bin 2); a filled bin serves its right neighbour.
void fillEmptyBins(ProjectionBins& bins, long long n);

// sums / counts of bins start .. start + n - 1, or 0 for a bin still empty.
std::vector<double> binMeans(const ProjectionBins& bins, long long n);

// The ESF of 4 * cols samples: projection, empty-bin fill, bin means.
std::vector<double> oversampledEdgeProfile(const cv::Mat& working, double slope);

}  // namespace sfr
}  // namespace talonvireo
