#include "sfr/EdgeSamples.h"

#include <stdexcept>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace sfr {

namespace {
// The turn is made on the narrow samples, before they are widened to float.
cv::Mat uprightLevels(const cv::Mat& plane, bool rotated) {
    cv::Mat levels;
    if (rotated) {
        cv::Mat turned, flipped;
        cv::transpose(plane, turned);
        cv::flip(turned, flipped, 0);
        flipped.convertTo(levels, CV_32F);
    } else {
        plane.convertTo(levels, CV_32F);
    }
    return levels;
}
}  // namespace

EdgeSamples imageSamples(const cv::Mat& region, int channel, bool rotated) {
    if (channel < 0 || channel >= region.channels() ||
        (region.depth() != CV_8U && region.depth() != CV_16U)) {
        throw std::invalid_argument("samples need an 8- or 16-bit channel");
    }
    cv::Mat plane = region;
    if (region.channels() > 1) {
        cv::extractChannel(region, plane, channel);
    }
    EdgeSamples s;
    s.values = uprightLevels(plane, rotated);
    return s;
}

EdgeSamples planeSamples(const cv::Mat& mosaic, int ox, int oy, bool rotated) {
    if (mosaic.channels() != 1 || ox < 0 || ox > 1 || oy < 0 || oy > 1 || mosaic.cols < 2 ||
        mosaic.rows < 2) {
        throw std::invalid_argument("a plane needs a one-channel mosaic of 2 x 2 or more");
    }
    const cv::Mat levels = uprightLevels(mosaic, rotated);
    EdgeSamples s;
    s.pitch = 2;
    if (rotated) {
        // A quarter turn sends (column c, row r) to (column r, row cols - 1 - c).
        s.x0 = oy;
        s.y0 = (mosaic.cols - 1 - ox) % 2;
    } else {
        s.x0 = ox;
        s.y0 = oy;
    }
    const int rows = (levels.rows - s.y0 + 1) / 2;
    const int cols = (levels.cols - s.x0 + 1) / 2;
    s.values.create(rows, cols, CV_32F);
    for (int i = 0; i < rows; ++i) {
        const float* src = levels.ptr<float>(s.y0 + 2 * i);
        float* dst = s.values.ptr<float>(i);
        for (int j = 0; j < cols; ++j) {
            dst[j] = src[s.x0 + 2 * j];
        }
    }
    return s;
}

}  // namespace sfr
}  // namespace talonvireo
