// Measuring rendered edges of known blur with each curve method and comparing with truth.
//
// Shared by the accuracy sweep tool (which makes the README's table) and the accuracy
// tests, so both read the same cases the same way.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "render/EdgeSpreadTable.h"
#include "talonvireo/SfrCurve.h"

namespace talonvireo {
namespace accuracy {

// One rendered edge: a near-vertical edge through the region's centre shifted by `offset`
// pixels across, dark 40 to light 200 in 8-bit levels, quantised to 8 bits, or to 14 or 16
// bits in 16-bit words (levels x 64 or x 256).
struct EdgeCase {
    int size = 100;      // square region
    double sigma = 0.8;  // Gaussian blur, when no lens is given
    // A lens's blur instead (borrowed; it must reach the region's corners), seen through a
    // square pixel aperture of side `aperture`.
    const render::EdgeSpreadTable* lens = nullptr;
    double aperture = 1.0;
    double angle = 5.0;  // degrees
    double offset = 0.0;
    double noise = 0.0;  // standard deviation in 8-bit levels
    // Poisson noise with one photon per step of the stored words (14 bits: 2560 to 12800).
    bool photonNoise = false;
    std::uint32_t seed = 1;
    int depth = 8;
};

enum class Method { Classic, NormalAxis, Precise };
const char* methodName(Method m);

// What one method read and how far it is from truth (frequencies across the edge; the
// classic axis is compared as it is reported).
struct Reading {
    int status = 0;
    double mtf50 = 0.0;
    double trueMtf50 = 0.0;
    double mtf50ErrorPercent = 0.0;  // 100 (measured - true) / true
    double sfrQuarterNyquist = 0.0;  // at 0.125 cycles per pixel
    double sfrHalfNyquist = 0.0;     // at 0.25
    double trueQuarterNyquist = 0.0;
    double trueHalfNyquist = 0.0;
    double edgeAngle = 0.0;    // as measured, degrees
    double kernelSigma = 0.0;  // precise method's regression kernel
};

Reading readEdge(const EdgeCase& c, Method method);

// Gains of the red, green and blue sites of a rendered raw mosaic.
struct ChannelGains {
    double red = 1.0;
    double green = 1.0;
    double blue = 1.0;
};

// The edge of `c` as a Bayer mosaic in the given phase (a PixelFormat phase), every site
// carrying its channel's gain times the level: CV_8U when c.depth is 8, else CV_16U with
// levels x 256.
cv::Mat renderRawMosaic(const EdgeCase& c, ChannelGains gains, int phase);

// The same edge as a Bayer mosaic in 16-bit words (PixelFormat::Bayer16 plus `phase`; or
// Bayer8 when c.depth is 8), every site carrying its channel's gain times the level, measured
// with the precise method and perChannelRaw: one reading per plane, R, Gr, Gb, B, each
// compared with the optical truth. `names` receives the plane names.
std::vector<Reading> readRawPlanes(const EdgeCase& c, ChannelGains gains, int phase,
                                   std::vector<std::string>* names = nullptr);

// A lens from text: "f/N" (diffraction at `wavelengthUm` on `pitchUm` pixels),
// "gauss:SIGMA", "defocus:DIAMETER" and "skirt:SHARE:WIDTH", joined by '+', e.g.
// "f/4+defocus:6" or "gauss:0.5+skirt:0.05:8". Throws std::invalid_argument naming the text.
render::LensBlur lensFromText(const std::string& text, double wavelengthUm = 0.537,
                              double pitchUm = 4.345);

// The simple-fraction angles where classic bins fill unevenly: atan of 1/5, 1/4, 1/3, 2/5,
// 1/2, 2/3, 3/4 in degrees.
std::vector<double> simpleFractionAngles();

}  // namespace accuracy
}  // namespace talonvireo
