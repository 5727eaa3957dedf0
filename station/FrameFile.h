// Frames and regions read from files: raw 16-bit words, packed MIPI RAW10, or an image file.
#pragma once

#include <cstdint>
#include <string>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace station {

enum class Packing {
    Words16,  // one little-endian 16-bit word per sample
    Mipi10,   // MIPI RAW10: four samples in five bytes (four high bytes, then their low bits)
    Mipi12,   // MIPI RAW12: two samples in three bytes (two high bytes, then their low nibbles)
    Raw8,     // one byte per sample
};

// Parses "words16" / "mipi10" / "mipi12" / "raw8"; throws Failure (bad input) otherwise.
Packing parsePacking(const std::string& name);

// How a raw file lays out its frame. Without a stride the samples run on from line to line
// as one packed stream; with one, every line starts `stride` bytes after the last (padded
// lines), packed from its own first byte. `offset` bytes of header come first.
struct RawLayout {
    int width = 0;
    int height = 0;
    Packing packing = Packing::Words16;
    int stride = 0;  // bytes; 0: no padding
    int offset = 0;  // bytes
};

// Bytes one line of `width` samples takes when packed.
std::uint64_t packedLineBytes(int width, Packing packing);

// Throws Failure (bad input) for a stride shorter than a packed line.
void checkRawLayout(const RawLayout& layout);

// A width x height frame of CV_16U samples from a raw file. Throws Failure: unreadable file,
// or a size other than the layout's: offset + the packed frame (without a stride), or
// offset + height strides (the last line's padding may be missing).
cv::Mat readRawFrame(const std::string& path, const RawLayout& layout);

// The extension of a path's file name, lower-cased, without its dot; empty when it has none
// (a leading dot, as in ".hidden", is not an extension).
std::string lowerExtension(const std::string& path);

// Significant bits a packing carries per sample (16, 10, 12, 8).
int packingBits(Packing packing);

// True for the image files the tool decodes through OpenCV (.png .pgm .ppm .pnm .tif .tiff
// .jpg .jpeg .bmp .webp, any case); false for raw files (.raw .bin .dat, or no extension).
// Throws Failure (unreadable file) for any other extension: "unsupported image type".
bool isImagePath(const std::string& path);

// A width x height raw file of OpenCV `type` samples in host byte order, packed. Throws
// Failure: bad size arguments, unreadable file, or a byte count that does not fit.
cv::Mat readRawImage(const std::string& path, int width, int height, int type);

// An image as it is stored (8- or 16-bit, one or three channels; an alpha channel is
// dropped). Throws Failure for a directory or a file that cannot be read or decoded.
cv::Mat readImage(const std::string& path);

// Writes `frame` (CV_16U, or CV_8U for raw8) as a raw file in `layout`'s packing, stride
// and offset (header and padding bytes zero); readRawFrame reads it back. Samples wider than
// the packing are cut to its bits. Throws Failure (Cause::Failed) when the file cannot be
// written, (bad input) for a stride shorter than a line.
void writeRawFrame(const std::string& path, const cv::Mat& frame, const RawLayout& layout);

// A frame from either kind of file (isImagePath). Images must be 16-bit single channel and, when
// the layout gives width and height (> 0), of that size.
cv::Mat readFrame(const std::string& path, const RawLayout& layout);

}  // namespace station
}  // namespace talonvireo
