#include "render/ChartRenderer.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <stdexcept>

#include "render/GaussLegendre.h"

namespace talonvireo {
namespace render {

namespace {
constexpr int kNodes = 6;             // Gauss-Legendre nodes per pixel axis
constexpr double kReachSigmas = 5.5;  // beyond this the CDF is 0 or 1 to about 2e-8
constexpr double kHalfDiagonal = 0.7072;

// Normal CDF, exactly 0 or 1 far out.
inline double normalCdf(double t) {
    if (t < -8.5) {
        return 0.0;
    }
    if (t > 8.5) {
        return 1.0;
    }
    return 0.5 * std::erfc(-t * 0.7071067811865476);
}

// Blurred coverage of the interval [-h, h] at offset x.
inline double blurredInterval(double x, double h, double sigma) {
    return normalCdf((x + h) / sigma) - normalCdf((x - h) / sigma);
}

struct SquareFrame {
    cv::Point2d centre;
    cv::Point2d u;
    cv::Point2d v;
    double half;
    double sigma;  // in chart units
};

void renderSquare(const ChartSquare& square, const cv::Matx33d& toImage, const cv::Matx33d& toChart,
                  double sigma, const QuadratureRule& rule, cv::Mat& coverage) {
    const double scaleHere = localScale(toImage, {square.cx, square.cy});
    const SquareFrame f{{square.cx, square.cy},
                        square.axisU(),
                        square.axisV(),
                        0.5 * square.side,
                        sigma / scaleHere};
    const double margin = kReachSigmas * f.sigma + kHalfDiagonal / scaleHere;

    double minX = 1e300, minY = 1e300, maxX = -1e300, maxY = -1e300;
    for (const cv::Point2d& p : square.outline()) {
        const cv::Point2d q = applyHomography(toImage, p);
        minX = std::min(minX, q.x);
        maxX = std::max(maxX, q.x);
        minY = std::min(minY, q.y);
        maxY = std::max(maxY, q.y);
    }
    const double reach = kReachSigmas * sigma + 2.0;
    const int c0 = std::max(0, static_cast<int>(std::floor(minX - reach)));
    const int c1 = std::min(coverage.cols - 1, static_cast<int>(std::ceil(maxX + reach)));
    const int r0 = std::max(0, static_cast<int>(std::floor(minY - reach)));
    const int r1 = std::min(coverage.rows - 1, static_cast<int>(std::ceil(maxY + reach)));

    auto local = [&](double x, double y) {
        const cv::Point2d d = applyHomography(toChart, {x, y}) - f.centre;
        return cv::Point2d(d.dot(f.u), d.dot(f.v));
    };
    for (int r = r0; r <= r1; ++r) {
        double* row = coverage.ptr<double>(r);
        for (int c = c0; c <= c1; ++c) {
            const cv::Point2d p = local(c, r);
            const double du = std::abs(p.x) - f.half;
            const double dv = std::abs(p.y) - f.half;
            if (du > margin || dv > margin) {
                continue;  // light
            }
            if (du < -margin && dv < -margin) {
                row[c] += 1.0;  // dark
                continue;
            }
            double sum = 0.0;
            for (int i = 0; i < kNodes; ++i) {
                for (int j = 0; j < kNodes; ++j) {
                    const cv::Point2d q = local(c + 0.5 * rule.nodes[j], r + 0.5 * rule.nodes[i]);
                    sum += rule.weights[i] * rule.weights[j] *
                           blurredInterval(q.x, f.half, f.sigma) *
                           blurredInterval(q.y, f.half, f.sigma);
                }
            }
            row[c] += 0.25 * sum;
        }
    }
}

double siteGain(const ChartExposure& e, int row, int col) {
    if (!e.bayer) {
        return 1.0;
    }
    if (row % 2 == 0) {
        return col % 2 == 0 ? e.gainRed : e.gainGreen;
    }
    return col % 2 == 0 ? e.gainGreen : e.gainBlue;
}
}  // namespace

cv::Mat chartCoverage(const std::vector<ChartSquare>& squares, const ChartTransform& transform,
                      double sigma, int width, int height) {
    if (width <= 0 || height <= 0 || !(sigma > 0.0)) {
        throw std::invalid_argument("chart size and sigma must be positive");
    }
    cv::Mat coverage(height, width, CV_64F, cv::Scalar(0.0));
    const cv::Matx33d toImage = transform.homography();
    const cv::Matx33d toChart = toImage.inv();
    const QuadratureRule rule = gaussLegendre(kNodes);
    // Squares keep 40 px apart, far more than a blur reaches, so no pixel has two writers.
    const int count = static_cast<int>(squares.size());
#pragma omp parallel for schedule(dynamic)
    for (int k = 0; k < count; ++k) {
        renderSquare(squares[k], toImage, toChart, sigma, rule, coverage);
    }
    return coverage;
}

cv::Mat exposeChart(const cv::Mat& coverage, const ChartExposure& e) {
    if (e.bits != 8 && e.bits != 10 && e.bits != 14 && e.bits != 16) {
        throw std::invalid_argument("bits must be 8, 10, 14 or 16");
    }
    const double fullScale = std::ldexp(1.0, e.bits) - 1.0;
    cv::Mat out(coverage.size(), e.bits == 8 ? CV_8U : CV_16U);
    std::mt19937_64 rng(e.seed);
    std::normal_distribution<double> normal(0.0, 1.0);
    const bool noisy = e.shotNoise > 0.0 || e.readNoise > 0.0;
    for (int r = 0; r < coverage.rows; ++r) {
        const double* cov = coverage.ptr<double>(r);
        for (int c = 0; c < coverage.cols; ++c) {
            double level = fullScale * (e.light - (e.light - e.dark) * cov[c]) * siteGain(e, r, c);
            if (noisy) {
                const double variance = e.readNoise * e.readNoise + e.shotNoise * e.shotNoise *
                                                                        std::max(level, 0.0) /
                                                                        fullScale;
                level += std::sqrt(variance) * normal(rng);
            }
            const double v = std::clamp(std::round(level), 0.0, fullScale);
            if (e.bits == 8) {
                out.at<unsigned char>(r, c) = static_cast<unsigned char>(v);
            } else {
                out.at<unsigned short>(r, c) = static_cast<unsigned short>(v);
            }
        }
    }
    return out;
}

}  // namespace render
}  // namespace talonvireo
