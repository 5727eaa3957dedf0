// Status codes of the slanted-edge core.
#pragma once

namespace talonvireo {
namespace sfr {

enum SfrStatus : int {
    kSfrOk = 0,
    kSfrFailed = -1,       // bad input or a caught exception (entry points only)
    kSfrLowContrast = -2,  // edge contrast below 20 %, or a zero spectrum
    kSfrTooSteep = -3,     // |slope| of the fitted edge above 1.25 columns per row
    kSfrAligned = -4,      // fitted slope exactly 0: no phase diversity to oversample
};

}  // namespace sfr
}  // namespace talonvireo
