#include "render/TextPainter.h"

#include <algorithm>
#include <cmath>

namespace talonvireo {
namespace render {

namespace {

// Blurred coverage of a bar at (x, y): separable along its own axes.
double barCoverage(const FrameBar& b, double x, double y, double inverseSigma,
                   const NormalCdfTable& cdf) {
    const double dx = x - b.cx, dy = y - b.cy;
    const double lu = dx * b.ux + dy * b.uy;
    const double lv = -dx * b.uy + dy * b.ux;
    return (cdf((lu + b.halfU) * inverseSigma) - cdf((lu - b.halfU) * inverseSigma)) *
           (cdf((lv + b.halfV) * inverseSigma) - cdf((lv - b.halfV) * inverseSigma));
}

}  // namespace

TextMark textMark(const ClutterText& text, double paint, const PaintContext& context) {
    TextMark t;
    t.bars = textBars(text);
    t.sigma = context.blur.sigma(text.x, text.y);
    t.paint = paint;
    const double reach = kReachSigmas * t.sigma + kHalfDiagonal;
    cv::Rect2d all;
    for (const FrameBar& b : t.bars) {
        const double ex = std::abs(b.ux) * b.halfU + std::abs(b.uy) * b.halfV + reach;
        const double ey = std::abs(b.uy) * b.halfU + std::abs(b.ux) * b.halfV + reach;
        const cv::Rect2d box(b.cx - ex, b.cy - ey, 2.0 * ex, 2.0 * ey);
        all = t.reach.empty() ? box : (all | box);
        t.reach.push_back(box);
    }
    if (!t.bars.empty()) {
        const int c0 = static_cast<int>(std::floor(all.x));
        const int r0 = static_cast<int>(std::floor(all.y));
        const int c1 = static_cast<int>(std::ceil(all.x + all.width));
        const int r1 = static_cast<int>(std::ceil(all.y + all.height));
        t.box = {c0, r0, c1 - c0 + 1, r1 - r0 + 1};
    }
    return t;
}

void paintTextMark(cv::Mat& levels, const TextMark& t, cv::Rect clip, const PaintContext& context) {
    const cv::Rect box = t.box & clip & cv::Rect(0, 0, levels.cols, levels.rows);
    const double inverseSigma = 1.0 / t.sigma;
    const PixelNodes& nodes = context.nodes;
    std::vector<const FrameBar*> here;
    for (int r = box.y; r < box.y + box.height; ++r) {
        double* row = levels.ptr<double>(r);
        for (int c = box.x; c < box.x + box.width; ++c) {
            here.clear();
            for (std::size_t k = 0; k < t.bars.size(); ++k) {
                if (t.reach[k].contains(cv::Point2d(c, r))) {
                    here.push_back(&t.bars[k]);
                }
            }
            if (here.empty()) {
                continue;
            }
            double cov = 0.0;
            for (std::size_t k = 0; k < nodes.weight.size(); ++k) {
                double sum = 0.0;
                for (const FrameBar* b : here) {
                    sum += barCoverage(*b, c + nodes.dx[k], r + nodes.dy[k], inverseSigma,
                                       context.cdf);
                }
                cov += nodes.weight[k] * std::min(sum, 1.0);
            }
            paintOver(row[c], t.paint, cov);
        }
    }
}

}  // namespace render
}  // namespace talonvireo
