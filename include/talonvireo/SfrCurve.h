// The whole SFR curve of a caller-cut slanted-edge region.
//
// TalonCalSFR reduces a region to a handful of figures; measureSfrCurve measures the region
// the same way (same preparation, same core, same refusals) and hands back everything the
// figures are read from, per channel: the frequency and SFR tables, the oversampled edge
// and line spread functions, the edge angle, MTF10/MTF30/MTF50 and the SFR at any list of
// frequencies.
#pragma once

#include <string>
#include <vector>

#include "talonvireo/Export.h"

namespace talonvireo {

/// How measureSfrCurve reports its frequency axis and which extra points it reads off.
struct SfrCurveOptions {
    /// Frequencies, cycles per pixel, at which to report the SFR (SfrChannelCurve::sfrAt).
    std::vector<double> frequencies;
    /// The edge profile is already projected onto the edge normal, yet the classic method
    /// divides its frequency axis by cos(angle) once more, so at angle a the figure shown at
    /// f is the SFR at f cos(a): 6 % low in frequency at 20 degrees, 23 % at 40. true reports
    /// the axis as projected (frequencies across the edge, not divided again); false keeps
    /// the classic axis, on which TalonCalSFR's figures are read.
    bool normalFrequencyAxis = false;
};

/// One channel of a measured region.
struct SfrChannelCurve {
    /// What the channel holds: "grey" for grey and Bayer regions, "B", "G", "R" for the
    /// channels of a BGR region (in that, OpenCV's, order).
    std::string name;
    std::vector<double> frequency;  ///< cycles per pixel, ascending; frequency[0] = 0
    std::vector<double> sfr;        ///< SFR at each frequency; sfr[0] = 1
    /// Edge spread: mean level in quarter-pixel bins along the edge normal, dark to light.
    std::vector<double> esf;
    /// Line spread: the ESF's derivative, centred on its peak and Hamming-windowed.
    std::vector<double> lsf;
    double esfBinWidth = 0.25;  ///< pixels per ESF/LSF sample
    double edgeAngle = 0.0;     ///< degrees from the region's columns (after any quarter turn)
    /// Frequency where the SFR first falls below 0.1, 0.3 and 0.5 (linear interpolation;
    /// NaN when the curve never falls that low).
    double mtf10 = 0.0;
    double mtf30 = 0.0;
    double mtf50 = 0.0;
    /// SFR at SfrCurveOptions::frequencies, in order (linear interpolation; NaN outside the
    /// table).
    std::vector<double> sfrAt;
};

/// A measured region: one curve per channel in OpenCV order (blue, green, red for a BGR
/// region; one for grey and Bayer regions).
struct SfrCurve {
    /// true when `frequency` is across the edge (SfrCurveOptions::normalFrequencyAxis).
    bool normalFrequencyAxis = false;
    std::vector<SfrChannelCurve> channels;
};

/// Measures one region like TalonCalSFR (same arguments, same statuses: 0, -1 bad input or
/// internal failure, -2 low contrast, -3 edge steeper than 1.25, -4 edge on the pixel grid)
/// and fills `curve` on success only; on failure `curve` is left as it was. Never throws.
TALONVIREO_API int measureSfrCurve(const unsigned char* image, int width, int height, int format,
                                   const SfrCurveOptions& options, SfrCurve& curve);

}  // namespace talonvireo
