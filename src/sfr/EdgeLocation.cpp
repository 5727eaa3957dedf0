#include "sfr/EdgeLocation.h"

#include <cmath>

#include "sfr/EdgeCentroids.h"
#include "sfr/EdgeContrast.h"
#include "sfr/EdgeOrientation.h"
#include "sfr/LineFit.h"
#include "sfr/RowDerivative.h"
#include "sfr/SfrConstants.h"
#include "sfr/SfrStatus.h"

namespace talonvireo {
namespace sfr {

int phaseCycleRows(int rows, double slope) {
    const double s = std::fabs(slope);
    return static_cast<int>(std::round(std::floor(rows * s) / s));
}

int locateEdge(SfrContext& ctx, const cv::Mat& channel) {
    channel.convertTo(ctx.working, CV_64F, 1.0, 0.0);
    ctx.rotated = turnEdgeUpright(ctx.working) ? 1 : 0;

    const EdgeStrips strips = edgeStrips(ctx.working);
    ctx.kernels = kernelsFor(strips);
    if (!hasEnoughContrast(strips)) {
        return kSfrLowContrast;
    }

    // Derivative rows are made as the centroids need them: a whole derivative image would
    // double the working memory of a region, and allocating it costs more than recomputing.
    std::vector<double> buffer(static_cast<size_t>(ctx.working.cols));
    const DerivativeRow row = [&](int m) {
        rowDerivative2(ctx.working.ptr<double>(m), buffer.data(), ctx.working.cols,
                       ctx.kernels.twoTap);
        return static_cast<const double*>(buffer.data());
    };
    const int rows = ctx.working.rows, cols = ctx.working.cols;
    const std::vector<double> loc = centroidsUnderCentredWindow(rows, cols, row);
    const EdgeLine first = fitLine(loc.data(), static_cast<int>(loc.size()));
    ctx.rowCentroids = centroidsAlongLine(rows, cols, row, first);
    ctx.line = fitLine(ctx.rowCentroids.data(), static_cast<int>(ctx.rowCentroids.size()));

    const double slope = ctx.line.slope;
    // "Not within" rather than "above" also refuses a slope that is not a number.
    if (!(std::fabs(slope) <= kMaxSlope)) {
        return kSfrTooSteep;
    }
    if (slope == 0.0) {
        return kSfrAligned;
    }

    const int keep = phaseCycleRows(ctx.working.rows, slope);
    if (keep != 0) {
        ctx.working = ctx.working.rowRange(0, keep);
    }
    ctx.edgeAngle = std::atan(slope) * 180.0 / kPi;
    ctx.delfac = std::cos(std::atan(slope));
    return kSfrOk;
}

}  // namespace sfr
}  // namespace talonvireo
