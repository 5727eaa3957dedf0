#include "sfr/IlluminationFlattening.h"

#include <algorithm>
#include <cmath>

namespace talonvireo {
namespace sfr {

namespace {

// Samples each side needs for its plane: well over the three unknowns, so that noise does not
// tilt it.
constexpr int kMinSideSamples = 30;

struct PlaneSums {
    cv::Matx33d m = cv::Matx33d::zeros();
    cv::Vec3d v = cv::Vec3d(0, 0, 0);
    int n = 0;
    void add(double x, double y, double value) {
        const cv::Vec3d basis(1.0, x, y);
        m += basis * basis.t();
        v += value * basis;
        ++n;
    }
};

}  // namespace

cv::Mat flattenIllumination(const cv::Mat& region, cv::Point2d point, cv::Point2d direction,
                            double clearance) {
    CV_Assert(region.channels() == 1 && (region.depth() == CV_8U || region.depth() == CV_16U));
    cv::Mat levels;
    region.convertTo(levels, CV_64F);
    const double xc = 0.5 * (region.cols - 1), yc = 0.5 * (region.rows - 1);
    const double a = direction.y, b = -direction.x, c = -(a * point.x + b * point.y);
    PlaneSums sides[2];
    for (int y = 0; y < levels.rows; ++y) {
        const double* row = levels.ptr<double>(y);
        for (int x = 0; x < levels.cols; ++x) {
            const double d = a * x + b * y + c;
            if (std::abs(d) > clearance) {
                sides[d > 0.0 ? 1 : 0].add(x - xc, y - yc, row[x]);
            }
        }
    }
    const double depthScale = region.depth() == CV_8U ? 256.0 : 1.0;
    cv::Mat out;
    if (sides[0].n < kMinSideSamples || sides[1].n < kMinSideSamples) {
        levels.convertTo(out, CV_16U, depthScale);
        return out;
    }
    // Each side's plane level + gx x + gy y; the relative gradient both share, weighted by
    // level so that the brighter, less noisy side counts more.
    double gx = 0.0, gy = 0.0, weight = 0.0;
    for (const PlaneSums& s : sides) {
        cv::Vec3d p;
        if (!cv::solve(s.m, s.v, p, cv::DECOMP_CHOLESKY) || !(p[0] > 0.0)) {
            levels.convertTo(out, CV_16U, depthScale);
            return out;
        }
        const double w = s.n * p[0];
        gx += w * p[1];
        gy += w * p[2];
        weight += w * p[0];
    }
    gx /= weight;
    gy /= weight;
    double largest = 0.0;
    for (int y = 0; y < levels.rows; ++y) {
        double* row = levels.ptr<double>(y);
        for (int x = 0; x < levels.cols; ++x) {
            const double light = 1.0 + gx * (x - xc) + gy * (y - yc);
            row[x] /= std::max(light, 1e-3);
            largest = std::max(largest, row[x]);
        }
    }
    const double scale = std::min(depthScale, largest > 0.0 ? 65535.0 / largest : depthScale);
    levels.convertTo(out, CV_16U, scale);
    return out;
}

}  // namespace sfr
}  // namespace talonvireo
