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

namespace {
cv::Mat rowDerivativeImage(const cv::Mat& working, const double kernel[2]) {
    cv::Mat derivative(working.size(), CV_64F);
    for (int m = 0; m < working.rows; ++m) {
        rowDerivative2(working.ptr<double>(m), derivative.ptr<double>(m), working.cols, kernel);
    }
    return derivative;
}
}  // namespace

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

    const cv::Mat derivative = rowDerivativeImage(ctx.working, ctx.kernels.twoTap);
    const std::vector<double> loc = centroidsUnderCentredWindow(derivative);
    const EdgeLine first = fitLine(loc.data(), static_cast<int>(loc.size()));
    ctx.rowCentroids = centroidsAlongLine(derivative, first);
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
