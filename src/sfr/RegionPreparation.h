// Turning a caller's pixel buffer into a matrix the SFR core can read.
#pragma once

#include <opencv2/core.hpp>

namespace talonvireo {
namespace sfr {

// true for the Bayer layouts (the `format & 0xFF0` field), whatever the phase.
bool isMosaicLayout(int layout);

// Bytes per pixel of the layout field of `format`, or 0 for an unknown layout.
int bytesPerPixel(int format);

// Grey, 16-bit grey, BGR and 16-bit BGR buffers are wrapped without copying (`out` shares the
// caller's memory); a Bayer mosaic (8- or 16-bit) is converted to a new grey matrix of the
// same depth by OpenCV's Bayer-to-grey conversion for its phase. `out` is left empty for an
// unknown layout or phase, a null buffer, a non-positive size, or a pixel count that does not
// fit in a signed 32-bit integer. The buffer is only read.
void prepareRegion(unsigned char* image, int width, int height, int format, cv::Mat& out);

}  // namespace sfr
}  // namespace talonvireo
