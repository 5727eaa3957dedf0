#include "locate/SFRLocate_LX.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <opencv2/imgproc.hpp>

#include "locate/IntConversion.h"

namespace RegularSFR {

namespace {

cv::Point2f markReference() {
    return {talonvireo::locate::kMarkReferenceX, talonvireo::locate::kMarkReferenceY};
}

}  // namespace

void SFRLocate_LX::locate() {
    locateLayout(*this, talonvireo::locate::kLxRows, talonvireo::locate::kLxQuadReference);
    searchMarks(markReference());
}

void SFRLocate_LX2::locate() {
    locateLayout(*this, talonvireo::locate::kLx2Rows, talonvireo::locate::kLxQuadReference);
    searchMarks(markReference());
}

void SFRLocate_LX::searchMarks(cv::Point2f reference) {
    if (memo != nullptr && memo->found && memo->reference == reference &&
        memo->markSearchSize == markSearchSize) {
        perspective = memo->perspective.clone();
        return;
    }
    const int cols = sourceImage.cols;
    const int rows = sourceImage.rows;
    const cv::Rect centralHalf(cols / 2 - cols / 4, rows / 2 - rows / 4, cols / 2, rows / 2);

    // Otsu's level, inverted: the dark marks become the foreground.
    cv::Mat marks;
    cv::threshold(sourceImage(centralHalf), marks, 255.0, 255.0,
                  cv::THRESH_BINARY_INV | cv::THRESH_OTSU);
    std::vector<std::vector<cv::Point>> contours;
    std::vector<cv::Vec4i> hierarchy;
    // Every outer and hole border, as the two-level retrieval gives them. The flat list is
    // the same set of borders without the hierarchy, which nothing here reads; building
    // that hierarchy costs seconds on a frame of noise (200 000 borders) instead of 0.15.
    cv::findContours(marks, contours, hierarchy, cv::RETR_LIST, cv::CHAIN_APPROX_SIMPLE,
                     centralHalf.tl());

    // Blob centres by distance from the reference, nearest first; the two nearest blobs
    // larger than the mark's square are the marks. Only those blobs are measured and
    // ordered: the walk over all blobs in distance order skips the others anyway, and a
    // frame of noise holds hundreds of thousands of tiny ones.
    const int minArea = squareInt32(markSearchSize);
    std::vector<std::pair<double, cv::Point2f>> byDistance;
    for (const std::vector<cv::Point>& contour : contours) {
        if (!(cv::contourArea(contour, false) > minArea)) {
            continue;
        }
        const cv::Point2f centre = cv::minAreaRect(contour).center;
        const float dx = centre.x - reference.x;
        const float dy = centre.y - reference.y;
        byDistance.emplace_back(
            std::sqrt(static_cast<double>(dx) * dx + static_cast<double>(dy) * dy), centre);
    }
    std::stable_sort(byDistance.begin(), byDistance.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<cv::Point2f> found;
    for (std::size_t i = 0; i < byDistance.size() && i < 2; ++i) {
        found.push_back(byDistance[i].second);
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
    if (memo != nullptr) {
        *memo = {true, reference, markSearchSize, perspective.clone()};
    }
}

}  // namespace RegularSFR
