// Which found quad is which shape of a chart description, and the chart-to-frame model
// (ChartRegistration.h) that takes the one onto the other.
//
// Seeds come from pairs of neighbouring quads near the frame centre, each paired with
// description shapes of the same polarity, relative size, relative turn and bearing; each
// gives a similarity that must also place the seed's neighbours on quads of the right size and
// turn. The distinct seeds that place most of the whole chart are grown outward ring by ring,
// matching by all four corners and refitting the model, then settled with every shape. A
// regular grid nearly matches itself a cell or two over; only the corners, through the squares'
// differing turns, and the grid's ends tell the placements apart, so several seeds are grown
// and the one that matches most shapes wins, then the one with the clearly smaller corner
// residual. Where placements tie outright (a grid symmetric under a half or quarter turn) the
// one nearest upright is taken: the quads cannot tell them apart.
//
// k1 is fitted once the matched corners reach rho 0.3; nearer the centre a homography takes up
// nearly all of it. k2 is tried once six or more shapes reach rho 0.4 and kept only where it
// lowers the corners' sum of squares by more than sixteen times their noise variance: k2 fitted
// to noise bends the model beyond the matched corners by pixels, where k1 alone would be off
// by tenths. Corners of quads cut by the frame border take no part in the fit.
#pragma once

#include <vector>

#include "detect/Quad.h"
#include "talonvireo/ChartDescription.h"
#include "talonvireo/ChartRegistration.h"

namespace talonvireo {
namespace locate {

// Fewest shapes matched to uncut quads for a placement to count: three or fewer leave the ten
// terms of the model barely determined, and a chance pattern of clutter could pass.
constexpr int kMinMatchedShapes = 4;
// Largest root-mean-square corner residual, pixels, of a placement taken as this chart: a quad
// finder's corners on a distorted frame sit within a few tenths of a pixel of the model; a
// neighbouring grid cell or another chart leaves several pixels.
constexpr double kMaxRegistrationRms = 1.5;

// Description shape `shape` is found quad `quad`; corner i of the shape is quad corner
// (i + cornerShift) % 4.
struct ShapeMatch {
    int shape = -1;
    int quad = -1;
    int cornerShift = 0;
};

// Fits `registration` to the quads found in a `width` x `height` frame: its centre and norm
// radius are the frame's (undistortedRegistration), its homography and k1, k2 fitted, its
// match count and corner residual filled in. `matches` lists the matched shapes in description
// order, quads cut by the border among them. False, leaving both outputs untouched, for empty
// input, a frame of no size, fewer than kMinMatchedShapes matched shapes, a residual above
// kMaxRegistrationRms, or fewer than three quarters of the shapes the placement puts wholly in the
// frame found there: then the frame shows another chart.
bool registerChart(const ChartDescription& description, const std::vector<detect::Quad>& quads,
                   int width, int height, ChartRegistration& registration,
                   std::vector<ShapeMatch>& matches);

}  // namespace locate
}  // namespace talonvireo
