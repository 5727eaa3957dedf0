#include "sfr/RegionMeasurement.h"

#include "sfr/SfrCore.h"
#include "sfr/SfrReadout.h"
#include "sfr/SfrStatus.h"

namespace talonvireo {
namespace sfr {

namespace {
void fillResult(const SfrContext& ctx, tagSFRResult& result) {
    for (int c = 0; c < ctx.region.channels(); ++c) {
        result.sfrHalfNyquist[c] = sfrAtDivisor(ctx, c, 2.0);
        result.sfrQuarterNyquist[c] = sfrAtDivisor(ctx, c, 4.0);
        result.mtf50[c] = mtf50(ctx, c);
        result.nyquist = ctx.nyquist;
        result.edgeAngle = ctx.edgeAngle;
        if (result.nyquistDivisor > 0.0) {
            result.sfrCustom[c] = sfrAtDivisor(ctx, c, result.nyquistDivisor);
        }
    }
}
}  // namespace

int measurePreparedRegion(const cv::Mat& region, tagSFRResult& result, SfrContext& ctx) {
    ctx = makeSfrContext(region);
    const int status = runSfrCore(ctx);
    if (status == kSfrOk) {
        fillResult(ctx, result);
    }
    return status;
}

}  // namespace sfr
}  // namespace talonvireo
