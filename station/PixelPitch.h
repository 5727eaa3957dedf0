// Spatial frequencies in the units of a sensor: line pairs per mm and line widths per
// picture height, beside cycles per pixel.
#pragma once

#include <string>

namespace talonvireo {
namespace station {

// Parses "1.12um", "1.12µm" (micro sign or Greek mu), "1120nm" or "0.00112mm" into
// micrometres. Throws Failure (bad
// arguments) for a missing or unknown unit, or a pitch outside 0.1 .. 100 um.
double parsePixelPitch(const std::string& text);

// f cycles per pixel in line pairs per millimetre, for a pitch in micrometres.
inline double linePairsPerMm(double cyclesPerPixel, double pitchUm) {
    return cyclesPerPixel * 1000.0 / pitchUm;
}

// f cycles per pixel in line widths per picture height (two widths per cycle).
inline double lineWidthsPerHeight(double cyclesPerPixel, int heightPx) {
    return 2.0 * cyclesPerPixel * heightPx;
}

}  // namespace station
}  // namespace talonvireo
