#include "api/ChartEdgeMeasurement.h"

#include <algorithm>
#include <cmath>

#include "api/RegionFigures.h"
#include "sfr/EdgeQuality.h"
#include "sfr/IlluminationFlattening.h"
#include "talonvireo/PixelFormat.h"

namespace talonvireo {
namespace api {

namespace {

namespace pf = PixelFormat;

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
    out.figures = curveFigures(curve.channels.at(0), "grey");
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
        out.planes =
            rawPlaneFigures(image.mosaic, image.mosaicFormat & pf::LayoutMask,
                            image.mosaicFormat & pf::PhaseMask, cut, curveOptions(options));
    }
}

}  // namespace api
}  // namespace talonvireo
