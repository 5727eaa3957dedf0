#include "PlainSlantedEdge.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include <opencv2/imgproc.hpp>

namespace talonvireo {
namespace testing {

namespace {
const double kPi = 3.141592653589793;
const double kTwoPi = 6.283185307179586;

void derivative(const cv::Mat& in, cv::Mat& out, const cv::Mat& kernel) {
    cv::Mat filtered;
    cv::filter2D(in, filtered, -1, kernel, cv::Point(0, 0), 0, cv::BORDER_CONSTANT);
    const int cols = in.cols;
    if (kernel.cols == 3) {
        cv::Mat shifted = cv::Mat::zeros(filtered.size(), filtered.type());
        filtered.colRange(0, cols - 2).copyTo(shifted.colRange(1, cols - 1));
        filtered = shifted;
    }
    filtered.col(1).copyTo(filtered.col(0));
    filtered.col(cols - 2).copyTo(filtered.col(cols - 1));
    out = filtered;
}

cv::Mat hamming(int n, double mid) {
    const double wid = std::max(mid - 1, n - mid);
    cv::Mat w(1, n, CV_64F);
    for (int i = 1; i <= n; ++i) {
        w.at<double>(0, i - 1) = 0.54 + 0.46 * std::cos(kPi * (i - mid) / wid);
    }
    return w;
}

double centroid(const cv::Mat& v) {
    double s = 0;
    double m = 0;
    for (int i = 1; i <= v.cols; ++i) {
        s += v.at<double>(0, i - 1);
        m += i * v.at<double>(0, i - 1);
    }
    return s < 0.0001 ? 0.0 : m / s;
}

void fit(const std::vector<double>& y, double& slope, double& intercept) {
    const int L = static_cast<int>(y.size());
    double sm = 0;
    double sy = 0;
    for (int m = 0; m < L; ++m) {
        sm += m;
        sy += y[m];
    }
    const double xbar = sm / L;
    double num = 0;
    double den = 0;
    for (int m = 0; m < L; ++m) {
        num += (m - xbar) * y[m];
        den += (m - xbar) * (m - xbar);
    }
    slope = num / den;
    intercept = (sy - slope * sm) / L;
}
}  // namespace

std::vector<double> plainSpectrum(const std::vector<double>& lsf, int count) {
    const int n = static_cast<int>(lsf.size());
    std::vector<double> mag(count);
    for (int k = 0; k < count; ++k) {
        double re = 0;
        double im = 0;
        for (int j = 0; j < n; ++j) {
            re += lsf[j] * std::cos(j * kTwoPi * k / n);
            im += lsf[j] * std::sin(j * kTwoPi * k / n);
        }
        mag[k] = std::sqrt(re * re + im * im);
    }
    return mag;
}

PlainSfrOutcome plainSlantedEdge(const cv::Mat& region) {
    PlainSfrOutcome o;
    o.channels = region.channels();
    std::vector<cv::Mat> planes;
    cv::split(region, planes);
    for (int c = 0; c < o.channels; ++c) {
        cv::Mat img;
        planes[c].convertTo(img, CV_64F, 1, 0);
        // Orientation.
        const double dRows = std::fabs(cv::mean(img.rowRange(0, 3))[0] -
                                       cv::mean(img.rowRange(img.rows - 3, img.rows))[0]);
        const double dCols = std::fabs(cv::mean(img.colRange(0, 3))[0] -
                                       cv::mean(img.colRange(img.cols - 3, img.cols))[0]);
        if (dRows > dCols) {
            cv::Mat t;
            cv::transpose(img, t);
            cv::flip(t, img, 0);
        }
        // Contrast and kernels.
        const double left = cv::sum(img.colRange(0, 5))[0];
        const double right = cv::sum(img.colRange(img.cols - 5, img.cols))[0];
        cv::Mat k2 = right > left ? (cv::Mat_<double>(1, 2) << -0.5, 0.5)
                                  : (cv::Mat_<double>(1, 2) << 0.5, -0.5);
        cv::Mat k3 = right > left ? (cv::Mat_<double>(1, 3) << -0.5, 0, 0.5)
                                  : (cv::Mat_<double>(1, 3) << 0.5, 0, -0.5);
        if (std::fabs((left - right) / (left + right)) < 0.2) {
            o.status = -2;
            return o;
        }
        cv::Mat deriv;
        derivative(img, deriv, k2);
        const int rows = img.rows;
        const int cols = img.cols;
        std::vector<double> loc(rows);
        const cv::Mat w1 = hamming(cols, (cols + 1) * 0.5);
        for (int m = 0; m < rows; ++m) {
            loc[m] = centroid(deriv.row(m).mul(w1)) - 0.5;
        }
        double slope1 = 0;
        double intercept1 = 0;
        fit(loc, slope1, intercept1);
        for (int m = 0; m < rows; ++m) {
            loc[m] = centroid(deriv.row(m).mul(hamming(cols, intercept1 + slope1 * m))) - 0.5;
        }
        double slope = 0;
        double intercept = 0;
        fit(loc, slope, intercept);
        if (std::fabs(slope) > 1.25) {
            o.status = -3;
            return o;
        }
        if (slope == 0) {
            o.status = -4;
            return o;
        }
        const int L =
            static_cast<int>(std::round(std::floor(rows * std::fabs(slope)) / std::fabs(slope)));
        if (L != 0) {
            img = img.rowRange(0, L).clone();
        }
        o.edgeAngle = std::atan(slope) * 180 / 3.141592653589793;
        const double delfac = std::cos(std::atan(slope));

        // Oversampled profile.
        const int R = img.rows;
        const int C = img.cols;
        const int N = 4 * C;
        const int nc = (4 * C) / 2 + 1;
        std::vector<double> correct(nc);
        correct[0] = 1;
        for (int i = 1; i < nc; ++i) {
            const int k = i + 1;
            correct[i] = std::min(
                std::fabs((kTwoPi * k / (2.0 * nc + 2)) / std::sin(kTwoPi * k / (2.0 * nc + 2))),
                10.0);
        }
        o.nyquist = 1 / (delfac * 2.0);
        const double theta = std::atan(slope);
        long offset = std::lround((0 - R * slope) * 4);
        const long D = std::labs(offset);
        if (offset > 0) {
            offset = 0;
        }
        std::vector<double> counts(4 * C + D + 101, 0.0);
        std::vector<double> sums(4 * C + D + 101, 0.0);
        for (int m = 0; m < R; ++m) {
            for (int x = 0; x < C; ++x) {
                const long b =
                    static_cast<long>(std::ceil((x * std::cos(theta) - m * std::sin(theta)) * 4)) +
                    1 - offset;
                counts[b] += 1;
                sums[b] += img.at<double>(m, x);
            }
        }
        const long start = std::lround(D * 0.5) + 1;
        for (long i = start; i <= start + N - 1; ++i) {
            if (counts[i] == 0) {
                if (i == 1) {
                    counts[1] = counts[2];
                    sums[1] = sums[2];
                } else {
                    counts[i] = (counts[i - 1] + counts[i + 1]) * 0.5;
                    sums[i] = (sums[i - 1] + sums[i + 1]) * 0.5;
                }
            }
        }
        cv::Mat esf(1, N, CV_64F);
        for (int j = 0; j < N; ++j) {
            esf.at<double>(0, j) =
                counts[start + j] == 0 ? 0.0 : sums[start + j] / counts[start + j];
        }
        cv::Mat lsf;
        derivative(esf, lsf, k3);
        const double mid = centroid(lsf);
        const int centre = static_cast<int>(mid);
        const int m0 = static_cast<int>(std::round((N + 1) / 2));
        const int shift = static_cast<int>(std::round(centre - m0));
        cv::Mat centred = cv::Mat::zeros(1, N, CV_64F);
        for (int i = 0; i < N; ++i) {
            if (i + shift >= 0 && i + shift < N) {
                centred.at<double>(0, i) = lsf.at<double>(0, i + shift);
            }
        }
        centred = centred.mul(hamming(N, (N + 1) * 0.5));
        const std::vector<double> spectrum = plainSpectrum(
            std::vector<double>(centred.begin<double>(), centred.end<double>()), N / 2);
        if (spectrum[0] == 0) {
            o.status = -2;
            return o;
        }
        if (o.freq.empty() && o.sfr.empty()) {
            o.freq.assign(N / 2, {0, 0, 0, 0});
            o.sfr.assign(N / 2, {0, 0, 0, 0});
        }
        o.freq[0][c] = 0;
        o.sfr[0][c] = 1.0;
        for (int k = 1; k < N / 2; ++k) {
            o.freq[k][c] = k * 4.0 / (N * delfac);
            o.sfr[k][c] = spectrum[k] / spectrum[0] * correct[k];
        }
    }
    return o;
}

double plainSfrAt(const PlainSfrOutcome& o, int c, double divisor) {
    const double f = 0.5 / divisor;
    size_t i = 0;
    while (i < o.freq.size() && !(o.freq[i][c] > f)) {
        ++i;
    }
    return o.sfr[i - 1][c] + (o.sfr[i][c] - o.sfr[i - 1][c]) / (o.freq[i][c] - o.freq[i - 1][c]) *
                                 (f - o.freq[i - 1][c]);
}

double plainMtf50(const PlainSfrOutcome& o, int c) {
    size_t i = 0;
    while (i < o.sfr.size() && !(o.sfr[i][c] < 0.5)) {
        ++i;
    }
    if (i == o.sfr.size()) {
        i = 1;
    }
    return o.freq[i - 1][c] + (o.freq[i][c] - o.freq[i - 1][c]) / (o.sfr[i][c] - o.sfr[i - 1][c]) *
                                  (0.5 - o.sfr[i - 1][c]);
}

}  // namespace testing
}  // namespace talonvireo
