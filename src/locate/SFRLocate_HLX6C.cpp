#include "locate/SFRLocate_HLX6C.h"

namespace RegularSFR {

void SFRLocate_HLX6C::locate() {
    locateLayout(*this, talonvireo::locate::kHlx6cRows, talonvireo::locate::kQuadReference);
}

void SFRLocate_HLX6C_2::locate() {
    locateLayout(*this, talonvireo::locate::kHlx6c2Rows, talonvireo::locate::kQuadReference);
}

}  // namespace RegularSFR
