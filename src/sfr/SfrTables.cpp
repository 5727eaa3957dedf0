#include "sfr/SfrTables.h"

#include <cmath>
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

namespace {
// lineSpreadTransform's M(0) alone: its table starts at cos 0 = 1 and sin 0 = 0 exactly and
// its sums run over j in order, so this is the same figure without the table or the other
// frequencies.
double lineSpreadDc(const std::vector<double>& lsf) {
    double re = 0.0;
    double im = 0.0;
    for (double v : lsf) {
        re += v * 1.0;
        im += v * 0.0;
    }
    return std::sqrt(re * re + im * im);
}
}  // namespace

int writeChannelTables(SfrContext& ctx, int channel) {
    const int cols = ctx.working.cols;
    const int n = kOversampling * cols;
    const int half = n / 2;
    if (channel < 0 || channel >= static_cast<int>(SfrRecord().size())) {
        throw std::out_of_range("channel");
    }

    ctx.nyquist = 1.0 / (ctx.delfac * 2.0);

    std::vector<double> esf = oversampledEdgeProfile(ctx.working, ctx.line.slope);
    std::vector<double> lsf = centredLineSpread(esf, ctx.kernels.threeTap);
    std::vector<double> magnitude;
    if (ctx.sfrWanted) {
        magnitude.resize(static_cast<size_t>(half));
        lineSpreadTransform(lsf.data(), n, half, magnitude.data());
    } else {
        if (n <= 0) {
            throw std::invalid_argument("spectrum size");  // as the full transform refuses it
        }
        if (half > 0) {
            magnitude.push_back(lineSpreadDc(lsf));
        }
    }
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
    if (ctx.sfrWanted) {
        const std::vector<double> correct = derivativeCorrection(cols);
        for (int k = 1; k < half; ++k) {
            ctx.freqTable[k][channel] = k * static_cast<double>(kOversampling) / (n * ctx.delfac);
            ctx.sfrTable[k][channel] = magnitude[k] / magnitude[0] * correct[k];
        }
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
