// Corner detection in one search region round a projected chart corner: Shi-Tomasi corners,
// kept when they sit on a large dark blob and their light side faces the quadrant the chart
// says, the one nearest the projection refined to sub-pixel and rounded.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

namespace RegularSFR {

class CornerCandidateFinder {
public:
    // Copies the region and detects its corners at once. `size` is the locator's (scaled)
    // markSearchSize, the length scale of the chart marks.
    CornerCandidateFinder(const cv::Mat& region, int size);

    // Fills detectedCorners; a default cv::Exception for an empty region.
    void detect();

    // Corners on a large dark blob, refined to sub-pixel and rounded, whose refined pixel is
    // still a corner above the quality level and whose light side faces the quadrant of
    // `kind` (no corner for a kind outside 0..3), in detection order. A default
    // cv::Exception when nothing was detected.
    std::vector<cv::Point> findCandidates(int kind);

    // The candidate nearest `hint` (city-block; the earlier wins a tie), refined and rounded
    // to whole pixels. A hint with a coordinate <= 0 is replaced by the region centre. A
    // default cv::Exception when there is no candidate.
    cv::Point2f refineCorner(int kind, cv::Point& hint);

    cv::Mat image;
    int size = 0;
    // Shi-Tomasi corners, strongest first, at whole pixels.
    std::vector<cv::Point2f> detectedCorners;

private:
    // Finds the dark blobs, refines the corners on them and keeps the strong ones; done once,
    // by the first findCandidates.
    void sortCorners();

    cv::Mat eig;  // minimum eigenvalue image of the region
    double minEig = 0.0;
    std::vector<cv::Point> kept;  // refined corners on dark blobs, detection order
    cv::Mat bordered;             // the closed light mask, its border replicated by the ring
    bool sorted = false;
};

}  // namespace RegularSFR
