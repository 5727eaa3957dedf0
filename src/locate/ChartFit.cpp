#include "locate/ChartFit.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace talonvireo {
namespace locate {

namespace {
cv::Point2d mean(const std::vector<cv::Point2d>& points) {
    cv::Point2d sum;
    for (const cv::Point2d& p : points) {
        sum += p;
    }
    return sum / static_cast<double>(points.size());
}

// The similarity taking nominal onto located, fitted over the centres `use` keeps.
ChartFit fitOver(const std::vector<cv::Point2d>& nominal, const std::vector<cv::Point2d>& located,
                 const std::vector<bool>& use) {
    std::vector<cv::Point2d> n, l;
    for (std::size_t i = 0; i < nominal.size(); ++i) {
        if (use[i]) {
            n.push_back(nominal[i]);
            l.push_back(located[i]);
        }
    }
    const cv::Point2d mn = mean(n);
    const cv::Point2d ml = mean(l);
    // With centred p (nominal) and q (located), q = [a -b; b a] p minimises the squared
    // residual for a = sum(p.q) / sum(p.p), b = sum(p x q) / sum(p.p).
    double pp = 0.0, dot = 0.0, cross = 0.0;
    for (std::size_t i = 0; i < n.size(); ++i) {
        const cv::Point2d p = n[i] - mn;
        const cv::Point2d q = l[i] - ml;
        pp += p.dot(p);
        dot += p.dot(q);
        cross += p.x * q.y - p.y * q.x;
    }
    ChartFit fit;
    const double a = pp > 0.0 ? dot / pp : 1.0;
    const double b = pp > 0.0 ? cross / pp : 0.0;
    fit.scale = std::hypot(a, b);
    fit.rotationDeg = std::atan2(b, a) * 180.0 / M_PI;
    fit.shift = ml - cv::Point2d(a * mn.x - b * mn.y, b * mn.x + a * mn.y);
    double sum = 0.0;
    for (std::size_t i = 0; i < nominal.size(); ++i) {
        const cv::Point2d& p = nominal[i];
        const cv::Point2d model(a * p.x - b * p.y + fit.shift.x, b * p.x + a * p.y + fit.shift.y);
        const double r = std::hypot(located[i].x - model.x, located[i].y - model.y);
        sum += r * r;
        fit.maxResidual = std::max(fit.maxResidual, r);
        fit.residuals.push_back(r);
    }
    fit.rmsResidual = std::sqrt(sum / static_cast<double>(nominal.size()));
    return fit;
}

void requireLists(const std::vector<cv::Point2d>& nominal,
                  const std::vector<cv::Point2d>& located) {
    if (nominal.size() != located.size() || nominal.size() < 2) {
        throw std::invalid_argument("a chart fit needs two lists of equal length, at least 2");
    }
}
}  // namespace

ChartFit fitChart(const std::vector<cv::Point2d>& nominal,
                  const std::vector<cv::Point2d>& located) {
    requireLists(nominal, located);
    return fitOver(nominal, located, std::vector<bool>(nominal.size(), true));
}

ChartFit fitChartRobustly(const std::vector<cv::Point2d>& nominal,
                          const std::vector<cv::Point2d>& located) {
    ChartFit first = fitChart(nominal, located);
    std::vector<double> sorted = first.residuals;
    std::nth_element(sorted.begin(),
                     sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2), sorted.end());
    const double cut = std::max(4.0, 4.0 * sorted[sorted.size() / 2]);
    std::vector<bool> keep(nominal.size());
    std::size_t kept = 0;
    for (std::size_t i = 0; i < keep.size(); ++i) {
        keep[i] = first.residuals[i] <= cut;
        kept += keep[i] ? 1 : 0;
    }
    if (kept < 2 || kept == keep.size()) {
        return first;
    }
    return fitOver(nominal, located, keep);
}

}  // namespace locate
}  // namespace talonvireo
