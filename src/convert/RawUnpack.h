// Reducing raw sensor words (10, 14 or 16 significant bits, one per 16-bit little-endian
// word) to one byte per pixel by dropping low-order bits.
//
// The converters keep the pixel order (sample k becomes byte k), truncate rather than round,
// and never rescale. They read width * height words from `src` and write as many bytes to
// `dst`; a width or height of 0 or less converts nothing. The caller guarantees the buffers.
#pragma once

#include <functional>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace convert {

// The type through which one body serves several bit depths.
using RawConverter = std::function<void(const unsigned short*, unsigned char*, cv::Size)>;

// 10-bit samples: dst = s >> 2 (0..1023 maps to 0..255). A sample above 1023 is out of
// range for 10 bits; it saturates to 255.
void unpackRaw10(const unsigned short* src, unsigned char* dst, cv::Size size);

// 14-bit samples: dst = low byte of (s >> 6). No saturation: 16384 and above wrap
// (16384 gives 0, 16448 gives 1, 65535 gives 255).
void unpackRaw14(const unsigned short* src, unsigned char* dst, cv::Size size);

// 16-bit samples: dst = the high byte, s >> 8.
void unpackRaw16(const unsigned short* src, unsigned char* dst, cv::Size size);

}  // namespace convert
}  // namespace talonvireo
