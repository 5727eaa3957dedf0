// A global placement of the chart in the frame: scale, rotation and a mild perspective about
// the nominal chart centre, then a shift.
#pragma once

#include <opencv2/core.hpp>

namespace talonvireo {
namespace render {

struct ChartTransform {
    double shiftX = 0.0;  // pixels
    double shiftY = 0.0;
    double rotationDeg = 0.0;  // positive turns x toward +y
    double scale = 1.0;
    // Perspective terms: w = 1 + perspX (x - 2000) + perspY (y - 1500) in chart pixels; a
    // few 1e-6 per pixel is mild.
    double perspX = 0.0;
    double perspY = 0.0;

    // The 3 x 3 chart-to-image homography (CV_64F).
    cv::Matx33d homography() const;

    bool isSimilarity() const { return perspX == 0.0 && perspY == 0.0; }
};

cv::Point2d applyHomography(const cv::Matx33d& h, cv::Point2d p);

// Local linear scale of the homography at a chart point: sqrt(|det J|).
double localScale(const cv::Matx33d& h, cv::Point2d p);

}  // namespace render
}  // namespace talonvireo
