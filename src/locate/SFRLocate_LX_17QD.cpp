#include "locate/SFRLocate_LX_17QD.h"

namespace RegularSFR {

void SFRLocate_LX_17QD::locate() {
    locateLayout(*this, talonvireo::locate::kLx17qdRows, talonvireo::locate::kQuadReference);
}

void SFRLocate_LX_17QD2::locate() {
    locateLayout(*this, talonvireo::locate::kLx17qd2Rows, talonvireo::locate::kQuadReference);
}

}  // namespace RegularSFR
