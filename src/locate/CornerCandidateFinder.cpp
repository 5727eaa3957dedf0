#include "locate/CornerCandidateFinder.h"

#include <array>
#include <climits>
#include <cstdlib>

#include <opencv2/imgproc.hpp>

#include "locate/IntConversion.h"
#include "locate/MinEigenImage.h"
#include "locate/ShiTomasiSelection.h"
#include "locate/SubPixStop.h"

namespace RegularSFR {

namespace {

// Shi-Tomasi settings. The quality level is a float constant widened to double
// (0.05000000074505806), which is what the minimum eigenvalue is compared against.
constexpr int kMaxCorners = 32;
constexpr double kQuality = static_cast<double>(0.05f);
constexpr int kSubPixHalfWindow = 15;

// Pixels at distance 7 to 7.81 on four mirrored quarter-arcs: the light pixels among them,
// weighted by their offsets, point to the light side of a corner.
struct RingOffset {
    int dx;
    int dy;
};
constexpr std::array<RingOffset, 44> kRing = {{
    {7, 1},   {7, 2},   {7, 3},   {6, 4},   {6, 5},   {5, 6},   {4, 6},   {3, 7},   {2, 7},
    {1, 7},   {-7, 1},  {-7, 2},  {-7, 3},  {-6, 4},  {-6, 5},  {-5, 6},  {-4, 6},  {-3, 7},
    {-2, 7},  {-1, 7},  {7, -1},  {7, -2},  {7, -3},  {6, -4},  {6, -5},  {5, -6},  {4, -6},
    {3, -7},  {2, -7},  {1, -7},  {-7, -1}, {-7, -2}, {-7, -3}, {-6, -4}, {-6, -5}, {-5, -6},
    {-4, -6}, {-3, -7}, {-2, -7}, {-1, -7}, {7, 0},   {0, 7},   {-7, 0},  {0, -7},
}};
constexpr int kRingReach = 7;

// A negative sign wants a strictly negative sum; a positive one accepts zero.
bool hasSign(int sum, int sign) {
    return sign < 0 ? sum < 0 : sum >= 0;
}

bool inside(const cv::Mat& m, cv::Point p) {
    return p.x >= 0 && p.y >= 0 && p.x < m.cols && p.y < m.rows;
}

}  // namespace

CornerCandidateFinder::CornerCandidateFinder(const cv::Mat& region, int size)
    : image(region.clone()), size(size) {
    detect();
}

void CornerCandidateFinder::detect() {
    if (image.empty()) {
        throw cv::Exception();
    }
    const double maxEig = minEigenImage(image, eig);
    minEig = maxEig * kQuality;
    // Shi-Tomasi corners (goodFeaturesToTrack, no mask, no Harris measure) selected on the
    // eigenvalue image just computed rather than computing it a second time.
    detectedCorners = selectShiTomasiCorners(eig, maxEig, kMaxCorners, kQuality, size * 0.25);
    kept.clear();
    sorted = false;
}

void CornerCandidateFinder::sortCorners() {
    cv::Mat dark;
    cv::threshold(image, dark, 255.0, 1.0, cv::THRESH_BINARY_INV | cv::THRESH_OTSU);

    // Light everywhere but on dark blobs of at least an eighth of the mark's square.
    // Filled directly rather than through a matrix expression: OpenCV's expressions share a
    // lazily made operator table that corner searches on several threads would race to read.
    cv::Mat light(image.size(), CV_8UC1, cv::Scalar(1));
    const int minArea = squareInt32(size) / 8;
    std::vector<std::vector<cv::Point>> contours;
    std::vector<cv::Vec4i> hierarchy;
    cv::findContours(dark.clone(), contours, hierarchy, cv::RETR_CCOMP, cv::CHAIN_APPROX_SIMPLE);
    for (std::size_t c = 0; c < contours.size(); ++c) {
        if (cv::contourArea(contours[c], false) >= minArea) {
            cv::drawContours(light, contours, static_cast<int>(c), cv::Scalar(0), cv::FILLED,
                             cv::LINE_8, cv::noArray(), INT_MAX, cv::Point());
        }
    }
    // A corner is only a chart corner where it was detected on a large dark blob, so only
    // those are refined: cornerSubPix moves every point on its own, and the others could
    // never become candidates whatever their refined position.
    std::vector<cv::Point2f> refined;
    for (const cv::Point2f& c : detectedCorners) {
        // cvRound rounds halves to even.
        const cv::Point p(cvRound(c.x), cvRound(c.y));
        if (inside(light, p) && light.at<unsigned char>(p) == 0) {
            refined.push_back(c);
        }
    }
    if (!refined.empty()) {
        cv::cornerSubPix(image, refined, cv::Size(kSubPixHalfWindow, kSubPixHalfWindow),
                         cv::Size(-1, -1), subPixStop());
    }
    // ... and kept where the refined pixel still holds a strong enough corner.
    for (const cv::Point2f& c : refined) {
        const cv::Point r(cvRound(c.x), cvRound(c.y));
        if (inside(image, r) && eig.at<float>(r) > minEig) {
            kept.push_back(r);
        }
    }
    cv::morphologyEx(light, light, cv::MORPH_CLOSE, cv::Mat());
    cv::copyMakeBorder(light, bordered, kRingReach, kRingReach, kRingReach, kRingReach,
                       cv::BORDER_REPLICATE);
    sorted = true;
}

std::vector<cv::Point> CornerCandidateFinder::findCandidates(int kind) {
    if (detectedCorners.empty()) {
        throw cv::Exception();
    }
    if (!sorted) {
        sortCorners();
    }
    std::vector<cv::Point> candidates;
    if (kind < 0 || kind > 3) {
        return candidates;
    }
    const int sx = kind >= 2 ? 1 : -1;
    const int sy = kind % 2 == 1 ? 1 : -1;
    for (const cv::Point& p : kept) {
        int sumX = 0;
        int sumY = 0;
        for (const RingOffset& o : kRing) {
            const int v =
                bordered.at<unsigned char>(p.y + kRingReach + o.dy, p.x + kRingReach + o.dx);
            sumX += o.dx * v;
            sumY += o.dy * v;
        }
        if ((sumX != 0 || sumY != 0) && hasSign(sumX, sx) && hasSign(sumY, sy)) {
            candidates.push_back(p);
        }
    }
    return candidates;
}

cv::Point2f CornerCandidateFinder::refineCorner(int kind, cv::Point& hint) {
    if (hint.x <= 0 || hint.y <= 0) {
        hint = cv::Point(image.cols / 2, image.rows / 2);
    }
    const std::vector<cv::Point> candidates = findCandidates(kind);
    if (candidates.empty()) {
        throw cv::Exception();
    }
    std::size_t best = 0;
    int bestDistance = INT_MAX;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        const int d = std::abs(candidates[i].x - hint.x) + std::abs(candidates[i].y - hint.y);
        if (d < bestDistance) {
            bestDistance = d;
            best = i;
        }
    }
    std::vector<cv::Point2f> point{cv::Point2f(candidates[best])};
    cv::cornerSubPix(image, point, cv::Size(kSubPixHalfWindow, kSubPixHalfWindow), cv::Size(-1, -1),
                     subPixStop());
    // Rounded on purpose: sub-pixel accuracy comes from the full-resolution pass.
    return {static_cast<float>(cvRound(point[0].x)), static_cast<float>(cvRound(point[0].y))};
}

}  // namespace RegularSFR
