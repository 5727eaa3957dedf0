// Measuring a frame of any chart: every edge found by itself ("auto"), or the slots of a chart
// description registered to the frame. The library's chart report laid out as the station's
// frame report, so that the table, JSON, CSV, overlay, plots, limits, batch and SQLite read it
// as they read a member's.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "station/EdgeReport.h"
#include "station/FrameFile.h"
#include "station/FrameGrading.h"

namespace talonvireo {
namespace station {

// What --chart names: "auto", or a description (a built-in chart's name or a .toml file).
struct ChartChoice {
    std::string label = "auto";  // "auto" or the description's name
    std::optional<ChartDescription> description;
};

// Throws Failure (bad input) for an unknown name that is not a file, or a malformed file
// (naming its line and key).
ChartChoice chooseChart(const std::string& arg);

// A frame as the chart measurement takes it.
struct ChartFrame {
    cv::Mat image;   // CV_8UC1, CV_16UC1, CV_8UC3 (BGR) or CV_16UC3
    int format = 0;  // its PixelFormat code
    int bits = 0;    // significant bits of 16-bit samples (0: all 16)
    int whiteLevel = 0;
    // The frame as 8-bit grey, for pictures (read from a file; empty for an array, which no
    // picture is drawn of).
    cv::Mat grey;
};

// How a raw file's samples are laid out beyond RawLayout: the mosaic phase ("RG", "GR",
// "GB", "BG"; "none" for grey words) and the significant bits (0: the packing's).
struct ChartSamples {
    std::string bayer = "RG";
    int bits = 0;
};

// Reads a raw file (16-bit words, MIPI, raw8) as a mosaic of `samples`' phase, an image file
// (8- or 16-bit grey or colour PNG/TIFF/JPEG, a one-channel image as a mosaic when a phase is
// given explicitly) or a camera raw file (its own CFA and white level). Throws Failure.
ChartFrame readChartFrame(const std::string& path, const RawLayout& layout,
                          const ChartSamples& samples, bool samplesGiven);

// Raw samples (CV_16UC1 words of `bits` significant bits, or CV_8UC1) as a frame: a mosaic of
// phase `bayer` ("none": grey). Throws Failure naming `name` for samples deeper than `bits`.
// No picture (`grey` stays empty).
ChartFrame chartFrameOfSamples(const cv::Mat& samples, const std::string& bayer, int bits,
                               const std::string& name);

// Measures `frame` as `chart`: one row per edge (per description slot, or per found side),
// with its state, centre, region, figures, levels, clipping and zone; the report's chart and
// registration filled in. Throws Failure: bad input, or Cause::WrongChart when a description
// does not register to the frame, Cause::NoQuadrilateral when the frame holds none.
FrameReport measureChartFrame(const ChartChoice& chart, const ChartFrame& frame,
                              const FrameOptions& options);

// Measures `frame`, places every edge in the field, flags the edges that cannot be trusted
// and, with limits, grades every edge, as gradeFrameFile does for a member's frame. `input`
// names the frame in the report (a file, or empty).
GradedFrame gradeChartFrame(const ChartChoice& chart, const ChartFrame& frame,
                            const FrameOptions& options, const std::string& input);

// readChartFrame, then gradeChartFrame.
GradedFrame gradeChartFile(const ChartChoice& chart, const std::string& path,
                           const FrameOptions& options, const ChartSamples& samples,
                           bool samplesGiven);

}  // namespace station
}  // namespace talonvireo
