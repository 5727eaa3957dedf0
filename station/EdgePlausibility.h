// Whether a measured edge can be trusted, whatever it reads: clipped, found off the chart
// design, an SFR above 1 beyond what noise explains, too little contrast, too much noise.
// Each test has its threshold here, with the renders that justify it; a flagged edge fails
// a graded frame.
#pragma once

#include "station/EdgeReport.h"

namespace talonvireo {
namespace station {

// Share of an edge's transition-zone raw samples at or above the white level beyond which it
// is "clipped". Rendered HLX6C frames (10 bits, read noise 1.5, sigma 0.9 and 2.5): with the
// light side at 95 % of full scale no sample clips; at exactly full scale noise peaks clip
// 0.1 to 7.7 % of the zone and the SFR at Nyquist/4 moves by 0.01 at most; once the light side
// passes full scale (1.006x) 6 to 18 % clip, and the error grows with the exposure: +0.01 to
// +0.025 at 1.02x to 1.04x, +0.03 to +0.07 at 1.05x, +0.09 to +0.26 at 1.3x, up to +0.6 at 4x.
// The limit sits where the light plateau itself reaches white.
inline constexpr double kClippedShareLimit = 0.05;

// Distance (px) of a centre from the fitted chart design beyond which the edge is "off the
// design". Rendered 4000 x 3000 HLX6C frames: the right chart shifted by 60 px and turned by
// 1 degree leaves at most 1.7 px, scaled by 3 % 3.9 px, under a perspective of 5e-6 per pixel
// 8.6 px and of 1e-5 per pixel (its far side 4 % smaller, which a similarity cannot follow)
// 16 to 22 px. A flat patch painted over an edge moves the centre found 28 to 41 px.
inline constexpr double kDesignDistanceLimitPx = 25.0;

// Located centres that must agree on one shift of the design (MemberFrameReport::
// designConsensus) for a chart whose fit fails to count as the right chart misplaced rather
// than another chart. Rendered frames: the right chart shifted by 150 to 250 px, which misleads
// the search into a few wrong squares, keeps 36 to 48 of 52 in agreement; every wrong chart
// that a member still "locates" agrees on 4 at most.
inline constexpr int kConsensusOfAFoundChart = 10;

// Light/dark ratio below which an edge is "low contrast". The renders here are 6.8:1; charts
// are printed 4:1 or more and a sensor's black level takes a little off that. Below 2:1 flare,
// a veil or a patch has washed the edge out (the SFR itself refuses below 1.5:1, 20 %
// modulation).
inline constexpr double kMinContrast = 2.0;

// (light - dark) / noise below which an edge is "noisy". Rendered 80 px regions: the SFR
// scatters between frames by 0.44 / SNR at Nyquist/4 and 0.9 / SNR at Nyquist/2 (standard
// deviation), so at an SNR of 20 by 0.022 and 0.045: more than a test line's limits allow.
inline constexpr double kMinSnr = 20.0;

// An SFR above 1 at Nyquist/4 or /2 is impossible for a lens. Noise lifts it by up to 3
// standard deviations, 3 x kSfrNoisePerSnr / SNR (the Nyquist/2 scatter above, the larger), and
// the Malvar demosaic's 5 x 5 kernels sharpen a neutral edge by up to kSfrExcessMargin; beyond
// both it is "SFR above 1".
inline constexpr double kSfrNoisePerSnr = 0.9;
inline constexpr double kSfrExcessMargin = 0.03;

// A chart measured as such may be a low-contrast chart by design (2:1 is a common one, and
// reads 1.9 to 2 with the sensor's black level), so there only an edge below this is flagged:
// a patch or a veil reads lower still, down to the SFR's own refusal at 1.5:1.
inline constexpr double kMinChartContrast = 1.8;

struct PlausibilityOptions {
    bool acceptClipped = false;  // clipping is reported and warned, not flagged
    double minContrast = kMinContrast;
};

// Flags every measured row of `report` and adds the frame's warnings (clipping, edges off
// the design).
void flagImplausibleEdges(FrameReport& report, const PlausibilityOptions& options);

}  // namespace station
}  // namespace talonvireo
