#include "sfr/EdgeProjection.h"

#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include "sfr/SfrConstants.h"

namespace talonvireo {
namespace sfr {

namespace {
// Adding and taking away 1.5 * 2^52 rounds any |x| < 2^51 to an integer, exactly.
constexpr double kRounder = 6755399441055744.0;

// std::ceil of each column's distance in quarter pixels, (x cos - m sin) 4, for a row whose
// m sin is `shift`: rounded, then one up where that rounded down. Independent columns, so the
// loop runs several at once.
void quarterPlaces(int cols, double cosT, double shift, double* __restrict place) {
    for (int x = 0; x < cols; ++x) {
        const double v = (x * cosT - shift) * kOversampling;
        const double y = (v + kRounder) - kRounder;
        place[x] = y < v ? y + 1.0 : y;
    }
}
}  // namespace

long long projectionOffset(int rows, double slope) {
    return static_cast<long long>(std::round((0.0 - rows * slope) * kOversampling));
}

ProjectionBins projectOntoEdgeNormal(const cv::Mat& working, double slope) {
    const int rows = working.rows;
    const int cols = working.cols;
    long long offset = projectionOffset(rows, slope);
    const long long spare = std::llabs(offset);
    if (offset > 0) {
        offset = 0;
    }
    // Bins 1 .. 4 cols + spare hold every projection; the extra 100 are headroom.
    const size_t binCount =
        static_cast<size_t>(kOversampling * static_cast<long long>(cols) + spare + 101);
    ProjectionBins bins;
    bins.counts.assign(binCount, 0.0);
    bins.sums.assign(binCount, 0.0);
    bins.start = static_cast<long long>(std::round(spare * 0.5)) + 1;

    const double theta = std::atan(slope);
    const double cosT = std::cos(theta);
    const double sinT = std::sin(theta);
    std::vector<double> place(static_cast<size_t>(cols));
    for (int m = 0; m < rows; ++m) {
        const double* row = working.ptr<double>(m);
        quarterPlaces(cols, cosT, m * sinT, place.data());
        for (int x = 0; x < cols; ++x) {
            const long long bin = static_cast<long long>(place[x]) + 1 - offset;
            if (bin < 0 || bin >= static_cast<long long>(binCount)) {
                throw std::out_of_range("edge projection outside its bins");
            }
            bins.counts[bin] += 1.0;
            bins.sums[bin] += row[x];
        }
    }
    return bins;
}

void fillEmptyBins(ProjectionBins& bins, long long n) {
    std::vector<double>& counts = bins.counts;
    std::vector<double>& sums = bins.sums;
    if (bins.start < 1 || bins.start + n + 1 > static_cast<long long>(counts.size())) {
        throw std::out_of_range("profile outside its bins");
    }
    for (long long i = bins.start; i < bins.start + n; ++i) {
        if (counts[i] != 0.0) {
            continue;
        }
        if (i == 1) {
            counts[1] = counts[2];
            sums[1] = sums[2];
        } else {
            counts[i] = (counts[i - 1] + counts[i + 1]) * 0.5;
            sums[i] = (sums[i - 1] + sums[i + 1]) * 0.5;
        }
    }
}

std::vector<double> binMeans(const ProjectionBins& bins, long long n) {
    std::vector<double> means(static_cast<size_t>(n), 0.0);
    for (long long j = 0; j < n; ++j) {
        const double count = bins.counts[bins.start + j];
        if (count != 0.0) {
            means[j] = bins.sums[bins.start + j] / count;
        }
    }
    return means;
}

std::vector<double> oversampledEdgeProfile(const cv::Mat& working, double slope) {
    const long long n = static_cast<long long>(kOversampling) * working.cols;
    ProjectionBins bins = projectOntoEdgeNormal(working, slope);
    fillEmptyBins(bins, n);
    return binMeans(bins, n);
}

}  // namespace sfr
}  // namespace talonvireo
