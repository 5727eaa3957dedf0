// Frames and regions read from files: raw 16-bit words, packed MIPI RAW10, or an image file.
#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace cli {

enum class Packing {
    Words16,  // one little-endian 16-bit word per sample
    Mipi10,   // MIPI RAW10: four samples in five bytes (four high bytes, then their low bits)
};

// Parses "words16" / "mipi10"; throws CliError (bad arguments) otherwise.
Packing parsePacking(const std::string& name);

// A width x height frame of CV_16U samples from a raw file. Throws CliError: unreadable file,
// or a size other than the packing's size of width x height samples.
cv::Mat readRawFrame(const std::string& path, int width, int height, Packing packing);

// True for the image files the tool decodes through OpenCV (.png .pgm .ppm .pnm .tif .tiff
// .jpg .jpeg .bmp .webp, any case); false for raw files (.raw .bin .dat, or no extension).
// Throws CliError (unreadable file) for any other extension: "unsupported image type".
bool isImagePath(const std::string& path);

// A width x height raw file of OpenCV `type` samples in host byte order, packed. Throws
// CliError: bad size arguments, unreadable file, or a byte count that does not fit.
cv::Mat readRawImage(const std::string& path, int width, int height, int type);

// An image as it is stored (8- or 16-bit, one or three channels; an alpha channel is
// dropped). Throws CliError for a directory or a file that cannot be read or decoded.
cv::Mat readImage(const std::string& path);

// A frame from either kind of file (isImagePath). Images must be 16-bit single channel and, when
// width/height are given
// (> 0), of that size.
cv::Mat readFrame(const std::string& path, int width, int height, Packing packing);

}  // namespace cli
}  // namespace talonvireo
