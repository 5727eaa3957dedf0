// The chart-to-frame model (ChartRegistration.h) fitted to pairs of chart and frame points by
// damped Gauss-Newton steps: the eight terms of the homography, and k1 and k2 where the pairs
// can carry them. The distortion centre and its norm radius stay where the model has them.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "talonvireo/ChartRegistration.h"

namespace talonvireo {
namespace locate {

struct PointPair {
    ChartPoint chart;
    cv::Point2d frame;
};

// Which terms move; the others keep the values the model holds.
struct ModelTerms {
    bool perspective = true;  // the two projective terms; false keeps H affine
    bool k1 = true;
    bool k2 = false;
};

// Refines `model` from where it stands by at most `iterations` steps and returns the root mean
// square distance between the pairs' frame points and the model's image of their chart points,
// pixels. NaN, with the model untouched, for fewer than four pairs or a start that puts a chart
// point at or behind the horizon.
double refineRegistration(const std::vector<PointPair>& pairs, ModelTerms terms, int iterations,
                          ChartRegistration& model);

}  // namespace locate
}  // namespace talonvireo
