// Exported curve-level measurement: measureSfrCurve.
#include "talonvireo/SfrCurve.h"

#include <exception>
#include <utility>

#include "sfr/CurveReadout.h"
#include "sfr/RegionPreparation.h"
#include "sfr/SfrContext.h"
#include "sfr/SfrCore.h"
#include "sfr/SfrStatus.h"

namespace talonvireo {

namespace {
using namespace sfr;

// Channel names in the region's own order: a three-channel region is BGR.
const char* channelName(int channels, int c) {
    static constexpr const char* kBgr[] = {"B", "G", "R"};
    return channels == 3 && c >= 0 && c < 3 ? kBgr[c] : "grey";
}

SfrChannelCurve channelCurve(const SfrContext& ctx, int c, const SfrCurveOptions& options) {
    const ChannelProfile& profile = ctx.profiles.at(static_cast<size_t>(c));
    // Undoing the table's division by cos(angle) gives the axis the profile was binned on.
    const double scale = options.normalFrequencyAxis ? profile.delfac : 1.0;
    SfrChannelCurve curve;
    curve.name = channelName(ctx.region.channels(), c);
    curve.frequency.reserve(ctx.freqTable.size());
    curve.sfr.reserve(ctx.sfrTable.size());
    for (size_t k = 0; k < ctx.freqTable.size(); ++k) {
        curve.frequency.push_back(ctx.freqTable[k][c] * scale);
        curve.sfr.push_back(ctx.sfrTable[k][c]);
    }
    curve.esf = profile.esf;
    curve.lsf = profile.lsf;
    curve.edgeAngle = profile.edgeAngle;
    curve.mtf10 = frequencyAtLevel(curve.frequency, curve.sfr, 0.1);
    curve.mtf30 = frequencyAtLevel(curve.frequency, curve.sfr, 0.3);
    curve.mtf50 = frequencyAtLevel(curve.frequency, curve.sfr, 0.5);
    for (double f : options.frequencies) {
        curve.sfrAt.push_back(sfrAtFrequency(curve.frequency, curve.sfr, f));
    }
    return curve;
}
}  // namespace

int measureSfrCurve(const unsigned char* image, int width, int height, int format,
                    const SfrCurveOptions& options, SfrCurve& curve) {
    try {
        cv::Mat region;
        // Preparation only reads the buffer; it shares TalonCalSFR's non-const signature.
        prepareRegion(const_cast<unsigned char*>(image), width, height, format, region);
        if (region.empty()) {
            return kSfrFailed;
        }
        SfrContext ctx = makeSfrContext(region);
        const int status = runSfrCore(ctx);
        if (status != kSfrOk) {
            return status;
        }
        SfrCurve out;
        out.normalFrequencyAxis = options.normalFrequencyAxis;
        for (int c = 0; c < ctx.region.channels(); ++c) {
            out.channels.push_back(channelCurve(ctx, c, options));
        }
        curve = std::move(out);
        return kSfrOk;
    } catch (const std::exception&) {
        return kSfrFailed;
    } catch (...) {
        return kSfrFailed;
    }
}

}  // namespace talonvireo
