// Row sums advance four rows (twelve chains) at a time, so that the processor overlaps the
// chains instead of waiting on one; the row sums live in a ring of rows just deep enough for
// the column sums. Vector lanes take the products, the differences the row chains add, the
// column sums and the eigenvalues, all lane by lane exactly as the scalar code would.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "locate/MinEigenImage.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "locate/MinEigenImage.h"

#ifndef TALONVIREO_LOCATE_MIN_EIGEN_LAYOUT
#define TALONVIREO_LOCATE_MIN_EIGEN_LAYOUT
namespace RegularSFR {
namespace min_eigen {

inline constexpr int kBlock = 15;
inline constexpr int kReach = kBlock / 2;  // the block's anchor is its centre
inline constexpr int kGroupRows = 4;       // rows whose running sums advance together
// Row sums kept: the column sum at row y reads rows y - 7 and y + 7, and a group of rows is
// computed ahead of the row that needs it.
inline constexpr int kRingRows = 2 * kBlock - 6;
inline constexpr int kChannels = 3;  // dx dx, dx dy, dy dy

// OpenCV's default border: mirrored about the edge pixel, which is not repeated.
inline int reflect101(int i, int n) {
    return i < 0 ? -i : (i >= n ? 2 * n - 2 - i : i);
}

}  // namespace min_eigen
}  // namespace RegularSFR
#endif

HWY_BEFORE_NAMESPACE();
namespace RegularSFR {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using namespace min_eigen;

// The three gradient products of n pixels, in float as OpenCV forms them.
void products(const float* gx, const float* gy, int n, float* xx, float* xy, float* yy) {
    const hn::ScalableTag<float> df;
    const int lanes = static_cast<int>(hn::Lanes(df));
    int i = 0;
    for (; i + lanes <= n; i += lanes) {
        const auto a = hn::LoadU(df, gx + i);
        const auto b = hn::LoadU(df, gy + i);
        hn::StoreU(hn::Mul(a, a), df, xx + i);
        hn::StoreU(hn::Mul(a, b), df, xy + i);
        hn::StoreU(hn::Mul(b, b), df, yy + i);
    }
    for (; i < n; ++i) {
        xx[i] = gx[i] * gx[i];
        xy[i] = gx[i] * gy[i];
        yy[i] = gy[i] * gy[i];
    }
}

// What each step of a row's running sum adds: the value entering the block less the one
// leaving it, both widened to double first.
void steps(const float* p, int n, double* d) {
    const hn::ScalableTag<double> dd;
    const hn::Rebind<float, decltype(dd)> dh;
    const int lanes = static_cast<int>(hn::Lanes(dd));
    int i = 0;
    for (; i + lanes <= n; i += lanes) {
        const auto entering = hn::PromoteTo(dd, hn::LoadU(dh, p + i + kBlock));
        const auto leaving = hn::PromoteTo(dd, hn::LoadU(dh, p + i));
        hn::StoreU(hn::Sub(entering, leaving), dd, d + i);
    }
    for (; i < n; ++i) {
        d[i] = static_cast<double>(p[i + kBlock]) - static_cast<double>(p[i]);
    }
}

// sum += row, lane by lane.
void accumulate(double* sum, const double* row, int n) {
    const hn::ScalableTag<double> dd;
    const int lanes = static_cast<int>(hn::Lanes(dd));
    int i = 0;
    for (; i + lanes <= n; i += lanes) {
        hn::StoreU(hn::Add(hn::LoadU(dd, sum + i), hn::LoadU(dd, row + i)), dd, sum + i);
    }
    for (; i < n; ++i) {
        sum[i] += row[i];
    }
}

// One output row of the column sums: the block sum is the running sum plus the entering
// row, stored as float; the running sum then drops the leaving row.
void columnStep(double* sum, const double* entering, const double* leaving, int n, float* out) {
    const hn::ScalableTag<double> dd;
    const hn::Rebind<float, decltype(dd)> dh;
    const int lanes = static_cast<int>(hn::Lanes(dd));
    int i = 0;
    for (; i + lanes <= n; i += lanes) {
        const auto s = hn::Add(hn::LoadU(dd, sum + i), hn::LoadU(dd, entering + i));
        hn::StoreU(hn::DemoteTo(dh, s), dh, out + i);
        hn::StoreU(hn::Sub(s, hn::LoadU(dd, leaving + i)), dd, sum + i);
    }
    for (; i < n; ++i) {
        const double s = sum[i] + entering[i];
        out[i] = static_cast<float>(s);
        sum[i] = s - leaving[i];
    }
}

// The smaller eigenvalue of each pixel's summed gradient matrix, in float.
void eigenRow(const float* xx, const float* xy, const float* yy, int n, float* e) {
    const hn::ScalableTag<float> df;
    const int lanes = static_cast<int>(hn::Lanes(df));
    const auto half = hn::Set(df, 0.5f);
    int i = 0;
    for (; i + lanes <= n; i += lanes) {
        const auto a = hn::Mul(hn::LoadU(df, xx + i), half);
        const auto b = hn::LoadU(df, xy + i);
        const auto c = hn::Mul(hn::LoadU(df, yy + i), half);
        const auto t = hn::Sub(a, c);
        const auto root = hn::Sqrt(hn::Add(hn::Mul(t, t), hn::Mul(b, b)));
        hn::StoreU(hn::Sub(hn::Add(a, c), root), df, e + i);
    }
    for (; i < n; ++i) {
        const float a = xx[i] * 0.5f;
        const float b = xy[i];
        const float c = yy[i] * 0.5f;
        const float t = a - c;
        e[i] = (a + c) - std::sqrt(t * t + b * b);
    }
}

// Row sums of rows y0 .. y0 + rows - 1 into their ring slots. `pad` holds each row's
// products with 7 mirrored values at each end; each sum starts from the left border.
void rowGroup(const float* dx, const float* dy, std::size_t gradStride, int w, int y0, int rows,
              float* pad, double* stepBuffer, double* ring) {
    const int padded = w + 2 * kReach;
    const std::size_t slot = static_cast<std::size_t>(kChannels) * w;
    const auto padRow = [&](int ch, int r) {
        return pad + (static_cast<std::size_t>(ch) * kGroupRows + r) * padded;
    };
    for (int r = 0; r < rows; ++r) {
        const std::size_t y = static_cast<std::size_t>(y0 + r);
        products(dx + y * gradStride, dy + y * gradStride, w, padRow(0, r) + kReach,
                 padRow(1, r) + kReach, padRow(2, r) + kReach);
        for (int ch = 0; ch < kChannels; ++ch) {
            float* p = padRow(ch, r) + kReach;
            for (int k = 1; k <= kReach; ++k) {
                p[-k] = p[k];
                p[w - 1 + k] = p[w - 1 - k];
            }
        }
    }
    const int chains = kChannels * rows;
    double sum[kChannels * kGroupRows];
    const double* step[kChannels * kGroupRows];
    double* out[kChannels * kGroupRows];
    for (int c = 0; c < chains; ++c) {
        const int ch = c / rows;
        const int r = c % rows;
        const float* p = padRow(ch, r);
        double* d = stepBuffer + static_cast<std::size_t>(c) * w;
        steps(p, w - 1, d);
        double s = 0.0;
        for (int i = 0; i < kBlock; ++i) {
            s += p[i];
        }
        sum[c] = s;
        step[c] = d;
        out[c] = ring + static_cast<std::size_t>((y0 + r) % kRingRows) * slot +
                 static_cast<std::size_t>(ch) * w;
        out[c][0] = s;
    }
    if (chains == kChannels * kGroupRows) {
        // A fixed number of independent chains: unrolled, they stay in registers.
        constexpr int kChains = kChannels * kGroupRows;
        for (int x = 1; x < w; ++x) {
            for (int c = 0; c < kChains; ++c) {
                sum[c] += step[c][x - 1];
                out[c][x] = sum[c];
            }
        }
    } else {
        for (int c = 0; c < chains; ++c) {
            double s = sum[c];
            for (int x = 1; x < w; ++x) {
                s += step[c][x - 1];
                out[c][x] = s;
            }
        }
    }
}

void MinEigenOfGradients(const float* dx, const float* dy, std::size_t gradStride, int w, int h,
                         float* eig, std::size_t eigStride, float* pad, double* stepRows,
                         double* ring, double* columnSum, float* box) {
    const std::size_t slot = static_cast<std::size_t>(kChannels) * w;
    const auto rowSums = [&](int y) {
        return ring + static_cast<std::size_t>(y % kRingRows) * slot;
    };
    int computed = 0;
    const auto computeThrough = [&](int last) {
        while (computed <= last) {
            const int rows = std::min(kGroupRows, h - computed);
            rowGroup(dx, dy, gradStride, w, computed, rows, pad, stepRows, ring);
            computed += rows;
        }
    };
    const int n = static_cast<int>(slot);
    std::fill(columnSum, columnSum + slot, 0.0);
    computeThrough(kReach);
    for (int k = 0; k < kBlock - 1; ++k) {
        accumulate(columnSum, rowSums(reflect101(k - kReach, h)), n);
    }
    for (int y = 0; y < h; ++y) {
        const int entering = reflect101(y + kReach, h);
        computeThrough(entering);
        columnStep(columnSum, rowSums(entering), rowSums(reflect101(y - kReach, h)), n, box);
        eigenRow(box, box + w, box + 2 * w, w, eig + static_cast<std::size_t>(y) * eigStride);
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace RegularSFR
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace RegularSFR {

HWY_EXPORT(MinEigenOfGradients);

namespace {

// The largest value of a float image, the maximum minMaxLoc reports: the same value
// whatever the order of comparison, so eight running maxima keep the scan from waiting on
// one chain of comparisons, and no location is tracked.
double largestValue(const cv::Mat& m) {
    constexpr int kLanes = 8;
    float best[kLanes];
    std::fill(best, best + kLanes, -FLT_MAX);
    for (int y = 0; y < m.rows; ++y) {
        const float* row = m.ptr<float>(y);
        int x = 0;
        for (; x + kLanes <= m.cols; x += kLanes) {
            for (int k = 0; k < kLanes; ++k) {
                best[k] = row[x + k] > best[k] ? row[x + k] : best[k];
            }
        }
        for (; x < m.cols; ++x) {
            best[0] = row[x] > best[0] ? row[x] : best[0];
        }
    }
    return *std::max_element(best, best + kLanes);
}

}  // namespace

double minEigenImage(const cv::Mat& image, cv::Mat& eig) {
    using namespace min_eigen;
    if (image.type() != CV_8UC1 || image.rows <= kReach || image.cols <= kReach) {
        cv::cornerMinEigenVal(image, eig, kBlock, 3, cv::BORDER_DEFAULT);
        return largestValue(eig);
    }
    // OpenCV's gradient scale for an 8-bit image: aperture weight 4, block 15, 255 levels.
    const double scale = 1.0 / (static_cast<double>(1 << 2) * kBlock * 255.0);
    cv::Mat dx;
    cv::Mat dy;
    cv::Sobel(image, dx, CV_32F, 1, 0, 3, scale, 0, cv::BORDER_DEFAULT);
    cv::Sobel(image, dy, CV_32F, 0, 1, 3, scale, 0, cv::BORDER_DEFAULT);
    const int w = image.cols;
    const std::size_t slot = static_cast<std::size_t>(kChannels) * w;
    std::vector<float> pad(static_cast<std::size_t>(kChannels) * kGroupRows * (w + 2 * kReach));
    std::vector<double> stepRows(static_cast<std::size_t>(kGroupRows) * slot);
    std::vector<double> ring(static_cast<std::size_t>(kRingRows) * slot);
    std::vector<double> columnSum(slot);
    std::vector<float> box(slot);
    eig.create(image.size(), CV_32FC1);
    HWY_DYNAMIC_DISPATCH(MinEigenOfGradients)
    (dx.ptr<float>(), dy.ptr<float>(), dx.step1(), w, image.rows, eig.ptr<float>(), eig.step1(),
     pad.data(), stepRows.data(), ring.data(), columnSum.data(), box.data());
    return largestValue(eig);
}

}  // namespace RegularSFR
#endif
