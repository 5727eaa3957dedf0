// RegularSFRLocate::refineCorners: every chart corner searched round its projection in the
// (possibly downscaled) work image, then refined together on the full-resolution source.
#include <exception>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "locate/ChartProjection.h"
#include "locate/CornerCandidateFinder.h"
#include "locate/IntConversion.h"
#include "locate/RegularSFRLocate.h"
#include "locate/SearchWindow.h"
#include "locate/SubPixStop.h"

namespace RegularSFR {

std::size_t RegularSFRLocate::sameCornerBefore(std::size_t i) const {
    for (std::size_t j = 0; j < i; ++j) {
        if (corners[j].chartX == corners[i].chartX && corners[j].chartY == corners[i].chartY &&
            corners[j].kind == corners[i].kind) {
            return j;
        }
    }
    return i;
}

cv::Point2f RegularSFRLocate::searchCorner(const ChartCorner& corner, int half) const {
    const cv::Point2f p = projectChartPoint(perspective, corner.chartX, corner.chartY);
    const cv::Rect region = clippedWindow(p.x, p.y, static_cast<float>(half), workImage.size());
    // A window wholly outside the image fails OpenCV's region check: an exception.
    CornerCandidateFinder finder(workImage(region), markSearchSize);
    cv::Point hint(truncateToInt(p.x - region.x), truncateToInt(p.y - region.y));
    const cv::Point2f found = finder.refineCorner(corner.kind, hint);
    return {static_cast<float>(region.x) + found.x, static_cast<float>(region.y) + found.y};
}

bool RegularSFRLocate::refineCorners() {
    if (perspective.empty() || perspective.total() == 0 || corners.empty() ||
        cornerSearchSize <= 0 || !isHomography(perspective)) {
        return false;
    }
    const int half = cornerSearchSize / 2;
    const std::size_t count = corners.size();
    std::vector<cv::Point2f> positions(count);
    // Layouts list a corner once per edge it starts: the same chart point and kind give the
    // same window, hint and candidate, so only the first of them is searched.
    std::vector<std::size_t> first(count);
    std::vector<int> searched;
    for (std::size_t i = 0; i < count; ++i) {
        first[i] = sameCornerBefore(i);
        if (first[i] == i) {
            searched.push_back(static_cast<int>(i));
        }
    }
    // The searches are independent: run them in parallel, keep what each throws, and let the
    // first failure in corner order through, as a one-by-one walk would.
    std::vector<std::exception_ptr> failures(count);
    const int searches = static_cast<int>(searched.size());
#pragma omp parallel for schedule(dynamic)
    for (int k = 0; k < searches; ++k) {
        const std::size_t i = static_cast<std::size_t>(searched[k]);
        try {
            positions[i] = searchCorner(corners[i], half);
        } catch (...) {
            failures[i] = std::current_exception();
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (failures[i]) {
            std::rethrow_exception(failures[i]);
        }
        positions[i] = positions[first[i]];
    }
    if (scaled) {
        for (cv::Point2f& p : positions) {
            p = cv::Point2f(static_cast<float>(p.x / scale), static_cast<float>(p.y / scale));
        }
        // cornerSubPix refines every point on its own: one call per point, in parallel, gives
        // what one call over all of them gives.
        const int window = truncateToInt(5.0 / scale);
        const int points = static_cast<int>(count);
#pragma omp parallel for schedule(static)
        for (int i = 0; i < points; ++i) {
            std::vector<cv::Point2f> one{positions[i]};
            cv::cornerSubPix(sourceImage, one, cv::Size(window, window), cv::Size(-1, -1),
                             subPixStop());
            positions[i] = one[0];
        }
    }
    for (std::size_t i = 0; i < corners.size(); ++i) {
        corners[i].x = positions[i].x;
        corners[i].y = positions[i].y;
        corners[i].found = true;
    }
    return true;
}

}  // namespace RegularSFR
