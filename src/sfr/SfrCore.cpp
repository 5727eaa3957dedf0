#include "sfr/SfrCore.h"

#include <vector>

#include "sfr/EdgeLocation.h"
#include "sfr/SfrStatus.h"
#include "sfr/SfrTables.h"

namespace talonvireo {
namespace sfr {

int runSfrCore(SfrContext& ctx) {
    std::vector<cv::Mat> channels;
    if (ctx.region.channels() == 1) {
        channels.push_back(ctx.region);
    } else {
        cv::split(ctx.region, channels);
    }
    ctx.status = kSfrOk;
    for (int c = 0; c < static_cast<int>(channels.size()); ++c) {
        ctx.status = locateEdge(ctx, channels[c]);
        if (ctx.status == kSfrOk) {
            ctx.status = writeChannelTables(ctx, c);
        }
        if (ctx.status != kSfrOk) {
            break;
        }
    }
    return ctx.status;
}

}  // namespace sfr
}  // namespace talonvireo
