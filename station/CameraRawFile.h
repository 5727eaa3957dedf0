// Frames from camera raw files (DNG and the makers' formats) through LibRaw: the sensor's
// unprocessed mosaic, with the bit depth and CFA pattern the file's metadata gives.
#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace station {

struct CameraRaw {
    cv::Mat mosaic;       // CV_16UC1, the visible area, samples as stored (black not taken off)
    int bits = 0;         // significant bits, from the white level
    int whiteLevel = 0;   // the file's declared white level (a DNG's WhiteLevel)
    std::string pattern;  // the 2 x 2 CFA from the top-left sample: "RGGB", "GRBG", ...
    std::string camera;   // make and model, as the file names them
};

// True for the extensions read through LibRaw: dng, and the makers' raw formats (cr2 cr3 nef
// nrw arw srf sr2 orf rw2 raf pef srw 3fr iiq erf kdc mrw x3f), any case.
bool isCameraRawPath(const std::string& path);

// Reads the mosaic. Throws Failure (unreadable file) for a file LibRaw cannot open or
// unpack, or one that holds no single-plane Bayer mosaic (a linear DNG, a Foveon or X-Trans
// sensor).
CameraRaw readCameraRaw(const std::string& path);

// The region API's Bayer phase code (PixelFormat::PhaseRG, PhaseGR, PhaseGB, PhaseBG) of a
// CFA pattern ("RGGB", "GRBG", "GBRG", "BGGR"); 0 for any other pattern.
int bayerPhaseOf(const std::string& pattern);

// Throws Failure when a member of `bits`-bit samples expecting an RGGB mosaic cannot take
// the file: another CFA phase (bad input) or deeper samples (sample depth), naming both.
void checkCameraRawFits(const CameraRaw& raw, const std::string& path, int memberBits,
                        const std::string& memberName);

}  // namespace station
}  // namespace talonvireo
