// The rules a chart description must keep before anything is measured with it; the reader of
// description files keeps the same rules, with file lines in its messages.
#include <cmath>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "talonvireo/ChartDescription.h"

namespace talonvireo {

namespace {
constexpr int kSmallestRegion = 16;
constexpr int kLargestRegion = 2000;
// Below this sine of the turn at a corner, three corners lie on a line.
constexpr double kStraightTurn = 1e-6;

bool finite(ChartPoint p) {
    return std::isfinite(p.x) && std::isfinite(p.y);
}

std::string number(double v) {
    std::ostringstream s;
    s << v;
    return s.str();
}

// Empty when the corners make a convex quadrilateral listed clockwise (y down), else why not.
std::string quadProblem(const ChartShape& shape) {
    for (const ChartPoint& c : shape.corners) {
        if (!finite(c)) {
            return "a corner is not finite";
        }
    }
    int clockwise = 0;
    int counter = 0;
    for (int i = 0; i < 4; ++i) {
        const ChartPoint& a = shape.corners[i];
        const ChartPoint& b = shape.corners[(i + 1) % 4];
        const ChartPoint& c = shape.corners[(i + 2) % 4];
        const double ex = b.x - a.x, ey = b.y - a.y, fx = c.x - b.x, fy = c.y - b.y;
        const double lengths = std::hypot(ex, ey) * std::hypot(fx, fy);
        const double cross = ex * fy - ey * fx;
        if (!(lengths > 0.0) || std::abs(cross) <= kStraightTurn * lengths) {
            return "degenerate: corners coincide or three lie on a line";
        }
        (cross > 0.0 ? clockwise : counter) += 1;
    }
    if (clockwise != 4 && counter != 4) {
        return "not a convex quadrilateral (a dent, or corners out of order)";
    }
    if (counter == 4) {
        return "corners run counter-clockwise (y down); list them clockwise";
    }
    return {};
}

std::string polarityProblem(int polarity) {
    return polarity == 1 || polarity == -1
               ? std::string()
               : "polarity " + std::to_string(polarity) + " is neither +1 (dark) nor -1 (light)";
}

std::string slotLabel(const ChartSlot& s) {
    return "slot '" + s.name + "' (slot " + std::to_string(s.slot) + ")";
}

std::string slotProblem(const ChartDescription& chart, const ChartSlot& s,
                        const std::set<std::string>& zones) {
    const int shapes = static_cast<int>(chart.shapes.size());
    const int edges = static_cast<int>(chart.edges.size());
    if (s.name.empty()) {
        return "slot " + std::to_string(s.slot) + " has no name";
    }
    if (s.slot < 0) {
        return slotLabel(s) + ": slot numbers start at 0";
    }
    if (s.shape >= 0 && s.edge >= 0) {
        return slotLabel(s) + ": names both shape " + std::to_string(s.shape) + " and edge " +
               std::to_string(s.edge) + "; a slot measures one";
    }
    if (s.shape >= 0) {
        if (s.shape >= shapes) {
            return slotLabel(s) + ": shape " + std::to_string(s.shape) + " does not exist (" +
                   std::to_string(shapes) + " shapes)";
        }
        if (s.side < 0 || s.side > 3) {
            return slotLabel(s) + ": side " + std::to_string(s.side) + " of shape " +
                   std::to_string(s.shape) + " does not exist: sides are 0 .. 3";
        }
    } else if (s.edge >= 0) {
        if (s.edge >= edges) {
            return slotLabel(s) + ": edge " + std::to_string(s.edge) + " does not exist (" +
                   std::to_string(edges) + " lone edges)";
        }
    } else {
        return slotLabel(s) + ": names neither a shape side nor a lone edge";
    }
    if (!(s.along >= 0.0 && s.along <= 1.0)) {
        return slotLabel(s) + ": along " + number(s.along) + " is not 0 .. 1";
    }
    if (s.regionSize != 0 && (s.regionSize < kSmallestRegion || s.regionSize > kLargestRegion)) {
        return slotLabel(s) + ": regionSize " + std::to_string(s.regionSize) +
               " is neither 0 (fitted) nor 16 .. 2000";
    }
    if (!s.zone.empty() && zones.count(s.zone) == 0) {
        return slotLabel(s) + ": zone '" + s.zone + "' is not defined";
    }
    return {};
}

std::string chartProblem(const ChartDescription& chart) {
    if (chart.shapes.empty() && chart.edges.empty()) {
        return "the chart has no shapes and no lone edges";
    }
    for (std::size_t i = 0; i < chart.shapes.size(); ++i) {
        const std::string why = quadProblem(chart.shapes[i]);
        const std::string polarity = polarityProblem(chart.shapes[i].polarity);
        if (!why.empty() || !polarity.empty()) {
            return "shape " + std::to_string(i) + ": " + (why.empty() ? polarity : why);
        }
    }
    for (std::size_t i = 0; i < chart.edges.size(); ++i) {
        const ChartEdge& e = chart.edges[i];
        const std::string label = "edge " + std::to_string(i) + ": ";
        if (!finite(e.from) || !finite(e.to)) {
            return label + "an end is not finite";
        }
        if (e.from.x == e.to.x && e.from.y == e.to.y) {
            return label + "from and to are the same point";
        }
        if (!polarityProblem(e.polarity).empty()) {
            return label + polarityProblem(e.polarity);
        }
    }
    for (std::size_t i = 0; i < chart.marks.size(); ++i) {
        const ChartMark& m = chart.marks[i];
        const std::string label = "mark " + std::to_string(i) + ": ";
        if (!finite(m.centre) || !(std::isfinite(m.diameter) && m.diameter > 0.0)) {
            return label + "needs a finite centre and a diameter above 0";
        }
        if (!polarityProblem(m.polarity).empty()) {
            return label + polarityProblem(m.polarity);
        }
    }
    std::set<std::string> zones;
    for (const ChartZone& z : chart.zones) {
        if (z.name.empty()) {
            return "a zone has no name";
        }
        if (!zones.insert(z.name).second) {
            return "zone '" + z.name + "' is defined twice";
        }
        if (!(z.fromField >= 0.0 && z.fromField <= z.toField && z.toField <= 1.0)) {
            return "zone '" + z.name + "': field " + number(z.fromField) + " .. " +
                   number(z.toField) + " is not within 0 .. 1, from <= to";
        }
    }
    std::map<int, const ChartSlot*> numbers;
    std::map<std::string, const ChartSlot*> names;
    for (const ChartSlot& s : chart.slots) {
        const std::string why = slotProblem(chart, s, zones);
        if (!why.empty()) {
            return why;
        }
        if (!numbers.emplace(s.slot, &s).second) {
            return slotLabel(s) + ": slot " + std::to_string(s.slot) + " is also filled by " +
                   slotLabel(*numbers[s.slot]);
        }
        if (!names.emplace(s.name, &s).second) {
            return slotLabel(s) + ": the name is also " + slotLabel(*names[s.name]) + "'s";
        }
    }
    return {};
}
}  // namespace

bool checkChartDescription(const ChartDescription& chart, std::string& problem) {
    problem = chartProblem(chart);
    return problem.empty();
}

}  // namespace talonvireo
