// Grid charts as descriptions, for tests and benchmarks: a rows x columns grid of dark squares
// turned 5 to 12 degrees alternately either way; the same as light squares in one dark panel;
// and a mix of trapezoids and rectangles. Chart units are pixels of a frame that sees the chart
// square-on at scale 1 (the 9 x 12 default fills a 4000 x 3000 frame).
#pragma once

#include "talonvireo/ChartDescription.h"

namespace talonvireo {
namespace render {

struct GridChartSettings {
    int rows = 9;
    int columns = 12;
    double pitchX = 4000.0 / 12.0;  // cell size
    double pitchY = 3000.0 / 9.0;
    double side = 190.0;   // of a square; of the longer sides of the other shapes
    double originX = 0.0;  // top-left corner of the first cell
    double originY = 0.0;
    double leastTurnDeg = 5.0;  // cell k turns by a share of the range spread over the cells,
    double mostTurnDeg = 12.0;  // either way in a checkerboard
};

// Cell k = row * columns + column: its shape's centre, a little off the cell's centre so that
// no corner sits on the pixel grid's symmetry, and its signed turn in degrees.
ChartPoint gridCellCentre(const GridChartSettings& settings, int k);
double gridCellTurnDeg(const GridChartSettings& settings, int k);

// Dark squares (polarity +1), one per cell in row-major order. Throws std::invalid_argument
// for fewer than one row or column, a side <= 0 or one that leaves no gap in its cell.
ChartDescription gridChart(const GridChartSettings& settings = {});

// Shape 0 a dark panel over the cells, its border `panelInset` inside the cells' outer border;
// then the grid's squares, light (polarity -1).
ChartDescription lightOnDarkGridChart(const GridChartSettings& settings = {},
                                      double panelInset = 25.0);

// Dark shapes, alternately a rectangle (side x 0.65 side) and a trapezoid (height `side`,
// parallel sides `side` and 0.3 side, so its slanted sides lean 19.3 degrees and stay 7 degrees
// or more off the axes whatever the turn; every other one upside down), turned like the squares.
ChartDescription trapezoidRectangleChart(const GridChartSettings& settings = {});

}  // namespace render
}  // namespace talonvireo
