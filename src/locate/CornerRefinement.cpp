// RegularSFRLocate::refineCorners: every chart corner searched round its projection in the
// (possibly downscaled) work image, then refined together on the full-resolution source.
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

bool RegularSFRLocate::refineCorners() {
    if (perspective.empty() || perspective.total() == 0 || corners.empty() ||
        cornerSearchSize <= 0 || !isHomography(perspective)) {
        return false;
    }
    const int half = cornerSearchSize / 2;
    std::vector<cv::Point2f> positions(corners.size());
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const ChartCorner& corner = corners[i];
        // Layouts list a corner once per edge it starts: the same chart point and kind give
        // the same window, hint and candidate, so an earlier result is reused.
        const std::size_t same = sameCornerBefore(i);
        if (same < i) {
            positions[i] = positions[same];
            continue;
        }
        const cv::Point2f p = projectChartPoint(perspective, corner.chartX, corner.chartY);
        const cv::Rect region = clippedWindow(p.x, p.y, static_cast<float>(half), workImage.size());
        // A window wholly outside the image fails OpenCV's region check: an exception.
        CornerCandidateFinder finder(workImage(region), markSearchSize);
        cv::Point hint(truncateToInt(p.x - region.x), truncateToInt(p.y - region.y));
        const cv::Point2f found = finder.refineCorner(corner.kind, hint);
        positions[i] = cv::Point2f(static_cast<float>(region.x) + found.x,
                                   static_cast<float>(region.y) + found.y);
    }
    if (scaled) {
        for (cv::Point2f& p : positions) {
            p = cv::Point2f(static_cast<float>(p.x / scale), static_cast<float>(p.y / scale));
        }
        const int window = truncateToInt(5.0 / scale);
        cv::cornerSubPix(sourceImage, positions, cv::Size(window, window), cv::Size(-1, -1),
                         subPixStop());
    }
    for (std::size_t i = 0; i < corners.size(); ++i) {
        corners[i].x = positions[i].x;
        corners[i].y = positions[i].y;
        corners[i].found = true;
    }
    return true;
}

}  // namespace RegularSFR
