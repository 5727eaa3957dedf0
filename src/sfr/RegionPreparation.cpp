#include "sfr/RegionPreparation.h"

#include <cstdint>
#include <limits>

#include <opencv2/imgproc.hpp>

#include "talonvireo/PixelFormat.h"

namespace talonvireo {
namespace sfr {

namespace {
namespace pf = talonvireo::PixelFormat;

int matrixType(int layout) {
    switch (layout) {
        case pf::Bayer8:
        case pf::Grey8:
            return CV_8UC1;
        case pf::Bayer16:
        case pf::Bayer16B:
        case pf::Bayer16C:
        case pf::Grey16:
            return CV_16UC1;
        case pf::Bgr8:
            return CV_8UC3;
        case pf::Bgr16:
            return CV_16UC3;
        default:
            return -1;
    }
}

// OpenCV's conversion code for a Bayer phase, or -1.
int bayerToGreyCode(int phase) {
    switch (phase) {
        case pf::PhaseRG:
            return cv::COLOR_BayerRG2GRAY;
        case pf::PhaseGR:
            return cv::COLOR_BayerGR2GRAY;
        case pf::PhaseGB:
            return cv::COLOR_BayerGB2GRAY;
        case pf::PhaseBG:
            return cv::COLOR_BayerBG2GRAY;
        default:
            return -1;
    }
}
}  // namespace

bool isMosaicLayout(int layout) {
    return layout == pf::Bayer8 || layout == pf::Bayer16 || layout == pf::Bayer16B ||
           layout == pf::Bayer16C;
}

int bytesPerPixel(int format) {
    const int type = matrixType(format & pf::LayoutMask);
    return type < 0 ? 0 : static_cast<int>(CV_ELEM_SIZE(type));
}

void prepareRegion(unsigned char* image, int width, int height, int format, cv::Mat& out) {
    out.release();
    const int layout = format & pf::LayoutMask;
    const int type = matrixType(layout);
    if (type < 0 || image == nullptr || width <= 0 || height <= 0 ||
        static_cast<std::int64_t>(width) * height > std::numeric_limits<std::int32_t>::max()) {
        return;
    }
    cv::Mat wrapped(height, width, type, image);
    if (!isMosaicLayout(layout)) {
        out = wrapped;
        return;
    }
    const int code = bayerToGreyCode(format & pf::PhaseMask);
    if (code >= 0) {
        cv::cvtColor(wrapped, out, code);
    }
}

}  // namespace sfr
}  // namespace talonvireo
