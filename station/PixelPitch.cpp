#include "station/PixelPitch.h"

#include <cmath>
#include <cstdlib>

#include "station/Failure.h"

namespace talonvireo {
namespace station {

double parsePixelPitch(const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    const std::string unit = end != nullptr ? std::string(end) : std::string();
    double um = std::nan("");
    // Both micros: the Greek small mu (U+03BC) and the micro sign (U+00B5) look alike, and
    // people type either.
    if (unit == "um" || unit == "\u00b5m" || unit == "\u03bcm") {
        um = value;
    } else if (unit == "nm") {
        um = value / 1000.0;
    } else if (unit == "mm") {
        um = value * 1000.0;
    } else {
        throw Failure(Cause::BadInput,
                      "--pixel-pitch takes a length with its unit, such as 1.12um, 1120nm or "
                      "0.00112mm, not '" +
                          text + "'");
    }
    if (!(um >= 0.1 && um <= 100.0)) {
        throw Failure(Cause::BadInput, "--pixel-pitch must be 0.1 to 100 um, not '" + text + "'");
    }
    return um;
}

}  // namespace station
}  // namespace talonvireo
