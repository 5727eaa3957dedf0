// The chart model a locator works on: the chart's corners, the edges between them, and the
// column view of a layout table that describes both.
#pragma once

namespace RegularSFR {

// One chart corner. A new record is all zeros.
struct ChartCorner {
    float x = 0.0f;  // refined position, full-resolution image pixels
    float y = 0.0f;
    float chartX = 0.0f;  // position on the chart
    float chartY = 0.0f;
    int kind = 0;  // quadrant of the light side: 0 (-x, -y), 1 (-x, +y), 2 (+x, -y), 3 (+x, +y)
    bool found = false;
};

// One chart edge with one or two corners. A new record is all zeros.
struct ChartEdge {
    float x = 0.0f;  // centre, full-resolution image pixels
    float y = 0.0f;
    int cornerCount = 0;  // 1 or 2
    int corner0 = 0;      // indices into the corner list
    int corner1 = 0;      // 0 for a single-corner edge
    // Single-corner edges: 0 takes the topmost ring crossing, anything else the bottommost.
    int edgeCode = 0;
    bool found = false;
};

// A layout table by columns; the arrays belong to the layout.
struct ChartLayoutTable {
    int count = 0;
    const int* cornerX = nullptr;
    const int* cornerY = nullptr;
    const int* cornerEdge = nullptr;
    const int* edgeCode = nullptr;  // read for the first corner of each edge
    const int* cornerKind = nullptr;
};

}  // namespace RegularSFR
