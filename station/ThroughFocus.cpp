#include "station/ThroughFocus.h"

#include <algorithm>
#include <cmath>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace station {

namespace {

constexpr double kArcminPerRadian = 180.0 * 60.0 / 3.141592653589793;

// Where the line between two samples reaches `level`.
double crossing(const FocusSample& a, const FocusSample& b, double level) {
    return a.z + (level - a.sfr) * (b.z - a.z) / (b.sfr - a.sfr);
}

}  // namespace

FocusCurve fitFocusCurve(std::vector<FocusSample> samples, double minSfr) {
    FocusCurve curve;
    std::sort(samples.begin(), samples.end(),
              [](const FocusSample& a, const FocusSample& b) { return a.z < b.z; });
    const int n = static_cast<int>(samples.size());
    if (n < 3) {
        return curve;
    }
    int peak = 0;
    for (int i = 1; i < n; ++i) {
        if (samples[static_cast<std::size_t>(i)].sfr >
            samples[static_cast<std::size_t>(peak)].sfr) {
            peak = i;
        }
    }
    const double top = samples[static_cast<std::size_t>(peak)].sfr;
    // The range above the limit, from the measured curve either side of its maximum.
    if (top >= minSfr) {
        curve.reachesLimit = true;
        curve.fromZ = samples.front().z;
        curve.toZ = samples.back().z;
        for (int i = peak; i > 0; --i) {
            if (samples[static_cast<std::size_t>(i - 1)].sfr < minSfr) {
                curve.fromZ = crossing(samples[static_cast<std::size_t>(i - 1)],
                                       samples[static_cast<std::size_t>(i)], minSfr);
                break;
            }
        }
        for (int i = peak; i + 1 < n; ++i) {
            if (samples[static_cast<std::size_t>(i + 1)].sfr < minSfr) {
                curve.toZ = crossing(samples[static_cast<std::size_t>(i)],
                                     samples[static_cast<std::size_t>(i + 1)], minSfr);
                break;
            }
        }
    }
    if (peak == 0 || peak == n - 1 || !(top > 0.0)) {
        return curve;  // focus lies outside the sweep
    }
    // Weighted least squares of log SFR = a + b u + c u^2 (u = z - z at the peak), weights
    // SFR^2: the logarithm's scatter grows as 1/SFR.
    cv::Matx33d m = cv::Matx33d::zeros();
    cv::Vec3d v(0, 0, 0);
    const double zp = samples[static_cast<std::size_t>(peak)].z;
    int used = 0;
    for (int i = std::max(0, peak - kFitReach); i <= std::min(n - 1, peak + kFitReach); ++i) {
        const FocusSample& s = samples[static_cast<std::size_t>(i)];
        if (!(s.sfr >= kFitShareOfPeak * top)) {
            continue;
        }
        const double u = s.z - zp, w = s.sfr * s.sfr;
        const cv::Vec3d basis(1.0, u, u * u);
        m += w * (basis * basis.t());
        v += w * std::log(s.sfr) * basis;
        ++used;
    }
    cv::Vec3d p;
    if (used < 3 || !cv::solve(m, v, p, cv::DECOMP_SVD) || !(p[2] < 0.0)) {
        return curve;
    }
    const double u = -p[1] / (2.0 * p[2]);
    curve.bestZ = zp + u;
    curve.peakSfr = std::exp(p[0] + p[1] * u + p[2] * u * u);
    curve.samplesFitted = used;
    return curve;
}

FocusSurface fitFocusSurface(const std::vector<FocusPoint>& points) {
    FocusSurface s;
    cv::Mat a(static_cast<int>(points.size()), 4, CV_64F);
    cv::Mat b(static_cast<int>(points.size()), 1, CV_64F);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const FocusPoint& p = points[i];
        const int r = static_cast<int>(i);
        a.at<double>(r, 0) = 1.0;
        a.at<double>(r, 1) = p.xMm;
        a.at<double>(r, 2) = p.yMm;
        a.at<double>(r, 3) = p.xMm * p.xMm + p.yMm * p.yMm;
        b.at<double>(r, 0) = p.bestZ;
    }
    if (points.size() < 4) {
        return s;
    }
    // The terms must be told apart: a well-conditioned normal matrix.
    cv::Mat w;
    cv::SVD::compute(a, w);
    if (!(w.at<double>(3) > 1e-9 * w.at<double>(0))) {
        return s;
    }
    cv::Mat x;
    cv::solve(a, b, x, cv::DECOMP_SVD);
    s.z0 = x.at<double>(0);
    s.slopeX = x.at<double>(1);
    s.slopeY = x.at<double>(2);
    s.curvature = x.at<double>(3);
    s.tiltAboutYArcmin = std::atan(s.slopeX / 1000.0) * kArcminPerRadian;
    s.tiltAboutXArcmin = std::atan(s.slopeY / 1000.0) * kArcminPerRadian;
    const cv::Mat r = a * x - b;
    s.residualRms = std::sqrt(r.dot(r) / static_cast<double>(points.size()));
    s.points = static_cast<int>(points.size());
    return s;
}

FocusWindow commonFocusWindow(const std::vector<FocusCurve>& curves) {
    FocusWindow w;
    if (curves.empty()) {
        return w;
    }
    double from = -1e300, to = 1e300;
    for (const FocusCurve& c : curves) {
        if (!c.reachesLimit) {
            return w;
        }
        from = std::max(from, c.fromZ);
        to = std::min(to, c.toZ);
    }
    if (from <= to) {
        w.fromZ = from;
        w.toZ = to;
    }
    return w;
}

}  // namespace station
}  // namespace talonvireo
