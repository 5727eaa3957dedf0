#include "locate/SFRLocate_LX.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <opencv2/imgproc.hpp>

#include "locate/IntConversion.h"

namespace RegularSFR {

namespace {

const cv::Point2f kMarkReference(talonvireo::locate::kMarkReferenceX,
                                 talonvireo::locate::kMarkReferenceY);

}  // namespace

void SFRLocate_LX::locate() {
    locateLayout(*this, talonvireo::locate::kLxRows, talonvireo::locate::kLxQuadReference);
    searchMarks(kMarkReference);
}

void SFRLocate_LX2::locate() {
    locateLayout(*this, talonvireo::locate::kLx2Rows, talonvireo::locate::kLxQuadReference);
    searchMarks(kMarkReference);
}

void SFRLocate_LX::searchMarks(cv::Point2f reference) {
    const int cols = sourceImage.cols;
    const int rows = sourceImage.rows;
    const cv::Rect centralHalf(cols / 2 - cols / 4, rows / 2 - rows / 4, cols / 2, rows / 2);
    const cv::Mat central = sourceImage(centralHalf).clone();

    // Otsu's level, inverted: the dark marks become the foreground.
    cv::Mat marks;
    cv::threshold(central, marks, 255.0, 255.0, cv::THRESH_BINARY_INV | cv::THRESH_OTSU);
    std::vector<std::vector<cv::Point>> contours;
    std::vector<cv::Vec4i> hierarchy;
    cv::findContours(marks, contours, hierarchy, cv::RETR_CCOMP, cv::CHAIN_APPROX_SIMPLE,
                     centralHalf.tl());

    // Blob centres by distance from the reference, nearest first.
    std::vector<std::pair<double, std::size_t>> byDistance;
    std::vector<cv::Point2f> centres(contours.size());
    byDistance.reserve(contours.size());
    for (std::size_t c = 0; c < contours.size(); ++c) {
        centres[c] = cv::minAreaRect(contours[c]).center;
        const float dx = centres[c].x - reference.x;
        const float dy = centres[c].y - reference.y;
        byDistance.emplace_back(
            std::sqrt(static_cast<double>(dx) * dx + static_cast<double>(dy) * dy), c);
    }
    std::stable_sort(byDistance.begin(), byDistance.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });

    const int minArea = squareInt32(markSearchSize);
    std::vector<cv::Point2f> found;
    for (const auto& entry : byDistance) {
        if (found.size() == 2) {
            break;
        }
        if (cv::contourArea(contours[entry.second], false) > minArea) {
            found.push_back(centres[entry.second]);
        }
    }
    if (found.size() != 2) {
        throw cv::Exception();
    }
    const float shiftX = (found[0].x + found[1].x) * 0.5f - reference.x;
    const float shiftY = (found[0].y + found[1].y) * 0.5f - reference.y;
    perspective.create(3, 3, CV_64FC1);
    perspective = 0.0;
    double* m = perspective.ptr<double>();
    m[0] = 1.0;
    m[2] = shiftX;
    m[4] = 1.0;
    m[5] = shiftY;
    m[8] = 1.0;
}

}  // namespace RegularSFR
