// RegularSFRLocate::findEdgeCrossing: the centre of an edge that has one corner is where a
// ring round that corner leaves the corner's dark mark. The ring runs at full resolution.
#include <algorithm>
#include <climits>

#include <opencv2/imgproc.hpp>

#include "locate/IntConversion.h"
#include "locate/OtsuThreshold.h"
#include "locate/RegularSFRLocate.h"
#include "locate/SearchWindow.h"

namespace RegularSFR {

namespace {

constexpr int kRingMargin = 10;  // pixels of region beyond the ring

}  // namespace

bool RegularSFRLocate::findEdgeCrossing(ChartEdge& edge, int radius) {
    int r = radius == 0 ? markSearchSize : radius;
    if (r < 1) {
        return false;
    }
    if (scaled) {
        // markSearchSize was scaled (and truncated) by prepare; the ring is drawn full size.
        r = truncateToInt(r / scale);
    }
    if (edge.corner0 < 0 || static_cast<std::size_t>(edge.corner0) >= corners.size()) {
        return false;
    }
    const float cx = corners[edge.corner0].x;
    const float cy = corners[edge.corner0].y;
    const float reach = static_cast<float>(r) + kRingMargin;
    const cv::Rect region = clippedWindow(cx, cy, reach, sourceImage.size());
    const cv::Mat roi = sourceImage(region).clone();
    if (roi.empty()) {
        return false;
    }
    const cv::Point centre(truncateToInt(cx - region.x), truncateToInt(cy - region.y));
    if (centre.inside(cv::Rect(cv::Point(), roi.size())) && r > roi.cols + roi.rows) {
        return false;  // the whole region lies inside the ring: it crosses nothing
    }
    cv::Mat ring(roi.size(), CV_8UC1, cv::Scalar(0));
    cv::circle(ring, centre, r, cv::Scalar(1), 1, cv::LINE_8, 0);

    std::vector<unsigned char> samples;
    for (int y = 0; y < ring.rows; ++y) {
        const unsigned char* on = ring.ptr<unsigned char>(y);
        const unsigned char* grey = roi.ptr<unsigned char>(y);
        for (int x = 0; x < ring.cols; ++x) {
            if (on[x] != 0) {
                samples.push_back(grey[x]);
            }
        }
    }
    const int t = otsuThresholdBelowQuantile(samples, 0.5f);

    cv::Mat binary;
    cv::threshold(roi, binary, t, 1.0, cv::THRESH_BINARY_INV);
    std::vector<std::vector<cv::Point>> contours;
    std::vector<cv::Vec4i> hierarchy;
    cv::findContours(binary.clone(), contours, hierarchy, cv::RETR_CCOMP, cv::CHAIN_APPROX_SIMPLE,
                     cv::Point(0, 0));
    // The running best is kept truncated, so a later blob wins when its area exceeds the
    // earlier winner's whole part (10.4 beats 10.6).
    int bestArea = 0;
    int best = -1;
    for (std::size_t c = 0; c < contours.size(); ++c) {
        const double area = cv::contourArea(contours[c], false);
        if (area > bestArea) {
            bestArea = truncateToInt(area);
            best = static_cast<int>(c);
        }
    }
    if (best < 0) {
        return false;
    }
    cv::Mat filled(roi.size(), CV_8UC1, cv::Scalar(0));
    cv::drawContours(filled, contours, best, cv::Scalar::all(255), cv::FILLED, cv::LINE_8,
                     cv::noArray(), INT_MAX, cv::Point(0, 0));
    // Blob pixels with a non-blob 3 x 3 neighbour: the blob's inner boundary.
    cv::Mat boundary;
    cv::adaptiveThreshold(filled, boundary, 1.0, cv::ADAPTIVE_THRESH_MEAN_C, cv::THRESH_BINARY, 3,
                          0.0);
    // 2 where ring and boundary meet. cv::add rather than a matrix expression: crossings run
    // on several threads, and OpenCV's expressions share a lazily made operator table.
    cv::Mat crossing;
    cv::add(ring, boundary, crossing);

    std::vector<cv::Point> points;
    for (int y = 0; y < crossing.rows; ++y) {
        const unsigned char* v = crossing.ptr<unsigned char>(y);
        for (int x = 0; x < crossing.cols; ++x) {
            if (v[x] == 2) {
                points.emplace_back(x + region.x, y + region.y);
            }
        }
    }
    // Bottom first. Equal rows keep their scan order, as the small-range insertion sort of an
    // introsort leaves them.
    std::stable_sort(points.begin(), points.end(),
                     [](const cv::Point& a, const cv::Point& b) { return a.y > b.y; });
    if (points.size() < 2) {
        return false;
    }
    const cv::Point chosen = edge.edgeCode == 0 ? points.back() : points.front();
    edge.x = static_cast<float>(chosen.x);
    edge.y = static_cast<float>(chosen.y);
    edge.found = true;
    return true;
}

}  // namespace RegularSFR
