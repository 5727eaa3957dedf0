// A minimal DNG writer: one uncompressed CFA mosaic of 16-bit samples with its pattern and
// white level. Enough for camera-raw readers (LibRaw) to take it as a bench camera's file,
// so the renderer's frames can travel the same road as real ones.
#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace station {

// Writes `mosaic` (CV_16UC1) as a DNG of `bits`-bit samples whose 2 x 2 CFA pattern, from
// the top-left sample, is `pattern` ("RGGB", "GRBG", "GBRG" or "BGGR"), declaring
// `whiteLevel` (0: the bits' full scale; a bench camera's file may declare less). Throws
// Failure: bad arguments for another pattern or type, Cause::Failed when the file cannot be
// written.
void writeDng(const std::string& path, const cv::Mat& mosaic, int bits,
              const std::string& pattern = "RGGB", int whiteLevel = 0);

}  // namespace station
}  // namespace talonvireo
