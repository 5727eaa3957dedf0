#include "detect/NoiseLevel.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace talonvireo {
namespace detect {

namespace {
// Every eighth row, disjoint pairs along it: a few hundred thousand differences on a
// 2000 x 1500 image, plenty for a median.
constexpr int kRowStep = 8;
}  // namespace

double noiseSigma(const cv::Mat& values) {
    CV_Assert(values.type() == CV_32F);
    std::vector<float> diffs;
    diffs.reserve(static_cast<size_t>(values.cols / 2 + 1) * (values.rows / kRowStep + 1));
    for (int r = 0; r < values.rows; r += kRowStep) {
        const float* row = values.ptr<float>(r);
        for (int c = 0; c + 1 < values.cols; c += 2) {
            diffs.push_back(std::abs(row[c + 1] - row[c]));
        }
    }
    if (diffs.empty()) {
        return 0.0;
    }
    auto mid = diffs.begin() + static_cast<std::ptrdiff_t>(diffs.size() / 2);
    std::nth_element(diffs.begin(), mid, diffs.end());
    // |a - b| of two independent normal samples has median 0.6745 * sqrt(2) sigma.
    return *mid / (0.6745 * std::sqrt(2.0));
}

}  // namespace detect
}  // namespace talonvireo
