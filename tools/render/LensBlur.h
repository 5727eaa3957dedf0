// The blur of a lens as its radially symmetric transfer function (MTF), for edges whose line
// spread has the long tails real lenses give.
//
// The transfer is a product of the factors that are switched on:
//  - diffraction by a circular pupil: 2/pi (phi - cos phi sin phi), phi = arccos(f / fc), with
//    the cut-off fc = pitch / (wavelength * f-number) in cycles per pixel. Its line spread
//    falls off as the inverse square of the distance;
//  - geometric defocus, a uniform blur disk of the given diameter: 2 J1(pi D f) / (pi D f),
//    which goes negative past its first zero;
//  - a Gaussian of standard deviation sigma (an aberration core, or the plain Gaussian blur);
//  - a skirt: a share of the light spread into a wide halo whose line spread is a Cauchy
//    (Lorentzian) profile of the given half width at half maximum: (1 - s) + s exp(-2 pi w f).
// Frequencies are in cycles per pixel; the transfer is that of the optics alone, before the
// pixel's own aperture.
#pragma once

#include <string>

namespace talonvireo {
namespace render {

struct LensBlur {
    double fNumber = 0.0;          // diffraction when > 0
    double wavelengthUm = 0.55;    // of the light, micrometres
    double pixelPitchUm = 4.345;   // of the sensor, micrometres
    double defocusDiameter = 0.0;  // blur disk, pixels; none when 0
    double sigma = 0.0;            // Gaussian factor, pixels; none when 0
    double skirtShare = 0.0;       // share of the light in the halo, 0..1
    double skirtWidth = 0.0;       // the halo's half width at half maximum, pixels

    // Diffraction cut-off in cycles per pixel (infinite without diffraction).
    double diffractionCutoff() const;
    // The transfer at f >= 0 cycles per pixel.
    double mtf(double f) const;
    // A frequency above which the transfer is zero or below 1e-16, cycles per pixel. Throws
    // std::invalid_argument when no factor bounds it (defocus or a skirt alone).
    double band() const;
    // A short description ("f/4 0.537um", "f/4 0.537um + defocus 6px", ...).
    std::string describe() const;
};

// The named lenses of the tests and the accuracy sweep.
LensBlur gaussianBlur(double sigma);
LensBlur diffractionLimited(double fNumber, double wavelengthUm = 0.537,
                            double pixelPitchUm = 4.345);
// Diffraction at fNumber combined with a geometric blur disk of `diameter` pixels.
LensBlur defocused(double fNumber, double diameter, double wavelengthUm = 0.537,
                   double pixelPitchUm = 4.345);
// A Gaussian core of `sigma` with `share` of the light in a halo of half width `width`.
LensBlur skirted(double sigma, double share, double width);

// Validates every parameter; throws std::invalid_argument naming the bad one.
void checkLens(const LensBlur& lens);

}  // namespace render
}  // namespace talonvireo
