// The true SFR of a rendered edge.
#pragma once

namespace talonvireo {
namespace render {

// SFR at f cycles per pixel (measured along the edge normal) of a step blurred by a Gaussian
// of standard deviation sigma and integrated over square pixels, the edge at angleDeg from
// the pixel grid: exp(-2 pi^2 sigma^2 f^2) sinc(f cos a) sinc(f sin a).
double trueSfr(double f, double sigma, double angleDeg);

// Frequency where trueSfr falls to 0.5.
double trueMtf50(double sigma, double angleDeg);

}  // namespace render
}  // namespace talonvireo
