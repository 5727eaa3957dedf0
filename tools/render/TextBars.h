// The bars of a line of letter-like marks: each character a group of up to seven bars placed
// like a segment display's, so that a text mark looks like print to a finder without a font.
#pragma once

#include <vector>

#include "render/RenderClutter.h"

namespace talonvireo {
namespace render {

// A rectangle in frame pixels: centre, unit axis u along its length (v = u turned toward +y),
// half sizes along u and v. The bars of one text never overlap, so their coverages add.
struct FrameBar {
    double cx = 0.0;
    double cy = 0.0;
    double ux = 1.0;
    double uy = 0.0;
    double halfU = 0.0;
    double halfV = 0.0;
};

std::vector<FrameBar> textBars(const ClutterText& text);

}  // namespace render
}  // namespace talonvireo
