#include "api/DescribedChart.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "api/ChartEdgeMeasurement.h"
#include "detect/EdgeFlags.h"
#include "locate/ChartRegistrationFit.h"

namespace talonvireo {
namespace api {

namespace {

ChartPoint lerp(ChartPoint a, ChartPoint b, double t) {
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t};
}

// The foot of p on the chord of e.
cv::Point2d footOn(const FoundEdge& e, cv::Point2d p) {
    const cv::Point2d a(e.from.x, e.from.y), b(e.to.x, e.to.y);
    const cv::Point2d d = b - a;
    const double n2 = d.dot(d);
    const double t = n2 > 0.0 ? std::clamp((p - a).dot(d) / n2, 0.0, 1.0) : 0.0;
    return a + t * d;
}

// The found side through p running along `direction`: within kSideReachPx of p and
// kSideTurnDeg of the direction, the nearest; found.size() when there is none.
std::size_t sideThrough(const std::vector<FoundEdge>& found, cv::Point2d p, cv::Point2d direction) {
    constexpr double kSideReachPx = 3.0;
    constexpr double kSideTurnDeg = 3.0;
    const double n = cv::norm(direction);
    std::size_t best = found.size();
    double nearest = kSideReachPx;
    for (std::size_t i = 0; i < found.size(); ++i) {
        const FoundEdge& e = found[i];
        if (e.frameBorder) {
            continue;
        }
        const cv::Point2d d(e.to.x - e.from.x, e.to.y - e.from.y);
        const double len = cv::norm(d);
        if (!(len > 0.0) || !(n > 0.0)) {
            continue;
        }
        const double sine = std::abs(d.x * direction.y - d.y * direction.x) / (len * n);
        if (sine > std::sin(kSideTurnDeg * CV_PI / 180.0)) {
            continue;
        }
        const double distance = cv::norm(footOn(e, p) - p);
        if (distance < nearest) {
            nearest = distance;
            best = i;
        }
    }
    return best;
}

double fieldOf(const ChartRegistration& r, double x, double y) {
    return std::hypot(x - r.centreX, y - r.centreY) / r.normRadius;
}

// A lone edge has no found side: its geometry is where the registration puts it.
FoundEdge predictedEdge(const ChartRegistration& r, const ChartEdge& edge, int polarity) {
    FoundEdge e;
    e.from = chartToFrame(r, edge.from);
    e.to = chartToFrame(r, edge.to);
    e.midpoint = chartToFrame(r, lerp(edge.from, edge.to, 0.5));
    e.length = std::hypot(e.to.x - e.from.x, e.to.y - e.from.y);
    e.angleDeg = detect::lineAngleDeg({e.from.x, e.from.y}, {e.to.x, e.to.y});
    e.polarity = polarity;
    e.straightLength = e.length;
    return e;
}

}  // namespace

std::vector<ChartSlot> slotsOf(const ChartDescription& description) {
    if (!description.slots.empty()) {
        std::vector<ChartSlot> slots = description.slots;
        std::stable_sort(slots.begin(), slots.end(),
                         [](const ChartSlot& a, const ChartSlot& b) { return a.slot < b.slot; });
        return slots;
    }
    std::vector<ChartSlot> slots;
    int n = 0;
    for (std::size_t s = 0; s < description.shapes.size(); ++s) {
        for (int side = 0; side < 4; ++side) {
            ChartSlot slot;
            slot.slot = n++;
            slot.name = "S" + std::to_string(s) + "." + std::to_string(side);
            slot.shape = static_cast<int>(s);
            slot.side = side;
            slots.push_back(slot);
        }
    }
    for (std::size_t k = 0; k < description.edges.size(); ++k) {
        ChartSlot slot;
        slot.slot = n++;
        slot.name = "E" + std::to_string(k);
        slot.edge = static_cast<int>(k);
        slots.push_back(slot);
    }
    return slots;
}

std::string zoneAt(const ChartDescription& description, double field) {
    for (const ChartZone& z : description.zones) {
        if (field >= z.fromField && field <= z.toField) {
            return z.name;
        }
    }
    return "";
}

int measureDescribedChart(const ChartImage& image, const ChartDescription& description,
                          const std::vector<detect::Quad>& quads,
                          const ChartMeasureOptions& options, ChartReport& report) {
    const std::vector<ChartSlot> slots = slotsOf(description);
    report.edges.assign(slots.size(), ChartEdgeReport{});
    for (std::size_t k = 0; k < slots.size(); ++k) {
        report.edges[k].edge = slots[k].slot;
        report.edges[k].name = slots[k].name;
        report.edges[k].zone = slots[k].zone;
    }
    ChartRegistration registration = undistortedRegistration(report.width, report.height);
    std::vector<locate::ShapeMatch> matches;
    if (!locate::registerChart(description, quads, report.width, report.height, registration,
                               matches)) {
        return -2;
    }
    report.registration = registration;
    std::map<int, locate::ShapeMatch> matchOf;
    for (const locate::ShapeMatch& m : matches) {
        matchOf[m.shape] = m;
    }
    const int count = static_cast<int>(slots.size());
#pragma omp parallel for schedule(dynamic)
    for (int k = 0; k < count; ++k) {
        const ChartSlot& slot = slots[static_cast<std::size_t>(k)];
        ChartEdgeReport& out = report.edges[static_cast<std::size_t>(k)];
        ChartPoint chartPoint;
        if (slot.shape >= 0) {
            const ChartShape& shape = description.shapes[static_cast<std::size_t>(slot.shape)];
            chartPoint =
                lerp(shape.corners[static_cast<std::size_t>(slot.side)],
                     shape.corners[static_cast<std::size_t>((slot.side + 1) % 4)], slot.along);
        } else {
            const ChartEdge& edge = description.edges[static_cast<std::size_t>(slot.edge)];
            chartPoint = lerp(edge.from, edge.to, slot.along);
        }
        const ChartPoint predicted = chartToFrame(registration, chartPoint);
        out.x = predicted.x;
        out.y = predicted.y;
        if (out.zone.empty()) {
            out.zone = zoneAt(description, fieldOf(registration, predicted.x, predicted.y));
        }
        FoundEdge edge;
        std::vector<EdgeSegment> others;
        if (slot.shape >= 0) {
            const auto m = matchOf.find(slot.shape);
            std::size_t index = report.found.size();
            if (m != matchOf.end()) {
                index = 4 * static_cast<std::size_t>(m->second.quad) +
                        static_cast<std::size_t>((slot.side + m->second.cornerShift) % 4);
            } else {
                // A square the frame border cuts has corners the border made, and may match
                // no shape; its sides are still where the registration puts them.
                const ChartShape& shape = description.shapes[static_cast<std::size_t>(slot.shape)];
                const ChartPoint a =
                    chartToFrame(registration, shape.corners[static_cast<std::size_t>(slot.side)]);
                const ChartPoint b = chartToFrame(
                    registration, shape.corners[static_cast<std::size_t>((slot.side + 1) % 4)]);
                index =
                    sideThrough(report.found, {predicted.x, predicted.y}, {b.x - a.x, b.y - a.y});
            }
            // A side the frame border stands in for is out of the frame.
            if (index >= report.found.size() || report.found[index].frameBorder) {
                out.state = ChartEdgeState::kNotFound;
                continue;
            }
            edge = report.found[index];
            others = edgesNear(report.found, index, 2.0 * kMaxRegionHalfLength);
            out.found = true;
            out.geometry = edge;
            // The registration says where the slot is, so a side the frame border cuts is
            // still measured where its region fits inside the frame; a square region of the
            // slot's own size is measured whatever the side's length or angle, as a member
            // measures it.
            if (slot.regionSize == 0 && (edge.tooShort || edge.nearAxis)) {
                out.state = edge.tooShort ? ChartEdgeState::kTooShort : ChartEdgeState::kNearAxis;
                continue;
            }
        } else {
            const ChartEdge& lone = description.edges[static_cast<std::size_t>(slot.edge)];
            edge = predictedEdge(registration, lone, lone.polarity);
            for (std::size_t i = 0; i < report.found.size(); ++i) {
                others.push_back({{report.found[i].from.x, report.found[i].from.y},
                                  {report.found[i].to.x, report.found[i].to.y}});
            }
        }
        const cv::Point2d centre = footOn(edge, {predicted.x, predicted.y});
        out.registrationDistance = std::hypot(centre.x - predicted.x, centre.y - predicted.y);
        out.x = centre.x;
        out.y = centre.y;
        measureChartEdge(image, {edge, centre, slot.regionSize}, others, options, out);
    }
    return 0;
}

}  // namespace api
}  // namespace talonvireo
