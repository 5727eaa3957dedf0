#include "sfr/EdgeCentroids.h"

#include "sfr/HammingWindow.h"
#include "sfr/RowCentroid.h"

namespace talonvireo {
namespace sfr {

std::vector<double> centroidsUnderCentredWindow(int rows, int cols, const DerivativeRow& row) {
    const std::vector<double> window = hammingWindow(cols, (cols + 1) * 0.5);
    std::vector<double> loc(static_cast<size_t>(rows));
    for (int m = 0; m < rows; ++m) {
        loc[m] = weightedRowCentroid(row(m), window.data(), cols) - 0.5;
    }
    return loc;
}

std::vector<double> centroidsUnderCentredWindow(const cv::Mat& derivative) {
    return centroidsUnderCentredWindow(derivative.rows, derivative.cols,
                                       [&](int m) { return derivative.ptr<double>(m); });
}

std::vector<double> centroidsAlongLine(int rows, int cols, const DerivativeRow& row,
                                       const EdgeLine& line) {
    std::vector<double> window(static_cast<size_t>(cols));
    std::vector<double> loc(static_cast<size_t>(rows));
    for (int m = 0; m < rows; ++m) {
        hammingWindow(cols, line.intercept + line.slope * m, window.data());
        loc[m] = weightedRowCentroid(row(m), window.data(), cols) - 0.5;
    }
    return loc;
}

}  // namespace sfr
}  // namespace talonvireo
