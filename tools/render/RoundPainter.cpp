#include "render/RoundPainter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "render/Pi.h"
#include "talonvireo/ChartRegistration.h"

namespace talonvireo {
namespace render {

namespace {

constexpr double kFar = std::numeric_limits<double>::max();

cv::Rect boxAround(double x0, double y0, double x1, double y1, double margin) {
    const int c0 = static_cast<int>(std::floor(x0 - margin));
    const int r0 = static_cast<int>(std::floor(y0 - margin));
    const int c1 = static_cast<int>(std::ceil(x1 + margin));
    const int r1 = static_cast<int>(std::ceil(y1 + margin));
    return {c0, r0, c1 - c0 + 1, r1 - r0 + 1};
}

// Chart units inside the rim of the chart point under frame pixel (x, y).
double chartRim(const RoundMark& m, const ChartRegistration& placement, double x, double y,
                bool& ok) {
    ChartPoint q;
    ok = frameToChart(placement, {x, y}, q);
    return m.radius - std::hypot(q.x - m.centre.x, q.y - m.centre.y);
}

// Signed frame distance inside the rim of a chart mark: first order from a central
// difference, then one Newton step from the foot estimate onto the rim's image.
FrameDistance chartMarkDistance(const RoundMark& m, const ChartRegistration& placement, double x,
                                double y, double limit) {
    bool ok = true;
    const double f = chartRim(m, placement, x, y, ok);
    if (!ok) {
        return {-kFar, 0.0, 0.0};
    }
    // Clearly in or out on the local scale, within a factor of two.
    if (std::abs(f) * m.scale > 2.0 * limit + 2.0) {
        return {f > 0.0 ? kFar : -kFar, 0.0, 0.0};
    }
    constexpr double h = 0.25;
    bool ok1 = true, ok2 = true, ok3 = true, ok4 = true;
    const double gx =
        (chartRim(m, placement, x + h, y, ok1) - chartRim(m, placement, x - h, y, ok2)) / (2 * h);
    const double gy =
        (chartRim(m, placement, x, y + h, ok3) - chartRim(m, placement, x, y - h, ok4)) / (2 * h);
    const double norm = std::hypot(gx, gy);
    if (!(ok1 && ok2 && ok3 && ok4) || !(norm > 1e-12)) {
        return {f > 0.0 ? kFar : -kFar, 0.0, 0.0};
    }
    FrameDistance d{f / norm, gx / norm, gy / norm};
    const double rest = chartRim(m, placement, x - d.d * d.nx, y - d.d * d.ny, ok);
    if (ok) {
        d.d += rest / norm;
    }
    return d;
}

FrameDistance discDistance(const RoundMark& m, double x, double y) {
    const double dx = m.centre.x - x, dy = m.centre.y - y;
    const double r = std::hypot(dx, dy);
    return r > 0.0 ? FrameDistance{m.radius - r, dx / r, dy / r}
                   : FrameDistance{m.radius, 1.0, 0.0};
}

}  // namespace

RoundMark chartMark(const ChartMark& mark, double paint, const PaintContext& context) {
    const ChartRegistration& placement = *context.placement;
    RoundMark m;
    m.onChart = true;
    m.centre = mark.centre;
    m.radius = 0.5 * mark.diameter;
    m.paint = paint;
    // The rim's image bounds the box and gives the local scale.
    double x0 = 1e300, y0 = 1e300, x1 = -1e300, y1 = -1e300;
    constexpr int kRimPoints = 64;
    for (int k = 0; k < kRimPoints; ++k) {
        const double a = 2.0 * kPi * k / kRimPoints;
        const ChartPoint p = chartToFrame(placement, {mark.centre.x + m.radius * std::cos(a),
                                                      mark.centre.y + m.radius * std::sin(a)});
        x0 = std::min(x0, p.x);
        y0 = std::min(y0, p.y);
        x1 = std::max(x1, p.x);
        y1 = std::max(y1, p.y);
    }
    const ChartPoint centre = chartToFrame(placement, mark.centre);
    m.sigma = context.blur.sigma(centre.x, centre.y);
    m.scale = std::max(x1 - x0, y1 - y0) / mark.diameter;
    m.box = boxAround(x0, y0, x1, y1, 1.1 * (kReachSigmas * m.sigma + kHalfDiagonal) + 2.0);
    return m;
}

RoundMark clutterDisc(const ClutterDisc& disc, double paint, const PaintContext& context) {
    RoundMark m;
    m.centre = {disc.x, disc.y};
    m.radius = 0.5 * disc.diameter;
    m.sigma = context.blur.sigma(disc.x, disc.y);
    m.paint = paint;
    m.box = boxAround(disc.x - m.radius, disc.y - m.radius, disc.x + m.radius, disc.y + m.radius,
                      kReachSigmas * m.sigma + kHalfDiagonal + 2.0);
    return m;
}

void paintRoundMark(cv::Mat& levels, const RoundMark& m, cv::Rect clip,
                    const PaintContext& context) {
    const cv::Rect box = m.box & clip & cv::Rect(0, 0, levels.cols, levels.rows);
    const double limit = kReachSigmas * m.sigma + kHalfDiagonal + 0.05;
    const PixelNodes& nodes = context.nodes;
    for (int r = box.y; r < box.y + box.height; ++r) {
        double* row = levels.ptr<double>(r);
        for (int c = box.x; c < box.x + box.width; ++c) {
            const FrameDistance d = m.onChart
                                        ? chartMarkDistance(m, *context.placement, c, r, limit)
                                        : discDistance(m, c, r);
            if (d.d < -limit) {
                continue;
            }
            if (d.d > limit) {
                row[c] = m.paint;
                continue;
            }
            double cov = 0.0;
            for (std::size_t k = 0; k < nodes.weight.size(); ++k) {
                cov += nodes.weight[k] *
                       context.cdf((d.d + d.nx * nodes.dx[k] + d.ny * nodes.dy[k]) / m.sigma);
            }
            paintOver(row[c], m.paint, cov);
        }
    }
}

}  // namespace render
}  // namespace talonvireo
