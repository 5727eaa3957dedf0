#include "render/LineRegionPainter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

namespace talonvireo {
namespace render {

namespace {

constexpr int kTile = 8;                                          // pixels a side
constexpr double kTileHalfDiagonal = 0.5 * (kTile - 1) * 1.4143;  // centre to farthest pixel

struct ActiveSide {
    double d;
    double nx;
    double ny;
    double inverseSigma;
};

// Coverage of one pixel by the sides still within reach (the others cover it wholly).
double pixelCoverage(const ActiveSide* sides, int count, const PaintContext& context) {
    const PixelNodes& nodes = context.nodes;
    double sum = 0.0;
    for (std::size_t k = 0; k < nodes.weight.size(); ++k) {
        double product = nodes.weight[k];
        for (int s = 0; s < count; ++s) {
            const ActiveSide& a = sides[s];
            product *=
                context.cdf((a.d + a.nx * nodes.dx[k] + a.ny * nodes.dy[k]) * a.inverseSigma);
        }
        sum += product;
    }
    return sum;
}

// One pixel: its coverage from the sides within reach.
void paintPixel(double& level, const LineRegion& region, int c, int r,
                const PaintContext& context) {
    const ChartRegistration& placement = *context.placement;
    UndistortedPoint u;
    if (!undistort(placement, c, r, u)) {
        return;
    }
    std::array<ActiveSide, 4> sides{};
    int active = 0;
    for (const FrameLine& line : region.lines) {
        const FrameDistance first = firstOrderDistance(line, u);
        if (first.d < -region.pixelLimit) {
            return;  // out
        }
        if (first.d > region.pixelLimit) {
            continue;  // wholly inside this side
        }
        const FrameDistance d = refinedDistance(line, placement, c, r, first);
        const double sigma = context.blur.sigmaAcross(c - d.d * d.nx, r - d.d * d.ny, d.nx, d.ny);
        sides[active++] = {d.d, d.nx, d.ny, 1.0 / sigma};
    }
    if (active == 0) {
        level = region.paint;
        return;
    }
    paintOver(level, region.paint, pixelCoverage(sides.data(), active, context));
}

}  // namespace

LineRegion lineRegion(std::vector<FrameLine> lines, cv::Rect box, double paint,
                      const PaintContext& context) {
    if (lines.empty() || lines.size() > 4) {
        throw std::invalid_argument("a painted region has one to four sides");
    }
    LineRegion region;
    region.lines = std::move(lines);
    region.box = box;
    region.paint = paint;
    const double sigmaMax =
        context.blur.largestOver(box.x, box.y, box.x + box.width - 1.0, box.y + box.height - 1.0);
    region.pixelLimit = beyondReach(kReachSigmas * sigmaMax + kHalfDiagonal, context.bend);
    region.tileLimit = beyondReach(region.pixelLimit + kTileHalfDiagonal, context.bend);
    return region;
}

void paintLineRegion(cv::Mat& levels, const LineRegion& region, cv::Rect clip,
                     const PaintContext& context) {
    const cv::Rect box = region.box & clip & cv::Rect(0, 0, levels.cols, levels.rows);
    if (box.empty()) {
        return;
    }
    const ChartRegistration& placement = *context.placement;
    for (int y0 = box.y; y0 < box.y + box.height; y0 += kTile) {
        const int y1 = std::min(y0 + kTile, box.y + box.height);
        for (int x0 = box.x; x0 < box.x + box.width; x0 += kTile) {
            const int x1 = std::min(x0 + kTile, box.x + box.width);
            // The whole tile in or out, from its centre.
            UndistortedPoint u;
            if (undistort(placement, x0 + 0.5 * (kTile - 1), y0 + 0.5 * (kTile - 1), u)) {
                bool out = false, in = true;
                for (const FrameLine& line : region.lines) {
                    const double d = firstOrderDistance(line, u).d;
                    out = out || d < -region.tileLimit;
                    in = in && d > region.tileLimit;
                }
                if (out) {
                    continue;
                }
                if (in) {
                    for (int r = y0; r < y1; ++r) {
                        std::fill(levels.ptr<double>(r) + x0, levels.ptr<double>(r) + x1,
                                  region.paint);
                    }
                    continue;
                }
            }
            for (int r = y0; r < y1; ++r) {
                double* row = levels.ptr<double>(r);
                for (int c = x0; c < x1; ++c) {
                    paintPixel(row[c], region, c, r, context);
                }
            }
        }
    }
}

}  // namespace render
}  // namespace talonvireo
