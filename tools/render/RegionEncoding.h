// Quantising rendered levels and laying them out in the pixel formats the library reads.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace render {

// Rounds CV_64F levels to the nearest integer and clamps to 0..255 (CV_8U).
cv::Mat quantise8(const cv::Mat& levels);

// Rounds CV_64F levels * scale to the nearest integer and clamps to 0..65535 (CV_16U).
cv::Mat quantise16(const cv::Mat& levels, double scale);

// The OpenCV type a talonvireo::PixelFormat code's layout is stored as (CV_8UC1, CV_16UC1,
// CV_8UC3 or CV_16UC3), or -1 for an unknown layout.
int formatMatrixType(int format);

// Lays a quantised grey image out as a packed buffer in the layout of `format` (a
// talonvireo::PixelFormat code): grey as it is, BGR with three equal channels, a Bayer mosaic
// as the mosaic of a neutral scene (every site carries the grey value). `grey` must be CV_8U
// for the 8-bit layouts and CV_16U for the 16-bit ones; throws std::invalid_argument otherwise.
std::vector<unsigned char> encodeRegion(const cv::Mat& grey, int format);

}  // namespace render
}  // namespace talonvireo
