#include "sfr/BayerPlanes.h"

#include <stdexcept>

#include "talonvireo/PixelFormat.h"

namespace talonvireo {
namespace sfr {

std::array<PlaneSite, 4> bayerPlaneSites(int phase) {
    namespace pf = talonvireo::PixelFormat;
    // Columns and rows of R, Gr, Gb and B within the 2 x 2 cell.
    switch (phase) {
        case pf::PhaseRG:
            return {{{"R", 0, 0}, {"Gr", 1, 0}, {"Gb", 0, 1}, {"B", 1, 1}}};
        case pf::PhaseGR:
            return {{{"R", 1, 0}, {"Gr", 0, 0}, {"Gb", 1, 1}, {"B", 0, 1}}};
        case pf::PhaseGB:
            return {{{"R", 0, 1}, {"Gr", 1, 1}, {"Gb", 0, 0}, {"B", 1, 0}}};
        case pf::PhaseBG:
            return {{{"R", 1, 1}, {"Gr", 0, 1}, {"Gb", 1, 0}, {"B", 0, 0}}};
        default:
            throw std::invalid_argument("not a Bayer phase");
    }
}

}  // namespace sfr
}  // namespace talonvireo
