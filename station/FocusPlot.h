// Pictures of a through-focus study: the SFR against z per field zone, tangential and sagittal
// apart; and the best-focus map, where the fitted image surface lies over the sensor and each
// edge's best focus sits on the same colour scale.
#pragma once

#include <opencv2/core.hpp>

#include "station/FocusStudy.h"

namespace talonvireo {
namespace station {

// An 8-bit BGR picture 1000 pixels wide: an 84 px header (measurand, frequency, frames, edges,
// window, astigmatism T - S per zone), then a row of two 500 x 290 panels per zone with edges
// (tangential left, sagittal right; an edge without orientation joins the tangential panel),
// then a 40 px legend. Every panel plots SFR against z on the same axes: z over the frames
// rounded out to its tick, SFR from 0 to at least 1; the plotting area is x 56 .. 484 and
// y 30 .. 240 of the panel. Each edge is a thin line with its samples as dots and its best
// focus as a small triangle over its peak; the zone's mean best focus a dashed vertical line,
// the limit a dashed horizontal one and the common focus window a light band.
cv::Mat plotFocusCurves(const FocusStudy& study);

// Where plotFocusMap put the sensor and its colour scale, for a caller that marks more on the
// picture (and for tests).
struct FocusMapLayout {
    cv::Point2d centre;    // the frame centre, picture pixels
    double pxPerMm = 0.0;  // the same both ways; y runs down as on the sensor
    cv::Rect sensor;       // the frame's outline
    cv::Rect colourBar;    // top row is toZ, bottom row fromZ
    double fromZ = 0.0;    // the colour scale's ends, micrometres
    double toZ = 1.0;
};

// An 8-bit BGR picture 1000 pixels wide: the sensor in millimetres from the frame centre (the
// study's frame size, or its edges' extent rounded out when it has none), the fitted surface as the
// background colour (viridis) with labelled contours, each edge a marker at its place coloured
// by its best focus on the same scale (circle tangential, square sagittal, diamond without
// orientation; hollow grey when not bracketed), a colour bar in um and the surface's figures
// below. Without a fitted surface the markers stand alone and the picture says so.
cv::Mat plotFocusMap(const FocusStudy& study, FocusMapLayout* layout = nullptr);

}  // namespace station
}  // namespace talonvireo
