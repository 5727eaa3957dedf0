#include "sfr/SfrTables.h"

#include <stdexcept>
#include <utility>

#include "sfr/DerivativeCorrection.h"
#include "sfr/EdgeProjection.h"
#include "sfr/LineSpread.h"
#include "sfr/LineSpreadTransform.h"
#include "sfr/SfrConstants.h"
#include "sfr/SfrStatus.h"

namespace talonvireo {
namespace sfr {

int writeChannelTables(SfrContext& ctx, int channel) {
    const int cols = ctx.working.cols;
    const int n = kOversampling * cols;
    const int half = n / 2;
    if (channel < 0 || channel >= static_cast<int>(SfrRecord().size())) {
        throw std::out_of_range("channel");
    }

    const std::vector<double> correct = derivativeCorrection(cols);
    ctx.nyquist = 1.0 / (ctx.delfac * 2.0);

    std::vector<double> esf = oversampledEdgeProfile(ctx.working, ctx.line.slope);
    std::vector<double> lsf = centredLineSpread(esf, ctx.kernels.threeTap);
    std::vector<double> magnitude(static_cast<size_t>(half));
    lineSpreadTransform(lsf.data(), n, half, magnitude.data());
    if (magnitude.empty() || magnitude[0] == 0.0) {
        return kSfrLowContrast;
    }

    if (ctx.freqTable.empty() && ctx.sfrTable.empty()) {
        ctx.freqTable.assign(static_cast<size_t>(half), SfrRecord{});
        ctx.sfrTable.assign(static_cast<size_t>(half), SfrRecord{});
    }
    if (ctx.freqTable.size() != static_cast<size_t>(half) ||
        ctx.sfrTable.size() != static_cast<size_t>(half)) {
        throw std::logic_error("channel tables of different lengths");
    }
    ctx.freqTable[0][channel] = 0.0;
    ctx.sfrTable[0][channel] = 1.0;
    for (int k = 1; k < half; ++k) {
        ctx.freqTable[k][channel] = k * static_cast<double>(kOversampling) / (n * ctx.delfac);
        ctx.sfrTable[k][channel] = magnitude[k] / magnitude[0] * correct[k];
    }
    if (ctx.profiles.size() <= static_cast<size_t>(channel)) {
        ctx.profiles.resize(static_cast<size_t>(channel) + 1);
    }
    ctx.profiles[static_cast<size_t>(channel)] = {std::move(esf), std::move(lsf), ctx.edgeAngle,
                                                  ctx.delfac,     ctx.line,       ctx.rotated != 0};
    return kSfrOk;
}

}  // namespace sfr
}  // namespace talonvireo
