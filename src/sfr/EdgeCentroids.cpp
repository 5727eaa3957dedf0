#include "sfr/EdgeCentroids.h"

#include "sfr/HammingWindow.h"
#include "sfr/RowCentroid.h"

namespace talonvireo {
namespace sfr {

std::vector<double> centroidsUnderCentredWindow(const cv::Mat& derivative) {
    const int cols = derivative.cols;
    const std::vector<double> window = hammingWindow(cols, (cols + 1) * 0.5);
    std::vector<double> loc(static_cast<size_t>(derivative.rows));
    for (int m = 0; m < derivative.rows; ++m) {
        loc[m] = weightedRowCentroid(derivative.ptr<double>(m), window.data(), cols) - 0.5;
    }
    return loc;
}

std::vector<double> centroidsAlongLine(const cv::Mat& derivative, const EdgeLine& line) {
    const int cols = derivative.cols;
    std::vector<double> window(static_cast<size_t>(cols));
    std::vector<double> loc(static_cast<size_t>(derivative.rows));
    for (int m = 0; m < derivative.rows; ++m) {
        hammingWindow(cols, line.intercept + line.slope * m, window.data());
        loc[m] = weightedRowCentroid(derivative.ptr<double>(m), window.data(), cols) - 0.5;
    }
    return loc;
}

}  // namespace sfr
}  // namespace talonvireo
