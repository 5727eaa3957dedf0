#include "sfr/SfrReadout.h"

#include <cstddef>

namespace talonvireo {
namespace sfr {

namespace {
bool validChannel(const SfrContext& ctx, int channel) {
    return channel >= 0 && channel < ctx.region.channels() &&
           channel < static_cast<int>(SfrRecord().size());
}

// Table entry, or 0 for an index outside the table (the "entry before the first").
double entry(const std::vector<SfrRecord>& table, std::ptrdiff_t i, int channel) {
    if (i < 0 || i >= static_cast<std::ptrdiff_t>(table.size())) {
        return 0.0;
    }
    return table[static_cast<size_t>(i)][channel];
}

// Linear interpolation along the segment from entry i-1 to entry i: the value of `to` where
// `from` equals `at`.
double interpolate(const std::vector<SfrRecord>& from, const std::vector<SfrRecord>& to,
                   std::ptrdiff_t i, int channel, double at) {
    const double f0 = entry(from, i - 1, channel);
    const double f1 = entry(from, i, channel);
    const double t0 = entry(to, i - 1, channel);
    const double t1 = entry(to, i, channel);
    return t0 + (t1 - t0) / (f1 - f0) * (at - f0);
}
}  // namespace

double sfrAtDivisor(const SfrContext& ctx, int channel, double divisor) {
    if (!validChannel(ctx, channel)) {
        return -1.0;
    }
    const double f = 0.5 / divisor;
    std::ptrdiff_t found = 0;
    for (size_t i = 0; i < ctx.freqTable.size(); ++i) {
        if (ctx.freqTable[i][channel] > f) {
            found = static_cast<std::ptrdiff_t>(i);
            break;
        }
    }
    return interpolate(ctx.freqTable, ctx.sfrTable, found, channel, f);
}

double mtf50(const SfrContext& ctx, int channel) {
    if (!validChannel(ctx, channel)) {
        return -1.0;
    }
    std::ptrdiff_t found = 1;
    for (size_t i = 0; i < ctx.sfrTable.size(); ++i) {
        if (ctx.sfrTable[i][channel] < 0.5) {
            found = static_cast<std::ptrdiff_t>(i);
            break;
        }
    }
    return interpolate(ctx.sfrTable, ctx.freqTable, found, channel, 0.5);
}

}  // namespace sfr
}  // namespace talonvireo
