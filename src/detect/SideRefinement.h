// Sub-pixel line of one side of a quad.
//
// The side is crossed by short profiles along the pixel columns (a side nearer horizontal)
// or rows (nearer vertical), so every sample is a whole pixel and nothing is interpolated.
// The dark and light levels of each profile are read at its ends and smoothed along the
// side by a straight-line fit, so that their noise does not enter each profile's position.
//
// A first pass, on profiles long enough for the coarse line's error and the widest blur,
// places each edge where a sharp step with those levels would hold the same sum (the sum of
// a blurred edge is its integral whatever the phase of the pixels, and has one answer
// however noisy the profile) and measures the edge's 10-90 % rise. A second pass, on
// profiles recentred on the first line and only as long as the rise needs, places each edge
// at its 50 % level by a straight-line fit to the samples within 0.4 rise of it: a short
// window keeps out most noise and most of the bias that illumination falling across the
// profile gives the level read at its ends. Each pass fits a least-squares line through its
// positions, away from the corners and with outliers dropped.
#pragma once

#include <opencv2/core.hpp>

#include "detect/EdgeLine.h"

namespace talonvireo {
namespace detect {

struct SideSearch {
    cv::Point2d from;  // predicted ends of the side, frame pixels
    cv::Point2d to;
    cv::Point2d outward;  // unit normal pointing out of the quad
    int polarity = 1;     // +1 dark inside, -1 light inside
    int halfWidth = 18;   // first-pass profile half-length across the side, pixels
};

struct SideFit {
    // The chord of the side: for a straight side its line, for a bowed one the line through
    // the fitted curve's points level with the side's ends.
    EdgeLine line;
    cv::Point2d midpoint;    // the fitted curve's point halfway along the side
    double bow = 0.0;        // midpoint's distance from the chord, px, positive outward
    double curvature = 0.0;  // sagitta over a half-length u is curvature u^2 (1/px; 0 straight)
    int profiles = 0;        // positions kept in the final fit
    double rms = 0.0;        // their residual, pixels
    double rise = 0.0;       // median 10-90 % rise along the profiles, pixels
};

constexpr int kMinProfiles = 6;

// False when fewer than kMinProfiles profiles show the expected step. grey: CV_8U or CV_16U.
bool refineSide(const cv::Mat& grey, const SideSearch& search, SideFit& fit);

}  // namespace detect
}  // namespace talonvireo
