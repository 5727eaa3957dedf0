// The abstract chart locator. A layout subclass describes where its corners lie on the chart
// and sets the chart-to-image mapping; the base turns that into refined corner positions and
// edge centres in full-resolution image pixels.
//
// One locator serves one image in one call, always in this order: construct on the image,
// setScale, assign markSearchSize, the layout's locate, prepare, getEdgeCenters. prepare
// rescales the perspective that locate computed, so it runs once and after locate.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "locate/ChartModel.h"

namespace RegularSFR {

class RegularSFRLocate {
public:
    // Shares `image` as the source and searches a deep copy of it.
    explicit RegularSFRLocate(const cv::Mat& image);
    // Shares `image` as the source and `downscaled` (cv::resize of image by the scale that
    // setScale will set, linear) as the work image, so that prepare does not downscale again:
    // for callers that run several locators on one frame. Neither is written.
    RegularSFRLocate(const cv::Mat& image, const cv::Mat& downscaled);

    // Slot 0: sets cornerSearchSize.
    virtual void initParams() = 0;
    // Slot 1: layout options (none of the layouts has any).
    virtual void initOptions() = 0;

    // Working downscale factor for the corner search; exactly 1.0 changes nothing.
    void setScale(double s);

    // Builds `corners` (one per row) and `edges` (one per edge index some row names, the
    // first two naming corners kept, renumbered densely in index order). Throws cv::Exception
    // (code 1) for a count below 1 or a null array, changing nothing.
    void initEdgeAndcorner(int count, const int* cornerX, const int* cornerY, const int* cornerKind,
                           const int* cornerEdge, const int* edgeCode);
    void initEdgeAndcorner(const ChartLayoutTable& table);

    // perspective = the mapping of the `from` points onto the `to` points. False, leaving it
    // unchanged, for a count below 1 or a null array; OpenCV throws for a count other than 4.
    bool computePerspective(int count, const int* fromX, const int* fromY, const int* toX,
                            const int* toY);

    // Downscales, refines the corners and computes the edge centres: 0, or -1 when a step
    // failed. Exceptions of the corner search pass through.
    int prepare();

    // Edge centres from the refined corners (two-corner edges) or ring crossings.
    bool computeEdgeCenters();

    // One point per edge (centres truncated toward zero), or nothing when there are no edges
    // or the first edge was not found. Only the first edge's flag is looked at.
    std::vector<cv::Point> getEdgeCenters();

    // Places every corner: search on workImage round its projection, then (when downscaled)
    // one full-resolution sub-pixel pass. False for a missing perspective, no corners or a
    // non-positive cornerSearchSize; exceptions when a corner cannot be placed.
    bool refineCorners();

    // Centre of a single-corner edge: where a ring of `radius` (markSearchSize when 0) round
    // its corner crosses the boundary of the corner's dark mark. False, the edge untouched,
    // when there is no such crossing pair.
    bool findEdgeCrossing(ChartEdge& edge, int radius);

    cv::Mat workImage;
    cv::Mat sourceImage;
    double scale = 1.0;
    bool scaled = false;
    bool workImageGiven = false;  // workImage came downscaled from the caller
    std::vector<ChartEdge> edges;
    std::vector<ChartCorner> corners;
    int cornerSearchSize = 0;
    int markSearchSize = 0;
    bool initialized = false;
    cv::Mat perspective;  // 3 x 3 CV_64F, chart to image

protected:
    // Index of the first earlier corner with the same chart point and kind, or i.
    std::size_t sameCornerBefore(std::size_t i) const;

    // One corner searched on workImage round its projection, in work-image pixels; throws
    // when it cannot be placed.
    cv::Point2f searchCorner(const ChartCorner& corner, int half) const;

    // Locators are locals of their concrete type, never deleted through the base.
    ~RegularSFRLocate() = default;
    RegularSFRLocate(const RegularSFRLocate&) = default;
    RegularSFRLocate& operator=(const RegularSFRLocate&) = default;
};

}  // namespace RegularSFR
