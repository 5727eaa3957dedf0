// Exported curve-level measurement: measureSfrCurve.
#include "talonvireo/SfrCurve.h"

#include <array>
#include <exception>
#include <utility>

#include <opencv2/core.hpp>

#include "sfr/BayerPlanes.h"
#include "sfr/CurveReadout.h"
#include "sfr/EdgeSamples.h"
#include "sfr/PlaneBalance.h"
#include "sfr/PreciseSfr.h"
#include "sfr/RegionPreparation.h"
#include "sfr/SfrContext.h"
#include "sfr/SfrCore.h"
#include "sfr/SfrCurveMeasurement.h"
#include "sfr/SfrStatus.h"
#include "talonvireo/PixelFormat.h"

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

SfrChannelCurve preciseCurve(const char* name, const PreciseCurve& p) {
    SfrChannelCurve curve;
    curve.name = name;
    curve.frequency = p.frequency;
    curve.sfr = p.sfr;
    curve.esf = p.esf;
    curve.lsf = p.lsf;
    curve.esfBinWidth = p.step;
    curve.edgeAngle = p.edgeAngle;
    curve.kernelSigma = p.kernelSigma;
    curve.mtf10 = p.mtf10;
    curve.mtf30 = p.mtf30;
    curve.mtf50 = p.mtf50;
    curve.sfrAt = p.sfrAt;
    return curve;
}

// Each channel of the prepared region, turned the way the classic core turned it and started
// from the line it fitted.
std::vector<SfrChannelCurve> preciseChannels(const SfrContext& ctx,
                                             const SfrCurveOptions& options) {
    std::vector<SfrChannelCurve> out;
    for (int c = 0; c < ctx.region.channels(); ++c) {
        const ChannelProfile& profile = ctx.profiles.at(static_cast<size_t>(c));
        const PreciseCurve p = measurePrecise(imageSamples(ctx.region, c, profile.rotated),
                                              profile.line, options.frequencies);
        out.push_back(preciseCurve(channelName(ctx.region.channels(), c), p));
    }
    return out;
}

// A plane sees the edge at half the phases of the whole mosaic; when its rows do not cover
// the phase cycle well enough, only a kernel wider than this would smooth over the gaps and
// the curve would be the kernel's rather than the lens's, so the region is refused as too
// close to the pixel grid.
constexpr double kMaxPlaneKernelSigma = 1.0;

// Plateau means used to bring the planes to one scale: the same band on every plane.
constexpr double kBalanceInner = 3.0;
constexpr double kBalanceOuter = 12.0;

// The four planes of the caller's mosaic. The line is the classic one of the grey rendition
// (the same pixel grid) refined on the balanced mosaic; each plane is then measured along it
// from its own samples. Returns 0 or kSfrAligned.
int rawPlaneChannels(const cv::Mat& mosaic, int phase, const SfrContext& ctx,
                     const SfrCurveOptions& options, std::vector<SfrChannelCurve>& out) {
    const ChannelProfile& profile = ctx.profiles.at(0);
    const std::array<PlaneSite, 4> sites = bayerPlaneSites(phase);
    std::array<EdgeSamples, 4> planes;
    std::array<PlaneLevels, 4> levels;
    for (size_t k = 0; k < sites.size(); ++k) {
        planes[k] = planeSamples(mosaic, sites[k].column, sites[k].row, profile.rotated);
        const EdgeFrame frame{profile.line, 1.0};
        levels[k] = planeLevels(planes[k], frame, kBalanceInner, kBalanceOuter);
    }
    const int rows = profile.rotated ? mosaic.cols : mosaic.rows;
    const int cols = profile.rotated ? mosaic.rows : mosaic.cols;
    const EdgeLine line =
        refinePreciseLine(balancedMosaic(planes, levels, rows, cols), profile.line);
    for (size_t k = 0; k < sites.size(); ++k) {
        const PreciseCurve p = measurePrecise(planes[k], line, options.frequencies, false);
        if (p.kernelSigma > kMaxPlaneKernelSigma) {
            return kSfrAligned;
        }
        out.push_back(preciseCurve(sites[k].name, p));
    }
    return kSfrOk;
}

}  // namespace

namespace sfr {

int preciseCurveFromClassic(const SfrContext& ctx, const SfrCurveOptions& options,
                            SfrCurve& curve) {
    try {
        SfrCurve out;
        out.method = SfrMethod::kPrecise;
        out.normalFrequencyAxis = true;
        out.channels = preciseChannels(ctx, options);
        curve = std::move(out);
        return kSfrOk;
    } catch (const NoSpectrum&) {
        return kSfrLowContrast;
    } catch (...) {
        return kSfrFailed;
    }
}

}  // namespace sfr

int measureSfrCurve(const unsigned char* image, int width, int height, int format,
                    const SfrCurveOptions& options, SfrCurve& curve) {
    try {
        const bool precise = options.method == SfrMethod::kPrecise;
        if (!precise && options.method != SfrMethod::kClassic) {
            return kSfrFailed;
        }
        const int layout = format & PixelFormat::LayoutMask;
        if (options.perChannelRaw && (!precise || !isMosaicLayout(layout))) {
            return kSfrFailed;
        }
        cv::Mat region;
        // Preparation only reads the buffer; it shares TalonCalSFR's non-const signature.
        prepareRegion(const_cast<unsigned char*>(image), width, height, format, region);
        if (region.empty()) {
            return kSfrFailed;
        }
        SfrContext ctx = makeSfrContext(region);
        ctx.sfrWanted = !precise;
        const int status = runSfrCore(ctx);
        if (status != kSfrOk) {
            return status;
        }
        // The classic pass is done; its working image makes room for the precise one's.
        ctx.working.release();
        if (precise && !options.perChannelRaw) {
            return preciseCurveFromClassic(ctx, options, curve);
        }
        SfrCurve out;
        out.method = options.method;
        out.normalFrequencyAxis = options.normalFrequencyAxis || precise;
        if (options.perChannelRaw) {
            // Preparation accepted the buffer, so its size and layout are sound.
            const cv::Mat mosaic(height, width, bytesPerPixel(format) == 1 ? CV_8UC1 : CV_16UC1,
                                 const_cast<unsigned char*>(image));
            const int planes = rawPlaneChannels(mosaic, format & PixelFormat::PhaseMask, ctx,
                                                options, out.channels);
            if (planes != kSfrOk) {
                return planes;
            }
        } else {
            for (int c = 0; c < ctx.region.channels(); ++c) {
                out.channels.push_back(channelCurve(ctx, c, options));
            }
        }
        curve = std::move(out);
        return kSfrOk;
    } catch (const NoSpectrum&) {
        return kSfrLowContrast;
    } catch (const std::exception&) {
        return kSfrFailed;
    } catch (...) {
        return kSfrFailed;
    }
}

}  // namespace talonvireo
