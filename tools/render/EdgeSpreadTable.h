// The edge spread of a lens, and its first two integrals, built from the lens's transfer by a
// numerical inverse transform, so that an edge of any blur can be rendered exactly over each
// pixel's area.
//
// For a radially symmetric blur with transfer M (M(0) = 1), the line spread and edge spread at
// a distance x across the edge are
//   L(x) = 2 int_0^F M(f) cos(2 pi f x) df,   S(x) = 1/2 + int_0^F M(f) sin(2 pi f x) / (pi f) df,
// and their running integrals from 0 follow the same way (E1' = S, E2' = E1, both 0 at 0).
// They are tabulated for x >= 0 (the rest follows from symmetry) by Gauss-Legendre panels
// narrow enough to resolve the oscillation at the table's reach, and read between table points
// by quintic Hermite interpolation on the values and two derivatives.
//
// A pixel of a square aperture (side `aperture` of the pitch, centred on the pixel) seen along
// the edge normal (nx, ny) is a box of a|nx| convolved with a box of a|ny|: its level is a
// second difference of E2. So a pixel's level depends only on its centre's distance from the
// edge, exact for any angle, and its transfer is M(f) sinc(a f nx) sinc(a f ny).
#pragma once

#include <vector>

#include "render/LensBlur.h"

namespace talonvireo {
namespace render {

class EdgeSpreadTable {
public:
    // Tabulates `lens` for distances up to `reach` pixels. Throws std::invalid_argument for a
    // bad lens or a reach that is not positive and finite (or beyond 4096 px).
    EdgeSpreadTable(const LensBlur& lens, double reach);

    const LensBlur& lens() const { return lens_; }
    double reach() const { return reach_; }

    double lineSpread(double x) const;  // L
    double edgeSpread(double x) const;  // S, 0 on the dark side to 1 on the light side
    double firstIntegral(double x) const;
    double secondIntegral(double x) const;

    // Mean of the edge spread over a pixel whose centre lies `d` pixels on the light side of
    // the edge, its aperture seen as boxes of widths `w1` and `w2` along the normal. Throws
    // std::out_of_range when the pixel reaches past the table.
    double pixelLevel(double d, double w1, double w2) const;

private:
    enum Column { kSlope, kLine, kEdge, kFirst, kSecond, kColumns };
    // Interpolates column `c` at x >= 0 from it and the columns before it (quintic from two
    // derivatives; cubic for the line spread, whose second derivative is not tabulated).
    double interpolate(int c, double x) const;
    void tabulate();

    LensBlur lens_;
    double reach_;
    double step_;
    int count_;
    std::vector<double> column_[kColumns];
};

}  // namespace render
}  // namespace talonvireo
