// The corner measure of the corner search: OpenCV's cornerMinEigenVal with a 15 x 15 block
// and a 3 x 3 Sobel aperture, bit for bit, at a fraction of its cost.
//
// The gradients come from cv::Sobel itself, so they are OpenCV's whatever instruction set it
// dispatches to. The 15 x 15 sums of the gradient products are where OpenCV spends its time:
// it sums in double, first along each row (a running sum from the left border), then down
// the columns (a running sum from the top border). Those running sums round (the products
// range from 1e-22 to 1e-2), so they are reproduced in the very same order, each row's chain
// on its own and the columns across the row with vector lanes; only the order in which
// independent chains advance differs.
#pragma once

#include <opencv2/core.hpp>

namespace RegularSFR {

// eig = cornerMinEigenVal(image, 15, 3, BORDER_DEFAULT) for an 8-bit single-channel image;
// returns its largest value. Images narrower or lower than 8 pixels go to OpenCV itself.
double minEigenImage(const cv::Mat& image, cv::Mat& eig);

}  // namespace RegularSFR
