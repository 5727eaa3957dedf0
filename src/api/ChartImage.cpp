#include "api/ChartImage.h"

#include <cstdint>

#include <opencv2/imgproc.hpp>

#include "sfr/RegionPreparation.h"
#include "talonvireo/PixelFormat.h"

namespace talonvireo {
namespace api {

namespace pf = PixelFormat;

bool chartImageOf(const unsigned char* image, int width, int height, int format, int bits,
                  GreyRoad road, int whiteLevel, ChartImage& out) {
    if (image == nullptr || width <= 0 || height <= 0 ||
        static_cast<std::int64_t>(width) * height > INT32_MAX || whiteLevel < 0 ||
        !(bits == 0 || (bits >= 8 && bits <= 16))) {
        return false;
    }
    const int layout = format & pf::LayoutMask;
    const int phase = format & pf::PhaseMask;
    const bool mosaic = sfr::isMosaicLayout(layout);
    if ((mosaic && phase == 0) || (!mosaic && phase != 0)) {
        return false;
    }
    const bool deep = layout == pf::Bayer16 || layout == pf::Bayer16B || layout == pf::Bayer16C ||
                      layout == pf::Grey16 || layout == pf::Bgr16;
    if (!deep && bits != 0 && bits != 8) {
        return false;
    }
    ChartImage c;
    cv::Mat prepared;
    sfr::prepareRegion(const_cast<unsigned char*>(image), width, height, format, prepared);
    if (prepared.empty()) {
        return false;
    }
    const int depthBits = deep ? (bits == 0 ? 16 : bits) : 8;
    c.whiteLevel = whiteLevel > 0 ? whiteLevel : (1 << depthBits) - 1;
    if (mosaic) {
        c.mosaicFormat = format;
        c.mosaic =
            cv::Mat(height, width, deep ? CV_16UC1 : CV_8UC1, const_cast<unsigned char*>(image));
        const bool road16 =
            deep && phase == pf::PhaseRG && (bits == 10 || bits == 14 || bits == 16);
        if (road16) {
            c.grey.create(height, width, CV_8UC1);
            if (rawFrameToGrey(reinterpret_cast<const std::uint16_t*>(image), width, height, bits,
                               road, c.grey.data) != 0) {
                return false;
            }
        } else {
            c.grey = prepared;
        }
        c.samples = c.mosaic;
    } else if (prepared.channels() == 3) {
        cv::cvtColor(prepared, c.grey, cv::COLOR_BGR2GRAY);
        c.samples = c.grey;
    } else {
        c.grey = prepared;
        c.samples = c.grey;
    }
    out = std::move(c);
    return true;
}

}  // namespace api
}  // namespace talonvireo
