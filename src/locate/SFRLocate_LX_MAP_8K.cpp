#include "locate/SFRLocate_LX_MAP_8K.h"

namespace RegularSFR {

void SFRLocate_LX_MAP_8K::locate() {
    locateLayout(*this, talonvireo::locate::kLxMapRows, talonvireo::locate::kQuadReference);
}

void SFRLocate_LX_MAP2_8K::locate() {
    locateLayout(*this, talonvireo::locate::kLxMap2Rows, talonvireo::locate::kQuadReference);
}

}  // namespace RegularSFR
