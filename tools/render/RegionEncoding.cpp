#include "render/RegionEncoding.h"

#include <cstring>
#include <stdexcept>

#include "talonvireo/PixelFormat.h"

namespace talonvireo {
namespace render {

namespace pf = talonvireo::PixelFormat;

cv::Mat quantise8(const cv::Mat& levels) {
    cv::Mat out;
    levels.convertTo(out, CV_8U);  // saturate_cast: round to nearest, clamp
    return out;
}

cv::Mat quantise16(const cv::Mat& levels, double scale) {
    cv::Mat out;
    levels.convertTo(out, CV_16U, scale);
    return out;
}

int formatMatrixType(int format) {
    switch (format & pf::LayoutMask) {
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

std::vector<unsigned char> encodeRegion(const cv::Mat& grey, int format) {
    if (grey.channels() != 1 || (grey.depth() != CV_8U && grey.depth() != CV_16U)) {
        throw std::invalid_argument("encodeRegion takes one 8- or 16-bit channel");
    }
    const int type = formatMatrixType(format);
    if (type < 0) {
        throw std::invalid_argument("unknown pixel format");
    }
    const int channels = CV_MAT_CN(type);
    if (grey.depth() != CV_MAT_DEPTH(type)) {
        throw std::invalid_argument("sample depth does not match the pixel format");
    }
    cv::Mat packed;
    if (channels == 3) {
        cv::merge(std::vector<cv::Mat>{grey, grey, grey}, packed);
    } else {
        packed = grey.isContinuous() ? grey : grey.clone();
    }
    std::vector<unsigned char> bytes(packed.total() * packed.elemSize());
    std::memcpy(bytes.data(), packed.data, bytes.size());
    return bytes;
}

}  // namespace render
}  // namespace talonvireo
