#include "station/CameraRawFile.h"

#include <libraw/libraw.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "station/Failure.h"
#include "station/FrameFile.h"
#include "talonvireo/PixelFormat.h"

namespace talonvireo {
namespace station {

namespace {
// LibRaw's colour index (0 R, 1 G, 2 B, 3 second G) as a letter.
char colourLetter(int index) {
    return index == 0 ? 'R' : index == 2 ? 'B' : index == 1 || index == 3 ? 'G' : '?';
}
}  // namespace

bool isCameraRawPath(const std::string& path) {
    const std::string ext = lowerExtension(path);
    for (const char* known : {"dng", "cr2", "cr3", "nef", "nrw", "arw", "srf", "sr2", "orf", "rw2",
                              "raf", "pef", "srw", "3fr", "iiq", "erf", "kdc", "mrw", "x3f"}) {
        if (ext == known) {
            return true;
        }
    }
    return false;
}

CameraRaw readCameraRaw(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        throw Failure(Cause::UnreadableFile, path + " is a directory");
    }
    // LibRaw's state is large: on the heap, one per call (re-entrant, no shared state).
    auto processor = std::make_unique<LibRaw>(0);
    int rc = processor->open_file(path.c_str());
    if (rc == LIBRAW_SUCCESS) {
        rc = processor->unpack();
    }
    if (rc != LIBRAW_SUCCESS) {
        throw Failure(Cause::UnreadableFile,
                      "cannot read " + path + " as camera raw: " + libraw_strerror(rc));
    }
    const libraw_data_t& d = processor->imgdata;
    if (d.rawdata.raw_image == nullptr || d.idata.filters == 0 || d.idata.filters < 1000) {
        throw Failure(Cause::UnreadableFile,
                      path +
                          " holds no Bayer mosaic (a linear or demosaicked image, or a "
                          "sensor of another kind)");
    }
    const int width = d.sizes.width;
    const int height = d.sizes.height;
    if (width < 2 || height < 2) {
        throw Failure(Cause::UnreadableFile, path + " has an empty visible area");
    }
    CameraRaw out;
    // raw_pitch is in bytes; the visible area starts at the margins.
    const cv::Mat full(d.sizes.raw_height, d.sizes.raw_width, CV_16UC1, d.rawdata.raw_image,
                       d.sizes.raw_pitch);
    out.mosaic = full(cv::Rect(d.sizes.left_margin, d.sizes.top_margin, width, height)).clone();
    unsigned maximum = d.color.maximum;
    out.whiteLevel = static_cast<int>(maximum);
    out.bits = 1;
    while (out.bits < 16 && (maximum >> out.bits) != 0) {
        ++out.bits;
    }
    for (int r = 0; r < 2; ++r) {
        for (int c = 0; c < 2; ++c) {
            out.pattern += colourLetter(processor->COLOR(r, c));
        }
    }
    out.camera = std::string(d.idata.make) + " " + d.idata.model;
    return out;
}

int bayerPhaseOf(const std::string& pattern) {
    // A phase is named by the first row's two samples; the second row follows from them.
    if (pattern == "RGGB") {
        return PixelFormat::PhaseRG;
    }
    if (pattern == "GRBG") {
        return PixelFormat::PhaseGR;
    }
    if (pattern == "GBRG") {
        return PixelFormat::PhaseGB;
    }
    if (pattern == "BGGR") {
        return PixelFormat::PhaseBG;
    }
    return 0;
}

void checkCameraRawFits(const CameraRaw& raw, const std::string& path, int memberBits,
                        const std::string& memberName) {
    if (raw.pattern != "RGGB") {
        throw Failure(Cause::BadInput, path + " is a " + raw.pattern + " mosaic; " + memberName +
                                           " takes RGGB (red at the top-left sample)");
    }
    if (raw.bits > memberBits) {
        throw Failure(Cause::SampleDepth, path + " holds " + std::to_string(raw.bits) +
                                              "-bit samples; " + memberName + " takes " +
                                              std::to_string(memberBits));
    }
}

}  // namespace station
}  // namespace talonvireo
