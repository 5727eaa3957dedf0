// What a measured edge region shows besides its SFR: its two plateaus, their noise, and where
// its transition lies, read off the classic pass that measured it.
#pragma once

#include <limits>

#include <opencv2/core.hpp>

#include "sfr/SfrContext.h"

namespace talonvireo {
namespace sfr {

struct EdgeQuality {
    static constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    double darkLevel = kNaN;   // mean level of the dark side, clear of the transition
    double lightLevel = kNaN;  // the same for the light side
    // Standard deviation of the plateaus about their means, with the quantisation step's
    // own (1/12 of a level squared) so that a noise-free region still reads a finite SNR.
    double noise = kNaN;
    // Half-width (px along the edge normal) of the transition zone: the 10-90 % rise of the
    // edge spread on each side of the edge line, and one pixel more.
    double transitionHalfWidth = kNaN;
    // Signed distance from the edge line of region pixel (x, y): a x + b y + c.
    double a = 0.0, b = 0.0, c = 0.0;
    double distance(double x, double y) const { return a * x + b * y + c; }
};

// Reads channel 0 of `ctx` (after a successful core run on `region`, a one-channel region of
// any depth; levels are in its units).
EdgeQuality edgeQuality(const SfrContext& ctx, const cv::Mat& region);

// The same figures about a known edge line: through `point` (region pixels) along the unit
// `direction`, its transition zone `transitionHalfWidth` px either side.
EdgeQuality edgeQualityAbout(const cv::Mat& region, cv::Point2d point, cv::Point2d direction,
                             double transitionHalfWidth);

// Counts the samples of `raw` (CV_16UC1, the raw words under the region, same size) inside
// the transition zone, and those of them at or above `whiteLevel`.
void countClipped(const cv::Mat& raw, const EdgeQuality& quality, double whiteLevel, long& zone,
                  long& clipped);

}  // namespace sfr
}  // namespace talonvireo
