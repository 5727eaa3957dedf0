// What every measured edge of a rendered chart description should measure: where its image
// lies, its angle and length, its bow under the distortion, the blur there and its true SFR,
// and under defocus its best focus.
#pragma once

#include <string>
#include <vector>

#include "render/DescriptionRenderSettings.h"
#include "render/SfrTruth.h"
#include "talonvireo/ChartDescription.h"

namespace talonvireo {
namespace render {

struct DescriptionEdgeTruth {
    std::string name;  // the slot's; empty without slots
    int slot = 0;      // the slot's number; without slots the running index
    int shape = -1;    // side `side` of shape `shape`, or lone edge `edge`
    int side = 0;
    int edge = -1;
    int polarity = 1;  // +1 dark on the right of from -> to in the chart (a dark shape)
    // The image of the edge's ends and of its chart midpoint, frame pixels.
    ChartPoint from;
    ChartPoint to;
    ChartPoint midpoint;
    // The image of the point at the slot's `along` (the midpoint without slots): where its
    // region sits and where the angle, sigma and SFR below hold.
    ChartPoint centre;
    double angleDeg = 0.0;      // of the chord from -> to, 0 <= angle < 180, from the x axis
    double axisAngleDeg = 0.0;  // of the image's tangent at `centre` from the nearer pixel axis
    double length = 0.0;        // along the image, pixels
    // Signed largest distance of the image from the chord, pixels: positive to the left of
    // from -> to as the frame sees it, out of a shape the frame sees clockwise.
    double bow = 0.0;
    double sigma = 0.0;   // the PSF's sigma across the edge at `centre`, pixels
    bool inside = false;  // the whole image within the frame, [-0.5, width - 0.5] x [-0.5, ...]
    // With the focus model on (NaN without): the lens position where this edge is sharpest
    // (its SFR highest at every frequency), the tangential and sagittal foci at `centre`, um,
    // and `centre` from the frame centre, mm (x right, y down).
    double bestFocusZ = 0.0;
    double tangentialZ = 0.0;
    double sagittalZ = 0.0;
    double xMm = 0.0;
    double yMm = 0.0;

    // The true SFR across the edge at f cycles per pixel.
    double sfr(double f) const { return trueSfr(f, sigma, axisAngleDeg); }
};

// One record per slot when the description has slots (in their order), else one per side of
// every shape, then per lone edge. Throws std::invalid_argument for bad settings or a slot
// naming an edge the description lacks.
std::vector<DescriptionEdgeTruth> descriptionTruth(const ChartDescription& description,
                                                   const DescriptionRenderSettings& settings);

}  // namespace render
}  // namespace talonvireo
