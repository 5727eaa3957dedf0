// Refining the edge line against the edge's own profile, from every sample at once.
//
// Row centroids place the line well, but each row sees the edge at one phase and the error
// of a row does not average out when the phases bunch. Here the line is moved so that the
// samples agree best with the smoothed edge profile built from them (Gauss-Newton on the
// intercept and slope, the profile held fixed within a step). Every sample near the edge
// weighs in by the profile's slope at its position, whatever the shape of the spread.
#pragma once

#include <vector>

#include "sfr/EdgeFrame.h"
#include "sfr/EdgeSamples.h"
#include "sfr/LocalLinearProfile.h"

namespace talonvireo {
namespace sfr {

// Value and slope of a profile at distance d (cubic Hermite between output points; zero
// slope and the end level outside).
struct ProfilePoint {
    double level = 0.0;
    double slope = 0.0;
};
ProfilePoint profileAt(const LocalLinearProfile& profile, double d);

// One Gauss-Newton step of the line against `profile` over samples within +-range of the
// edge, each sample counted with the weight of its row. Returns the frame unchanged when the step
// is not defined.
EdgeFrame refineEdgeLine(const EdgeSamples& samples, const std::vector<double>& rowWeight,
                         const EdgeFrame& frame, const LocalLinearProfile& profile, double range);

}  // namespace sfr
}  // namespace talonvireo
