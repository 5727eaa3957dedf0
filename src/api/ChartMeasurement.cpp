// Finding and measuring every slanted edge of a chart, described or not.
#include "talonvireo/ChartMeasurement.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <string>

#include "api/ChartEdgeMeasurement.h"
#include "api/ChartImage.h"
#include "api/DescribedChart.h"
#include "detect/QuadFinder.h"

namespace talonvireo {

namespace {

// A straight stretch strays at most this far from its chord, px.
constexpr double kStraightWithin = 0.1;

ChartPoint pointOf(cv::Point2d p) {
    return {p.x, p.y};
}

FoundEdge foundEdgeOf(const detect::EdgeGeometry& g, int quad, int side) {
    FoundEdge e;
    e.quad = quad;
    e.side = side;
    e.from = pointOf(g.from);
    e.to = pointOf(g.to);
    e.midpoint = pointOf(g.midpoint);
    e.angleDeg = g.angleDeg;
    e.length = g.length;
    e.polarity = g.polarity;
    e.bow = g.bow;
    e.straightLength = g.curvature > 0.0
                           ? std::min(g.length, 2.0 * std::sqrt(kStraightWithin / g.curvature))
                           : g.length;
    e.rise = g.rise > 0.0 ? g.rise : FoundEdge::kNaN;
    e.cut = g.cut;
    e.frameBorder = g.frameBorder;
    e.tooShort = g.tooShort;
    e.nearAxis = g.nearAxis;
    return e;
}

void describeQuads(const std::vector<detect::Quad>& quads, std::vector<FoundQuad>& out,
                   std::vector<FoundEdge>& edges) {
    out.clear();
    edges.clear();
    for (std::size_t q = 0; q < quads.size(); ++q) {
        FoundQuad f;
        for (int i = 0; i < 4; ++i) {
            f.corners[static_cast<std::size_t>(i)] = pointOf(quads[q].corners[i]);
            edges.push_back(foundEdgeOf(quads[q].edges[i], static_cast<int>(q), i));
        }
        f.polarity = quads[q].polarity;
        f.cut = quads[q].cut;
        out.push_back(f);
    }
}

// Every found side, measured on its own region unless flagged.
void measureEverySide(const api::ChartImage& image, const ChartMeasureOptions& options,
                      ChartReport& report) {
    std::vector<std::size_t> sides;
    for (std::size_t i = 0; i < report.found.size(); ++i) {
        if (!report.found[i].frameBorder) {
            sides.push_back(i);
        }
    }
    const int count = static_cast<int>(sides.size());
    report.edges.assign(sides.size(), ChartEdgeReport{});
#pragma omp parallel for schedule(dynamic)
    for (int k = 0; k < count; ++k) {
        const std::size_t index = sides[static_cast<std::size_t>(k)];
        const FoundEdge& e = report.found[index];
        ChartEdgeReport& out = report.edges[static_cast<std::size_t>(k)];
        out.edge = k;
        out.name = "Q" + std::to_string(e.quad) + "." + std::to_string(e.side);
        out.found = true;
        out.geometry = e;
        out.x = e.midpoint.x;
        out.y = e.midpoint.y;
        if (e.cut || e.tooShort || e.nearAxis) {
            out.state = e.cut        ? ChartEdgeState::kCut
                        : e.tooShort ? ChartEdgeState::kTooShort
                                     : ChartEdgeState::kNearAxis;
            continue;
        }
        const std::vector<api::EdgeSegment> others =
            api::edgesNear(report.found, index, 2.0 * api::kMaxRegionHalfLength);
        api::measureChartEdge(image, {e, {e.midpoint.x, e.midpoint.y}, 0}, others, options, out);
    }
}

void totalClipping(ChartReport& report) {
    long zone = 0;
    double clipped = 0.0;
    for (const ChartEdgeReport& e : report.edges) {
        if (e.state == ChartEdgeState::kMeasured && e.transitionSamples > 0 &&
            std::isfinite(e.clippedShare)) {
            zone += e.transitionSamples;
            clipped += e.clippedShare * static_cast<double>(e.transitionSamples);
        }
    }
    report.clippedShare =
        zone > 0 ? clipped / static_cast<double>(zone) : ChartReport{}.clippedShare;
}

}  // namespace

const char* chartEdgeStateName(ChartEdgeState state) {
    switch (state) {
        case ChartEdgeState::kMeasured:
            return "measured";
        case ChartEdgeState::kNotFound:
            return "not found";
        case ChartEdgeState::kCut:
            return "cut by the frame";
        case ChartEdgeState::kTooShort:
            return "too short";
        case ChartEdgeState::kNearAxis:
            return "near an axis";
        case ChartEdgeState::kOffFrame:
            return "off the frame";
        case ChartEdgeState::kRefused:
            return "refused by the SFR";
    }
    return "unknown";
}

int findChartQuads(const unsigned char* image, int width, int height, int format, int bits,
                   std::vector<FoundQuad>& quads, std::vector<FoundEdge>& edges) {
    try {
        api::ChartImage c;
        if (!api::chartImageOf(image, width, height, format, bits, GreyRoad::kMalvar, 0, c)) {
            return -1;
        }
        std::vector<FoundQuad> q;
        std::vector<FoundEdge> e;
        describeQuads(detect::findQuads(c.grey), q, e);
        quads = std::move(q);
        edges = std::move(e);
        return 0;
    } catch (const std::exception&) {
        return -1;
    }
}

int measureChart(const unsigned char* image, int width, int height, int format,
                 const ChartDescription* description, const ChartMeasureOptions& options,
                 ChartReport& report) {
    try {
        std::string problem;
        if ((description != nullptr && !checkChartDescription(*description, problem)) ||
            !(options.nyquistDivisor >= 0.0) ||
            (options.method != SfrMethod::kClassic && options.method != SfrMethod::kPrecise)) {
            return -1;
        }
        api::ChartImage c;
        if (!api::chartImageOf(image, width, height, format, options.bits, options.road,
                               options.whiteLevel, c)) {
            return -1;
        }
        ChartReport r;
        r.width = width;
        r.height = height;
        r.whiteLevel = c.whiteLevel;
        r.chart = description != nullptr ? description->name : "auto";
        r.registration = undistortedRegistration(width, height);
        const std::vector<detect::Quad> quads = detect::findQuads(c.grey);
        describeQuads(quads, r.quads, r.found);
        int status = 0;
        if (description == nullptr) {
            measureEverySide(c, options, r);
        } else {
            status = api::measureDescribedChart(c, *description, quads, options, r);
        }
        totalClipping(r);
        report = std::move(r);
        return status;
    } catch (const std::exception&) {
        return -1;
    }
}

}  // namespace talonvireo
