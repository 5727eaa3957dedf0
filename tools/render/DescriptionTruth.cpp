#include "render/DescriptionTruth.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "render/Pi.h"
#include "talonvireo/ChartRegistration.h"

namespace talonvireo {
namespace render {

namespace {

constexpr int kSamples = 512;  // points along an edge's image

ChartPoint along(ChartPoint a, ChartPoint b, double t) {
    return {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
}

// Angle of a direction as a line orientation, 0 <= angle < 180 degrees.
double lineAngleDeg(double dx, double dy) {
    double a = std::atan2(dy, dx) * 180.0 / kPi;
    if (a < 0.0) {
        a += 180.0;
    }
    return a >= 180.0 ? a - 180.0 : a;
}

DescriptionEdgeTruth edgeTruth(ChartPoint a, ChartPoint b, double at,
                               const DescriptionRenderSettings& settings) {
    const ChartRegistration& placement = settings.placement;
    DescriptionEdgeTruth t;
    t.from = chartToFrame(placement, a);
    t.to = chartToFrame(placement, b);
    t.midpoint = chartToFrame(placement, along(a, b, 0.5));
    t.centre = chartToFrame(placement, along(a, b, at));
    t.angleDeg = lineAngleDeg(t.to.x - t.from.x, t.to.y - t.from.y);

    // The tangent at the centre by a central difference over a thousandth of the edge.
    constexpr double h = 1e-3;
    const ChartPoint ahead = chartToFrame(placement, along(a, b, at + h));
    const ChartPoint behind = chartToFrame(placement, along(a, b, at - h));
    const double tangent = std::fmod(lineAngleDeg(ahead.x - behind.x, ahead.y - behind.y), 90.0);
    t.axisAngleDeg = std::min(tangent, 90.0 - tangent);
    const FieldBlur blur = fieldBlur(settings);
    const double nx = behind.y - ahead.y, ny = ahead.x - behind.x;
    const double norm = std::hypot(nx, ny);
    t.sigma = blur.sigmaAcross(t.centre.x, t.centre.y, nx / norm, ny / norm);
    t.bestFocusZ = t.tangentialZ = t.sagittalZ = t.xMm = t.yMm = std::nan("");
    if (settings.focus.on) {
        const FieldFocus f = blur.focus.at(t.centre.x, t.centre.y);
        t.bestFocusZ = blur.focus.bestFocusZ(t.centre.x, t.centre.y, nx, ny);
        t.tangentialZ = f.tangentialZ;
        t.sagittalZ = f.sagittalZ;
        t.xMm = f.xMm;
        t.yMm = f.yMm;
    }

    // Length, bow and whether it stays in the frame, from samples along the image; the bow's
    // extreme refined by a parabola through its neighbours.
    const double chordX = t.to.x - t.from.x, chordY = t.to.y - t.from.y;
    const double chord = std::hypot(chordX, chordY);
    auto offset = [&](ChartPoint p) {
        return chord > 0.0 ? ((p.x - t.from.x) * chordY - (p.y - t.from.y) * chordX) / chord : 0.0;
    };
    std::vector<double> offsets(kSamples + 1);
    t.inside = true;
    ChartPoint previous = t.from;
    for (int i = 0; i <= kSamples; ++i) {
        const ChartPoint p =
            chartToFrame(placement, along(a, b, static_cast<double>(i) / kSamples));
        offsets[i] = offset(p);
        t.inside = t.inside && p.x >= -0.5 && p.y >= -0.5 && p.x <= settings.width - 0.5 &&
                   p.y <= settings.height - 0.5;
        t.length += std::hypot(p.x - previous.x, p.y - previous.y);
        previous = p;
    }
    int peak = 0;
    for (int i = 1; i <= kSamples; ++i) {
        if (std::abs(offsets[i]) > std::abs(offsets[peak])) {
            peak = i;
        }
    }
    t.bow = offsets[peak];
    if (peak > 0 && peak < kSamples) {
        const double l = offsets[peak - 1], m = offsets[peak], r = offsets[peak + 1];
        const double curvature = l - 2.0 * m + r;
        if (curvature != 0.0) {
            const double shift = std::clamp(0.5 * (l - r) / curvature, -1.0, 1.0);
            t.bow = m - 0.25 * (l - r) * shift;
        }
    }
    return t;
}

DescriptionEdgeTruth shapeSideTruth(const ChartDescription& d, int shape, int side, double at,
                                    const DescriptionRenderSettings& settings) {
    const ChartShape& s = d.shapes[shape];
    DescriptionEdgeTruth t = edgeTruth(s.corners[side], s.corners[(side + 1) % 4], at, settings);
    t.shape = shape;
    t.side = side;
    t.polarity = s.polarity;
    return t;
}

DescriptionEdgeTruth loneEdgeTruth(const ChartDescription& d, int edge, double at,
                                   const DescriptionRenderSettings& settings) {
    const ChartEdge& e = d.edges[edge];
    DescriptionEdgeTruth t = edgeTruth(e.from, e.to, at, settings);
    t.edge = edge;
    t.polarity = e.polarity;
    return t;
}

}  // namespace

std::vector<DescriptionEdgeTruth> descriptionTruth(const ChartDescription& d,
                                                   const DescriptionRenderSettings& settings) {
    checkRenderSettings(settings);
    std::vector<DescriptionEdgeTruth> truth;
    if (d.slots.empty()) {
        for (int s = 0; s < static_cast<int>(d.shapes.size()); ++s) {
            for (int k = 0; k < 4; ++k) {
                truth.push_back(shapeSideTruth(d, s, k, 0.5, settings));
                truth.back().slot = static_cast<int>(truth.size()) - 1;
            }
        }
        for (int e = 0; e < static_cast<int>(d.edges.size()); ++e) {
            truth.push_back(loneEdgeTruth(d, e, 0.5, settings));
            truth.back().slot = static_cast<int>(truth.size()) - 1;
        }
        return truth;
    }
    for (const ChartSlot& slot : d.slots) {
        const std::string name = "slot '" + slot.name + "'";
        if (!(slot.along >= 0.0 && slot.along <= 1.0)) {
            throw std::invalid_argument(name + ": along must be 0 .. 1");
        }
        if (slot.shape >= 0) {
            if (slot.shape >= static_cast<int>(d.shapes.size()) || slot.side < 0 || slot.side > 3) {
                throw std::invalid_argument(name + ": no such side of a shape");
            }
            truth.push_back(shapeSideTruth(d, slot.shape, slot.side, slot.along, settings));
        } else {
            if (slot.edge < 0 || slot.edge >= static_cast<int>(d.edges.size())) {
                throw std::invalid_argument(name + ": no such lone edge");
            }
            truth.push_back(loneEdgeTruth(d, slot.edge, slot.along, settings));
        }
        truth.back().name = slot.name;
        truth.back().slot = slot.slot;
    }
    return truth;
}

}  // namespace render
}  // namespace talonvireo
