// The region measured round a found edge: an upright rectangle holding a straight-enough
// stretch of the edge about a given point, as wide across as its blur needs, and nothing of
// any other edge.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace api {

struct EdgeSegment {
    cv::Point2d from;
    cv::Point2d to;
};

struct EdgeRegionRequest {
    EdgeSegment edge;             // the edge's chord
    cv::Point2d centre;           // the point on the edge the region is centred on
    double rise = 2.0;            // 10-90 % rise across the edge, px
    double straightLength = 1e9;  // the centred part straight within 0.1 px, px
};

enum class RegionFit { kFitted, kTooShort, kOffFrame };

// Rows (or columns) of edge a fitted region holds at least, and at most either side of its
// centre: enough lines for the slanted-edge supersampling at any angle the finder measures,
// and no more than the figures need.
constexpr int kMinRegionHalfLength = 10;
constexpr int kMaxRegionHalfLength = 32;

// Fits the region; `others` are every other edge near it (the quad's own other sides
// included). kTooShort when no stretch of kMinRegionHalfLength keeps clear of them;
// kOffFrame when the region would leave `frame`.
RegionFit fitEdgeRegion(const EdgeRegionRequest& request, const std::vector<EdgeSegment>& others,
                        cv::Size frame, cv::Rect& region);

// Across half-width, px beyond the edge line, for an edge of the given rise: the line spread
// of a Gaussian blur of that rise spans +-1.6 rises to 1e-3 of its peak; with the level
// samples either side and the slanted edge's drift, three rises and six pixels.
int acrossHalfWidth(double rise);

}  // namespace api
}  // namespace talonvireo
