// Everything that decides a rendered frame of a chart description besides the description
// itself: the frame, the placement, the blur over the field, the look and the clutter.
#pragma once

#include <cstdint>

#include "render/FieldBlur.h"
#include "render/FocusField.h"
#include "render/RenderClutter.h"
#include "talonvireo/ChartRegistration.h"

namespace talonvireo {
namespace render {

struct DescriptionRenderSettings {
    int width = 4000;
    int height = 3000;
    // Chart -> frame. Its distortion centre and r0 should be the frame's, as
    // undistortedRegistration(width, height) sets them (settingsForFrame does).
    ChartRegistration placement;
    // Gaussian PSF in frame pixels: sigma(rho) = sigmaCentre + (sigmaCorner - sigmaCentre)
    // rho^2, rho of the frame point (FrameField).
    double sigmaCentre = 1.0;
    double sigmaCorner = 1.0;
    // Defocus over the field, off unless focus.on: that sigma is then the one at best focus.
    FocusSettings focus;
    // Levels, fractions of full scale: the ground and light shapes at `light`, dark shapes at
    // `dark` (0.2 / 0.8 is 4:1 contrast, 0.4 / 0.8 is 2:1).
    double dark = 0.12;
    double light = 0.80;
    // Illumination: times 1 - (1 - cornerLight) rho^2.
    double cornerLight = 1.0;
    // Noise in output units: readNoise at every level, shotNoise at full scale scaling with
    // the square root of the level.
    double readNoise = 0.0;
    double shotNoise = 0.0;
    std::uint32_t seed = 1;
    // 8: grey bytes (CV_8U); 10, 14, 16: words (CV_16U) of full scale 2^bits - 1.
    int bits = 8;
    // A mosaic of phase R G (rows R G R G ... / G B G B ...), each site times its gain.
    bool bayer = false;
    double gainRed = 1.0;
    double gainGreen = 1.0;
    double gainBlue = 1.0;
    RenderClutter clutter;
};

// Settings for a width x height frame with the placement undistortedRegistration gives.
DescriptionRenderSettings settingsForFrame(int width, int height);

// Throws std::invalid_argument naming the first bad setting: a size <= 0, a sigma <= 0, bits
// not 8/10/14/16, cornerLight <= 0 or > 1, levels outside 0 <= dark < light <= 1, negative
// noise, a gain <= 0, a placement r0 <= 0 or a distortion that folds over within the frame,
// clutter of no size or a polarity other than +-1, and with the focus model on a value not
// finite, a defocus gain < 0 or a pixel pitch <= 0.
void checkRenderSettings(const DescriptionRenderSettings& settings);

// The PSF's sigma over the frame's field, and at frame point (x, y), pixels (the isotropic
// one, FieldBlur::sigma).
FieldBlur fieldBlur(const DescriptionRenderSettings& settings);
double fieldSigma(const DescriptionRenderSettings& settings, double x, double y);

}  // namespace render
}  // namespace talonvireo
