// The members' road from raw words to 8-bit grey: unpack to one byte per sample, then
// demosaic by one of the two roads. Shared by the members and the exported road.
#pragma once

#include <opencv2/core.hpp>

#include "convert/Demosaic.h"
#include "convert/ImageTransform.h"
#include "convert/RawUnpack.h"

namespace talonvireo {
namespace api {

enum class GreyRoad {
    kImageTransform,  // ImageTransform's mosaic-to-grey operation, mode 0
    kDemosaic17,      // demosaicToGrey at pixel format 17 (8-bit mosaic)
};

inline constexpr int kPixelFormatMosaic8 = 17;

// `raw` is CV_16UC1 (Bayer R G); returns the CV_8UC1 grey image of its size. Throws only
// what OpenCV's allocation throws.
inline cv::Mat reduceToGrey(const convert::RawConverter& unpack, GreyRoad road,
                            const cv::Mat& raw) {
    cv::Mat mosaic(raw.rows, raw.cols, CV_8UC1);
    unpack(raw.ptr<unsigned short>(), mosaic.data, raw.size());
    cv::Mat grey(raw.rows, raw.cols, CV_8UC1);
    // The conversion's own status is not looked at: grey holds whatever it wrote.
    if (road == GreyRoad::kDemosaic17) {
        convert::demosaicToGrey(mosaic.data, raw.cols, raw.rows, kPixelFormatMosaic8, grey.data);
    } else {
        libs::TalonUtil::ImageTransform transform;
        transform.mosaicToGrey(mosaic.data, grey.data, raw.cols, raw.rows, 0);
    }
    return grey;
}

}  // namespace api
}  // namespace talonvireo
