// Plain per-pixel renditions of the roads from raw words to grey, kept as the reference the
// library's fast roads must match sample for sample. Written for clarity, not speed: every
// pixel goes through its rule on its own, through whole-frame intermediates.
#pragma once

#include <cstdint>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace testing {

// One word to its byte: 10 bits (>> 2 through a table, saturating past 1023), 14 bits (low
// byte of >> 6) or 16 bits (high byte).
std::uint8_t oracleUnpack(std::uint16_t word, int bits);

// CV_16UC1 words to the CV_8UC1 byte mosaic.
cv::Mat oracleMosaic(const cv::Mat& words, int bits);

// Malvar-He-Cutler demosaic with reflect-101 borders, then OpenCV's RGB-to-grey. phaseIdx:
// 0 B G, 1 G B, 2 R G, 3 G R (the colour of the first two samples of the first row).
cv::Mat oracleMalvarGrey(const cv::Mat& words, int bits, int phaseIdx);

// The edge-directed demosaic, red at rows with (row + rowShift) even and columns with
// (col + colShift) even, then (117 B + 601 G + 306 R) >> 10.
cv::Mat oracleEdgeDirectedGrey(const cv::Mat& words, int bits, int rowShift, int colShift);

}  // namespace testing
}  // namespace talonvireo
