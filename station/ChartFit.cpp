#include "station/ChartFit.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace talonvireo {
namespace station {

namespace {
cv::Point2d mean(const std::vector<cv::Point2d>& points) {
    cv::Point2d sum;
    for (const cv::Point2d& p : points) {
        sum += p;
    }
    return sum / static_cast<double>(points.size());
}
}  // namespace

ChartFit fitChart(const std::vector<cv::Point2d>& nominal,
                  const std::vector<cv::Point2d>& located) {
    if (nominal.size() != located.size() || nominal.size() < 2) {
        throw std::invalid_argument("a chart fit needs two lists of equal length, at least 2");
    }
    const cv::Point2d mn = mean(nominal);
    const cv::Point2d ml = mean(located);
    // With centred p (nominal) and q (located), q = [a -b; b a] p minimises the squared
    // residual for a = sum(p.q) / sum(p.p), b = sum(p x q) / sum(p.p).
    double pp = 0.0, dot = 0.0, cross = 0.0;
    for (std::size_t i = 0; i < nominal.size(); ++i) {
        const cv::Point2d p = nominal[i] - mn;
        const cv::Point2d q = located[i] - ml;
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
    }
    fit.rmsResidual = std::sqrt(sum / static_cast<double>(nominal.size()));
    return fit;
}

}  // namespace station
}  // namespace talonvireo
