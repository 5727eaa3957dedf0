#include "locate/SFRLocate_LX_MAP.h"

namespace RegularSFR {

void SFRLocate_LX_MAP::locate() {
    locateLayout(*this, talonvireo::locate::kLxMapRows, talonvireo::locate::kQuadReference);
}

void SFRLocate_LX_MAP2::locate() {
    locateLayout(*this, talonvireo::locate::kLxMap2Rows, talonvireo::locate::kQuadReference);
}

}  // namespace RegularSFR
