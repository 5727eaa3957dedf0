#include "render/LensBlur.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <stdexcept>

#include "render/Pi.h"

namespace talonvireo {
namespace render {

namespace {
// exp(-37) is below 1e-16.
constexpr double kNegligibleExponent = 37.0;

double pupilTransfer(double nu) {
    if (nu >= 1.0) {
        return 0.0;
    }
    const double phi = std::acos(nu);
    return 2.0 / kPi * (phi - std::cos(phi) * std::sin(phi));
}

double diskTransfer(double diameter, double f) {
    const double z = kPi * diameter * f;
    if (z < 1e-4) {
        return 1.0 - z * z / 8.0;
    }
    return 2.0 * std::cyl_bessel_j(1.0, z) / z;
}
}  // namespace

double LensBlur::diffractionCutoff() const {
    return fNumber > 0.0 ? pixelPitchUm / (wavelengthUm * fNumber)
                         : std::numeric_limits<double>::infinity();
}

double LensBlur::mtf(double f) const {
    f = std::fabs(f);
    double m = 1.0;
    if (fNumber > 0.0) {
        m *= pupilTransfer(f / diffractionCutoff());
    }
    if (defocusDiameter > 0.0) {
        m *= diskTransfer(defocusDiameter, f);
    }
    if (sigma > 0.0) {
        m *= std::exp(-2.0 * kPi * kPi * sigma * sigma * f * f);
    }
    if (skirtShare > 0.0) {
        m *= (1.0 - skirtShare) + skirtShare * std::exp(-2.0 * kPi * skirtWidth * f);
    }
    return m;
}

double LensBlur::band() const {
    double b = diffractionCutoff();
    if (sigma > 0.0) {
        b = std::min(b, std::sqrt(kNegligibleExponent / (2.0 * kPi * kPi)) / sigma);
    }
    if (!std::isfinite(b)) {
        throw std::invalid_argument("a lens needs diffraction or a Gaussian factor to bound it");
    }
    return b;
}

std::string LensBlur::describe() const {
    std::string out;
    char text[96];
    auto add = [&](const char* part) { out += out.empty() ? part : std::string(" + ") + part; };
    if (fNumber > 0.0) {
        std::snprintf(text, sizeof text, "f/%g %gum", fNumber, wavelengthUm);
        add(text);
    }
    if (defocusDiameter > 0.0) {
        std::snprintf(text, sizeof text, "defocus %gpx", defocusDiameter);
        add(text);
    }
    if (sigma > 0.0) {
        std::snprintf(text, sizeof text, "gaussian %gpx", sigma);
        add(text);
    }
    if (skirtShare > 0.0) {
        std::snprintf(text, sizeof text, "skirt %g%% %gpx", 100.0 * skirtShare, skirtWidth);
        add(text);
    }
    return out.empty() ? "none" : out;
}

LensBlur gaussianBlur(double sigma) {
    LensBlur lens;
    lens.sigma = sigma;
    return lens;
}

LensBlur diffractionLimited(double fNumber, double wavelengthUm, double pixelPitchUm) {
    LensBlur lens;
    lens.fNumber = fNumber;
    lens.wavelengthUm = wavelengthUm;
    lens.pixelPitchUm = pixelPitchUm;
    return lens;
}

LensBlur defocused(double fNumber, double diameter, double wavelengthUm, double pixelPitchUm) {
    LensBlur lens = diffractionLimited(fNumber, wavelengthUm, pixelPitchUm);
    lens.defocusDiameter = diameter;
    return lens;
}

LensBlur skirted(double sigma, double share, double width) {
    LensBlur lens = gaussianBlur(sigma);
    lens.skirtShare = share;
    lens.skirtWidth = width;
    return lens;
}

void checkLens(const LensBlur& lens) {
    auto require = [](bool ok, const char* what) {
        if (!ok) {
            throw std::invalid_argument(what);
        }
    };
    require(lens.fNumber >= 0.0 && std::isfinite(lens.fNumber), "f-number must be 0 or positive");
    require(lens.fNumber == 0.0 || (lens.wavelengthUm > 0.0 && lens.pixelPitchUm > 0.0),
            "wavelength and pixel pitch must be positive");
    require(lens.defocusDiameter >= 0.0 && std::isfinite(lens.defocusDiameter),
            "defocus diameter must be 0 or positive");
    require(lens.sigma >= 0.0 && std::isfinite(lens.sigma), "sigma must be 0 or positive");
    require(lens.skirtShare >= 0.0 && lens.skirtShare <= 1.0, "skirt share must lie in 0..1");
    require(lens.skirtShare == 0.0 || lens.skirtWidth > 0.0, "skirt width must be positive");
    lens.band();
}

}  // namespace render
}  // namespace talonvireo
