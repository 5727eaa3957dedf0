#include "api/ChartEdgeMeasurement.h"

#include <algorithm>
#include <cmath>

#include "sfr/EdgeQuality.h"
#include "sfr/IlluminationFlattening.h"
#include "talonvireo/PixelFormat.h"

namespace talonvireo {
namespace api {

namespace {

namespace pf = PixelFormat;

// The phase of a mosaic cut at (dx, dy) from one of phase `phase`: an odd column swaps the
// two samples of each row, an odd row swaps the rows.
int shiftedPhase(int phase, int dx, int dy) {
    // Positions of R in the 2 x 2 cell: RG (0,0), GR (1,0), GB (0,1), BG (1,1).
    int rx = 0, ry = 0;
    switch (phase) {
        case pf::PhaseGR:
            rx = 1;
            break;
        case pf::PhaseGB:
            ry = 1;
            break;
        case pf::PhaseBG:
            rx = 1;
            ry = 1;
            break;
        default:
            break;
    }
    rx = (rx + dx) & 1;
    ry = (ry + dy) & 1;
    return ry == 0 ? (rx == 0 ? pf::PhaseRG : pf::PhaseGR) : (rx == 0 ? pf::PhaseGB : pf::PhaseBG);
}

CurveFigures figuresOf(const SfrChannelCurve& ch, const std::string& name) {
    CurveFigures c;
    c.channel = name;
    c.sfrQuarterNyquist = ch.sfrAt.at(0);
    c.sfrHalfNyquist = ch.sfrAt.at(1);
    if (ch.sfrAt.size() > 2) {
        c.sfrCustom = ch.sfrAt[2];
    }
    c.mtf50 = ch.mtf50;
    return c;
}

SfrCurveOptions curveOptions(const ChartMeasureOptions& options) {
    SfrCurveOptions o;
    o.method = options.method;
    o.normalFrequencyAxis = true;
    o.frequencies = {0.125, 0.25};
    if (options.nyquistDivisor > 0.0) {
        o.frequencies.push_back(0.5 / options.nyquistDivisor);
    }
    return o;
}

void measurePlanes(const ChartImage& image, const cv::Rect& cut, const ChartMeasureOptions& options,
                   ChartEdgeReport& out) {
    SfrCurveOptions o = curveOptions(options);
    o.method = SfrMethod::kPrecise;
    o.perChannelRaw = true;
    const cv::Mat mosaic = image.mosaic(cut).clone();
    const int layout = image.mosaicFormat & pf::LayoutMask;
    const int phase = shiftedPhase(image.mosaicFormat & pf::PhaseMask, cut.x, cut.y);
    SfrCurve curve;
    const int status =
        measureSfrCurve(mosaic.data, mosaic.cols, mosaic.rows, layout + phase, o, curve);
    const char* names[4] = {"R", "Gr", "Gb", "B"};
    out.planes.clear();
    for (int k = 0; k < 4; ++k) {
        CurveFigures f;
        if (status == 0 && k < static_cast<int>(curve.channels.size())) {
            f = figuresOf(curve.channels[static_cast<std::size_t>(k)], names[k]);
        }
        f.channel = names[k];
        f.status = status;
        out.planes.push_back(f);
    }
}

}  // namespace

std::vector<EdgeSegment> edgesNear(const std::vector<FoundEdge>& found, std::size_t edge,
                                   double reach) {
    std::vector<EdgeSegment> near;
    const FoundEdge& e = found[edge];
    const double lo = std::min(e.from.x, e.to.x) - reach, hi = std::max(e.from.x, e.to.x) + reach;
    const double top = std::min(e.from.y, e.to.y) - reach,
                 bottom = std::max(e.from.y, e.to.y) + reach;
    for (std::size_t k = 0; k < found.size(); ++k) {
        const FoundEdge& o = found[k];
        if (k == edge || std::max(o.from.x, o.to.x) < lo || std::min(o.from.x, o.to.x) > hi ||
            std::max(o.from.y, o.to.y) < top || std::min(o.from.y, o.to.y) > bottom) {
            continue;
        }
        near.push_back({{o.from.x, o.from.y}, {o.to.x, o.to.y}});
    }
    return near;
}

void measureChartEdge(const ChartImage& image, const EdgeMeasurementRequest& request,
                      const std::vector<EdgeSegment>& others, const ChartMeasureOptions& options,
                      ChartEdgeReport& out) {
    const FoundEdge& e = request.edge;
    const cv::Size frame = image.grey.size();
    cv::Rect cut;
    if (request.regionSide > 0) {
        const int half = request.regionSide / 2;
        cut = cv::Rect(static_cast<int>(std::lround(request.centre.x)) - half,
                       static_cast<int>(std::lround(request.centre.y)) - half, request.regionSide,
                       request.regionSide);
        if (cut.x < 0 || cut.y < 0 || cut.x + cut.width > frame.width ||
            cut.y + cut.height > frame.height) {
            out.state = ChartEdgeState::kOffFrame;
            return;
        }
    } else {
        EdgeRegionRequest fit;
        fit.edge = {{e.from.x, e.from.y}, {e.to.x, e.to.y}};
        fit.centre = request.centre;
        fit.rise = e.rise;
        fit.straightLength = e.straightLength;
        switch (fitEdgeRegion(fit, others, frame, cut)) {
            case RegionFit::kFitted:
                break;
            case RegionFit::kTooShort:
                out.state = ChartEdgeState::kTooShort;
                return;
            case RegionFit::kOffFrame:
                out.state = ChartEdgeState::kOffFrame;
                return;
        }
    }
    out.region = {cut.x, cut.y, cut.width, cut.height};
    const cv::Mat region = image.grey(cut).clone();
    const cv::Point2d d(e.to.x - e.from.x, e.to.y - e.from.y);
    const cv::Point2d dir = d / std::max(cv::norm(d), 1e-12);
    const double halfZone = (std::isfinite(e.rise) ? e.rise : 2.0) + 1.0;
    const cv::Point2d local = request.centre - cv::Point2d(cut.x, cut.y);
    const cv::Mat even = sfr::flattenIllumination(region, local, dir, halfZone + 1.0);
    SfrCurve curve;
    const int status =
        measureSfrCurve(even.data, even.cols, even.rows, pf::Grey16, curveOptions(options), curve);
    if (status != 0) {
        out.state = ChartEdgeState::kRefused;
        out.sfrStatus = status;
        return;
    }
    out.state = ChartEdgeState::kMeasured;
    out.figures = figuresOf(curve.channels.at(0), "grey");
    out.figures.status = 0;
    out.edgeAngle = curve.channels.at(0).edgeAngle;

    // Levels and noise about the found line, as the frame shows them.
    const sfr::EdgeQuality q = sfr::edgeQualityAbout(region, local, dir, halfZone);
    out.darkLevel = q.darkLevel;
    out.lightLevel = q.lightLevel;
    out.contrast = q.lightLevel / std::max(q.darkLevel, 0.5);
    out.snr = (q.lightLevel - q.darkLevel) / q.noise;
    cv::Mat samples;
    image.samples(cut).convertTo(samples, CV_16U);
    long zone = 0, clipped = 0;
    sfr::countClipped(samples, q, image.whiteLevel, zone, clipped);
    out.transitionSamples = zone;
    out.clippedShare = zone > 0 ? static_cast<double>(clipped) / zone : ChartEdgeReport::kNaN;
    if (options.rawPlanes && !image.mosaic.empty()) {
        measurePlanes(image, cut, options, out);
    }
}

}  // namespace api
}  // namespace talonvireo
