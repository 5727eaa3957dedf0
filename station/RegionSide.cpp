#include "station/RegionSide.h"

#include <algorithm>

namespace talonvireo {
namespace station {

bool warnSmallRegion(int width, int height, std::FILE* out) {
    const int side = std::min(width, height);
    if (side >= kReliableRegionSide) {
        return false;
    }
    std::fprintf(out,
                 "warning: a region side of %d px is below %d px: the SFR of so small a region "
                 "is unreliable\n",
                 side, kReliableRegionSide);
    return true;
}

}  // namespace station
}  // namespace talonvireo
