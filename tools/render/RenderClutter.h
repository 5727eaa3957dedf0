// Things in the frame that are not the chart, for a finder to ignore: discs, text-like marks
// and saturated light spots. All in frame pixels, undistorted, blurred like the chart there.
#pragma once

#include <string>
#include <vector>

namespace talonvireo {
namespace render {

// A dark (polarity +1) or light (-1) disc.
struct ClutterDisc {
    double x = 0.0;  // centre
    double y = 0.0;
    double diameter = 60.0;
    int polarity = 1;
};

// A line of letter-like marks: each character a group of bars in the manner of a segment
// display (digits, most letters, '-', '_'; others leave a gap), `height` pixels tall (10 to
// 40 px is typical print on a chart), strokes height / 7 wide.
struct ClutterText {
    double x = 0.0;  // top-left corner of the first character, before turning
    double y = 0.0;
    double height = 24.0;
    std::string text = "F4";
    double angleDeg = 0.0;  // turn about (x, y); positive turns x toward +y
    int polarity = 1;
};

// A bright light, Gaussian in shape, added to the exposed level: `peak` full scales at its
// centre (above 1 it clips there), standard deviation `radius` pixels.
struct ClutterSpot {
    double x = 0.0;
    double y = 0.0;
    double radius = 30.0;
    double peak = 3.0;
};

struct RenderClutter {
    std::vector<ClutterDisc> discs;
    std::vector<ClutterText> texts;
    std::vector<ClutterSpot> spots;
};

}  // namespace render
}  // namespace talonvireo
