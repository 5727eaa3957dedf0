// The synthetic test charts: one per project, holding the dark squares of both layouts of the
// project's pair on a light background, in the layouts' chart coordinates.
//
// 26-row layouts: every listed point is one corner of its own square (about 200 px, smaller
// where two squares would come within 40 px), turned by 3 to 12 degrees so that no edge
// follows the pixel grid. 56-row layouts: rows that share an edge or a position describe one
// square, fitted to its listed corners by least squares and turned at least 3 degrees; a
// lone corner gets its own square as above. The two squares nearest the mark reference
// point are moved together so that their centres' midpoint is that point, which is what the
// mark search of those layouts expects of an unmoved chart.
#pragma once

#include <string>
#include <vector>

#include "render/ChartSquare.h"

namespace talonvireo {
namespace render {

enum class ChartProject { K74T16BX, K83P09BQ, HLX6C, K31R22BX };

// A layout row: chart x, chart y, edge index, corner kind, edge code.
struct ChartRow {
    int x;
    int y;
    int edge;
    int kind;
    int code;
};

struct ChartLayout {
    std::string name;
    std::vector<ChartRow> rows;
    std::vector<int> squareOfRow;  // the square whose corner (of role = the row's kind) it is
};

struct ChartDesign {
    ChartProject project = ChartProject::K74T16BX;
    std::vector<ChartSquare> squares;
    std::vector<ChartLayout> layouts;  // the project's pair, first and second
    std::vector<int> markSquares;      // the two mark squares (K31R22BX only)
};

// Minimum distance kept between any two squares, pixels.
inline constexpr double kSquareClearance = 40.0;
// The mark reference point of the 56-row layouts.
inline constexpr double kMarkReferenceX = 2010.7;
inline constexpr double kMarkReferenceY = 1547.1;

ChartDesign designChart(ChartProject project);

const char* projectName(ChartProject project);

// Parses a project name as projectName writes it; false when unknown.
bool parseProject(const std::string& name, ChartProject& project);

// Distance between two squares' outlines; 0 when they touch or overlap.
double squareDistance(const ChartSquare& a, const ChartSquare& b);

}  // namespace render
}  // namespace talonvireo
