// What a whole-frame measurement of a rendered chart should report, entry by entry: the
// first layout's edges, then the second's, each at the slot its record gives it.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "render/ChartDesign.h"
#include "render/ChartTransform.h"

namespace talonvireo {
namespace render {

struct EntryTruth {
    cv::Point2d centre;  // expected edge centre, image pixels
    double angleDeg;     // the edge's angle from the nearer pixel axis
    double sfrQuarter;   // true SFR at Nyquist/4 (0.125 cycles per pixel)
    double sfrHalf;      // true SFR at Nyquist/2
};

// One entry per record slot, for a chart rendered with `transform` and blur `sigma`, and a
// measurement whose rings have radius `ringRadius` (markSearchSize). K31R22BX's records
// place their edges through the chart's documented slot tables.
std::vector<EntryTruth> recordTruth(ChartProject project, const ChartTransform& transform,
                                    double sigma, double ringRadius);

}  // namespace render
}  // namespace talonvireo
