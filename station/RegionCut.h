// The region `roi` measures: the image as read, optionally reduced to grey by a member's road,
// then cut to a rectangle, with the pixel-format code that describes what was cut.
#pragma once

#include <optional>
#include <string>

#include <opencv2/core.hpp>

#include "talonvireo/SfrCurve.h"

namespace talonvireo {
namespace station {

enum class RoiRoad {
    kOpenCv,        // the region API's own reduction of a mosaic (OpenCV's Bayer-to-grey)
    kMalvar,        // the HLX6C / RQ8 members' road over the whole frame
    kEdgeDirected,  // the K31R22BX / K74T16BX members' road over the whole frame
};

// Parses "opencv", "malvar", "edge-directed"; throws Failure (bad input) otherwise.
RoiRoad parseRoad(const std::string& name);

// Parses "classic", "precise"; throws Failure (bad input) otherwise.
SfrMethod parseMethod(const std::string& name);

struct Region {
    cv::Mat pixels;  // packed
    int format = 0;  // talonvireo::PixelFormat code of `pixels`
};

// true for the Bayer layouts (0x010, 0x020, 0x040, 0x080), whatever the phase.
bool isMosaicFormat(int format);

// The Bayer phase code (1 RG, 2 GR, 4 GB, 8 BG) of a mosaic cut at (dx, dy) from one of
// phase `phase`: an odd column offset swaps the pairs within a row, an odd row offset swaps
// the rows.
int shiftedPhase(int phase, int dx, int dy);

// Cuts `rect` (the whole image when empty) from `image` of pixel format `format`.
// kOpenCv: a mosaic keeps its samples and its phase code follows the cut's offset. The
// members' roads demosaic the whole frame first (16-bit words of `bits` = 10, 14 or 16
// significant bits, phase R G, as the members take it), so the cut grey region is exactly
// the one a member measures. Throws Failure: bad arguments (a road on anything else),
// region out of bounds (a rect outside the image).
Region cutRegion(const cv::Mat& image, int format, const std::optional<cv::Rect>& rect,
                 RoiRoad road, int bits);

}  // namespace station
}  // namespace talonvireo
