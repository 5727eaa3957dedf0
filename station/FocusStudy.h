// A through-focus stack measured edge by edge: every frame of the stack measured (by a member
// or as a chart), each edge's SFR at one frequency against z, its best focus and depth, per
// field zone the tangential and sagittal best focus and their difference (astigmatism), the
// image surface through the edges' best foci and the focus window they all share.
#pragma once

#include <string>
#include <vector>

#include "station/FrameStream.h"
#include "station/ThroughFocus.h"

namespace talonvireo {
namespace station {

struct FocusFrame {
    std::string path;
    double z = 0.0;  // micrometres
};

// "FILE@Z" (z in micrometres); Failure (bad input) naming the argument otherwise.
FocusFrame parseFocusFrame(const std::string& arg);

// A list file of "file,z" lines (a header line, blank lines and # comments are skipped); paths
// relative to the list's folder. Failure naming the file and line.
std::vector<FocusFrame> readFocusList(const std::string& path);

struct FocusEdge {
    int edge = 0;
    std::string name;  // a chart's slot name; empty for a member
    double x = 0.0;    // mean centre over the frames that measured it, px
    double y = 0.0;
    double xMm = 0.0;  // from the frame centre, x right, y down (pixel pitch)
    double yMm = 0.0;
    std::string orientation;  // tangential, sagittal, none
    std::string zone;         // centre, middle, outer
    std::vector<FocusSample> samples;
    FocusCurve curve;
};

struct FocusZone {
    std::string name;
    double fromField = 0.0;  // share of the half-diagonal
    double toField = 1.0;
    double tangentialZ = FocusCurve::kNaN;  // mean best focus of its tangential edges
    double sagittalZ = FocusCurve::kNaN;
    int tangential = 0;
    int sagittal = 0;
    double astigmatism() const { return tangentialZ - sagittalZ; }
};

struct FocusStudy {
    std::string measurand;
    double frequency = 0.125;  // cycles per pixel
    double minSfr = 0.0;
    double pixelPitchUm = 0.0;
    std::vector<FocusFrame> frames;        // in z order
    std::vector<std::string> frameErrors;  // one per frame: empty when measured
    std::vector<bool> frameRelocated;      // one per frame: located afresh (not tracked)
    int width = 0;                         // the frames' size, pixels
    int height = 0;
    std::vector<FocusEdge> edges;
    std::vector<FocusZone> zones;
    FocusSurface surface;
    FocusWindow window;
};

// The field zones edges are grouped in: centre (to 30 % of the half-diagonal), middle (to
// 70 %), outer.
std::vector<FocusZone> focusZones();

// The zone of field point (x, y) on a width x height frame ("" outside every zone).
std::string focusZoneOf(const std::vector<FocusZone>& zones, double x, double y, int width,
                        int height);

// Measures every frame through `stream` (a member's chart tracked from frame to frame; a
// frequency other than Nyquist/4 needs the stream's options.param.freqDivisor = 0.5 /
// frequency) and analyses the stack. A frame that cannot be measured is recorded in
// frameErrors and left out. Failure (bad input) for fewer than three frames, a repeated z or a
// pixel pitch not above 0.
FocusStudy studyFocus(FrameStream& stream, std::vector<FocusFrame> frames, double frequency,
                      double minSfr, double pixelPitchUm);

// An edge's SFR at the study's frequency: Nyquist/4's figure, or the custom frequency's.
double focusSfr(const EdgeRow& row, double frequency);

}  // namespace station
}  // namespace talonvireo
