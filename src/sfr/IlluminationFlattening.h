// Illumination that falls across a region tilts both plateaus of its edge spread, and the
// tilt leaks into the low frequencies of the SFR (about +0.03 at Nyquist/4 where a lens's
// fall-off halves the light at the frame corners). Light multiplies both sides alike, so one
// relative plane fitted to the dark and the light side clear of the edge, divided out, gives
// the region the edge would have under even light.
#pragma once

#include <opencv2/core.hpp>

namespace talonvireo {
namespace sfr {

// `region`: one channel, CV_8U or CV_16U. The edge runs through `point` (region pixels) along
// the unit `direction`; samples within `clearance` px of it are left out of the fit. Returns
// the flattened region as CV_16U (8-bit levels scaled by 256 so that the division does not
// round them back to whole levels; a 16-bit region scaled down only if it would overflow), or
// the region as it stands, widened to CV_16U, when either side has too few samples for a
// plane. The SFR does not depend on the scale.
cv::Mat flattenIllumination(const cv::Mat& region, cv::Point2d point, cv::Point2d direction,
                            double clearance);

}  // namespace sfr
}  // namespace talonvireo
