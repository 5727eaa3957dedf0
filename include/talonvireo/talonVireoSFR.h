// talonVireoSFR: slanted-edge SFR measurement for camera-module test lines.
//
// Umbrella header: declares the library's whole exported surface.
#pragma once

#include "talonvireo/Export.h"
#include "talonvireo/PixelFormat.h"
#include "talonvireo/RegionSfr.h"
