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

/// How a region's curve is measured.
enum class SfrMethod {
    /// The classic slanted-edge method, as TalonCalSFR: quarter-pixel bins of row-centred
    /// samples. The default.
    kClassic = 0,
    /// Every sample at its own distance from an edge line refined against all samples, the
    /// edge profile by local linear regression whose kernel widens only where the sample
    /// phases bunch (slopes near simple fractions), the line spread windowed to the measured
    /// blur and the kernel's transfer divided out. Frequencies are across the edge. Holds its
    /// accuracy at every angle, including those where the classic bins fill unevenly.
    kPrecise = 1,
};

/// How measureSfrCurve measures, reports its frequency axis and which points it reads off.
struct SfrCurveOptions {
    /// Frequencies, cycles per pixel, at which to report the SFR (SfrChannelCurve::sfrAt).
    std::vector<double> frequencies;
    /// The edge profile is already projected onto the edge normal, yet the classic method
    /// divides its frequency axis by cos(angle) once more, so at angle a the figure shown at
    /// f is the SFR at f cos(a): 6 % low in frequency at 20 degrees, 23 % at 40. true reports
    /// the axis as projected (frequencies across the edge, not divided again); false keeps
    /// the classic axis, on which TalonCalSFR's figures are read.
    bool normalFrequencyAxis = false;
    /// The method. kPrecise always reports frequencies across the edge.
    SfrMethod method = SfrMethod::kClassic;
    /// For a Bayer region (layouts 0x010, 0x020, 0x040, 0x080 with a phase): measure the R,
    /// Gr, Gb and B sample planes separately, each from its own samples at their true places
    /// in the mosaic (no demosaic, no interpolation), as four channels named "R", "Gr", "Gb",
    /// "B". Frequencies stay in cycles per mosaic pixel. Needs kPrecise; with kClassic or a
    /// layout that is not a mosaic, the call returns -1.
    bool perChannelRaw = false;
};

/// One channel of a measured region.
struct SfrChannelCurve {
    /// What the channel holds: "grey" for grey and Bayer regions, "B", "G", "R" for the
    /// channels of a BGR region (in that, OpenCV's, order), "R", "Gr", "Gb", "B" for the
    /// planes of a mosaic measured with perChannelRaw.
    std::string name;
    std::vector<double> frequency;  ///< cycles per pixel, ascending; frequency[0] = 0
    std::vector<double> sfr;        ///< SFR at each frequency; sfr[0] = 1
    /// Edge spread, dark to light: classic, the mean level in quarter-pixel bins along the
    /// edge normal; precise, the regression's level at every esfBinWidth under the window.
    std::vector<double> esf;
    /// Line spread: classic, the ESF's derivative, centred on its peak and Hamming-windowed;
    /// precise, the regression's slope times the window.
    std::vector<double> lsf;
    double esfBinWidth = 0.25;  ///< pixels per ESF/LSF sample
    double edgeAngle = 0.0;     ///< degrees from the region's columns (after any quarter turn)
    /// Precise method: standard deviation, pixels, of the regression kernel (its transfer is
    /// divided out). 0 for the classic method.
    double kernelSigma = 0.0;
    /// Frequency where the SFR first falls below 0.1, 0.3 and 0.5 (linear interpolation;
    /// NaN when the curve never falls that low).
    double mtf10 = 0.0;
    double mtf30 = 0.0;
    double mtf50 = 0.0;
    /// SFR at SfrCurveOptions::frequencies, in order (classic: linear interpolation; precise:
    /// the transform summed at that frequency; NaN outside the table).
    std::vector<double> sfrAt;
};

/// A measured region: one curve per channel in OpenCV order (blue, green, red for a BGR
/// region; one for grey and Bayer regions; R, Gr, Gb, B for perChannelRaw).
struct SfrCurve {
    /// true when `frequency` is across the edge (normalFrequencyAxis, or the precise method).
    bool normalFrequencyAxis = false;
    SfrMethod method = SfrMethod::kClassic;  ///< the method that measured it
    std::vector<SfrChannelCurve> channels;
};

/// Measures one region like TalonCalSFR (same arguments, same statuses: 0, -1 bad input or
/// internal failure, -2 low contrast, -3 edge steeper than 1.25, -4 edge on the pixel grid)
/// and fills `curve` on success only; on failure `curve` is left as it was. Never throws.
/// The precise method refuses the regions the classic one refuses and, beyond them, only a
/// region too small to give it a line spread (-2, no spectrum). perChannelRaw also refuses
/// (-4) an edge so near the grid that a colour plane does not see enough phases.
TALONVIREO_API int measureSfrCurve(const unsigned char* image, int width, int height, int format,
                                   const SfrCurveOptions& options, SfrCurve& curve);

}  // namespace talonvireo
