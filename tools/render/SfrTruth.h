// The true SFR of a rendered edge.
#pragma once

#include "render/LensBlur.h"

namespace talonvireo {
namespace render {

// SFR at f cycles per pixel (measured along the edge normal) of a step blurred by a Gaussian
// of standard deviation sigma and integrated over square pixels, the edge at angleDeg from
// the pixel grid: exp(-2 pi^2 sigma^2 f^2) sinc(f cos a) sinc(f sin a).
double trueSfr(double f, double sigma, double angleDeg);

// Frequency where trueSfr falls to 0.5.
double trueMtf50(double sigma, double angleDeg);

// SFR at f cycles per pixel (along the edge normal) of a step blurred by `lens` and
// integrated over a centred square pixel aperture of side `aperture`, the edge at angleDeg:
// lens.mtf(f) sinc(aperture f cos a) sinc(aperture f sin a).
double trueSfr(double f, const LensBlur& lens, double angleDeg, double aperture = 1.0);

// The lowest frequency where that SFR falls to `level` (0.5 for MTF50); NaN when it stays
// above it up to 2 cycles per pixel.
double trueFrequencyAtLevel(double level, const LensBlur& lens, double angleDeg,
                            double aperture = 1.0);

}  // namespace render
}  // namespace talonvireo
