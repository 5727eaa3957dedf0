// A caller's frame made ready for the chart finder: the grey image the quadrilaterals are
// found and the regions measured on, and the samples clipping is counted on.
#pragma once

#include <opencv2/core.hpp>

#include "talonvireo/RawFrameToGrey.h"

namespace talonvireo {
namespace api {

struct ChartImage {
    cv::Mat grey;  // CV_8UC1 or CV_16UC1
    // The caller's samples (one channel, 8 or 16 bits; the mosaic of a Bayer frame, the grey
    // of a BGR one), and the level at or above which they count as clipped.
    cv::Mat samples;
    int whiteLevel = 0;
    // A Bayer frame's own layout and phase (PixelFormat), for per-plane measurement; 0 else.
    int mosaicFormat = 0;
    cv::Mat mosaic;  // the caller's mosaic, CV_8UC1 or CV_16UC1
};

// False for a null buffer, a size of 0 or less or over 2^31 - 1 pixels, an unknown format,
// bits outside 0 or 8 .. 16, or a negative white level. Grey frames are used as they are;
// BGR ones become grey by OpenCV; a Bayer mosaic of phase R G in 16-bit words with 10, 14 or
// 16 bits goes down the given road, any other mosaic through OpenCV's Bayer-to-grey.
bool chartImageOf(const unsigned char* image, int width, int height, int format, int bits,
                  GreyRoad road, int whiteLevel, ChartImage& out);

}  // namespace api
}  // namespace talonvireo
