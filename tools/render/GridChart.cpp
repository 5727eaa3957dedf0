#include "render/GridChart.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include "render/Pi.h"

namespace talonvireo {
namespace render {

namespace {

// A shape in its own frame (x right, y down, clockwise as seen), turned and moved to `centre`.
ChartShape placed(const ChartPoint (&local)[4], ChartPoint centre, double turnDeg, int polarity) {
    const double a = turnDeg * kPi / 180.0;
    const double c = std::cos(a), s = std::sin(a);
    ChartShape shape;
    for (int k = 0; k < 4; ++k) {
        shape.corners[k] = {centre.x + c * local[k].x - s * local[k].y,
                            centre.y + s * local[k].x + c * local[k].y};
    }
    shape.polarity = polarity;
    return shape;
}

void checkGrid(const GridChartSettings& g) {
    if (g.rows < 1 || g.columns < 1) {
        throw std::invalid_argument("grid chart: rows and columns must be at least 1");
    }
    // A square's reach from its centre at the largest turn, plus the centre's offset.
    const double turn = std::max(std::abs(g.leastTurnDeg), std::abs(g.mostTurnDeg)) * kPi / 180.0;
    const double reach = 0.5 * g.side * (std::cos(turn) + std::sin(turn)) + 1.0;
    if (!(g.side > 0.0) || !(2.0 * reach < std::min(g.pitchX, g.pitchY))) {
        throw std::invalid_argument(
            "grid chart: side must be positive and leave a gap in its cell");
    }
}

}  // namespace

ChartPoint gridCellCentre(const GridChartSettings& g, int k) {
    const int r = k / g.columns, c = k % g.columns;
    return {g.originX + g.pitchX * (c + 0.5) + 0.37 * (k % 3),
            g.originY + g.pitchY * (r + 0.5) - 0.21 * (k % 5)};
}

double gridCellTurnDeg(const GridChartSettings& g, int k) {
    const int cells = g.rows * g.columns;
    const int r = k / g.columns, c = k % g.columns;
    const double share = cells > 1 ? static_cast<double>((k * 37) % cells) / (cells - 1) : 0.0;
    const double turn = g.leastTurnDeg + (g.mostTurnDeg - g.leastTurnDeg) * share;
    return (r + c) % 2 == 0 ? turn : -turn;
}

ChartDescription gridChart(const GridChartSettings& g) {
    checkGrid(g);
    ChartDescription d;
    d.name = "grid " + std::to_string(g.rows) + " x " + std::to_string(g.columns);
    const double h = 0.5 * g.side;
    const ChartPoint square[4] = {{-h, -h}, {h, -h}, {h, h}, {-h, h}};
    for (int k = 0; k < g.rows * g.columns; ++k) {
        d.shapes.push_back(placed(square, gridCellCentre(g, k), gridCellTurnDeg(g, k), 1));
    }
    return d;
}

ChartDescription lightOnDarkGridChart(const GridChartSettings& g, double panelInset) {
    ChartDescription squares = gridChart(g);
    ChartDescription d;
    d.name = squares.name + " light on dark";
    const double x0 = g.originX + panelInset, y0 = g.originY + panelInset;
    const double x1 = g.originX + g.columns * g.pitchX - panelInset;
    const double y1 = g.originY + g.rows * g.pitchY - panelInset;
    if (!(x1 > x0 && y1 > y0)) {
        throw std::invalid_argument("grid chart: panelInset leaves no panel");
    }
    ChartShape panel;
    panel.corners = {ChartPoint{x0, y0}, ChartPoint{x1, y0}, ChartPoint{x1, y1},
                     ChartPoint{x0, y1}};
    panel.polarity = 1;
    d.shapes.push_back(panel);
    for (ChartShape& s : squares.shapes) {
        s.polarity = -1;
        d.shapes.push_back(s);
    }
    return d;
}

ChartDescription trapezoidRectangleChart(const GridChartSettings& g) {
    checkGrid(g);
    ChartDescription d;
    d.name =
        "trapezoids and rectangles " + std::to_string(g.rows) + " x " + std::to_string(g.columns);
    const double h = 0.5 * g.side;
    const ChartPoint rectangle[4] = {
        {-h, -0.65 * h}, {h, -0.65 * h}, {h, 0.65 * h}, {-h, 0.65 * h}};
    const ChartPoint trapezoid[4] = {{-0.3 * h, -h}, {0.3 * h, -h}, {h, h}, {-h, h}};
    for (int k = 0; k < g.rows * g.columns; ++k) {
        const int r = k / g.columns, c = k % g.columns;
        const ChartPoint centre = gridCellCentre(g, k);
        const double turn = gridCellTurnDeg(g, k);
        if ((r + c) % 2 == 0) {
            d.shapes.push_back(placed(rectangle, centre, turn, 1));
        } else {
            // Every other trapezoid upside down: turned half a revolution more.
            d.shapes.push_back(placed(trapezoid, centre, turn + (r % 2 == 0 ? 0.0 : 180.0), 1));
        }
    }
    return d;
}

}  // namespace render
}  // namespace talonvireo
