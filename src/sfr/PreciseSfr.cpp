#include "sfr/PreciseSfr.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

#include "sfr/EdgeLineRefinement.h"
#include "sfr/KernelWidth.h"
#include "sfr/LineSpreadTails.h"
#include "sfr/LocalLinearProfile.h"
#include "sfr/LsfWindow.h"
#include "sfr/PhaseWeights.h"
#include "sfr/SampleBins.h"
#include "sfr/SfrConstants.h"
#include "sfr/SlopeSpectrum.h"

namespace talonvireo {
namespace sfr {

namespace {
// Largest lattice component left after the kernel (relative density ripple).
constexpr double kLatticeResidual = 2.0e-4;
// Fine bins per kernel sigma and bins per output point: outputs every half sigma. A bin
// weighs at its samples' mean position, so its width only blurs the kernel by the spread of
// its samples: a variance of sigma^2 / 192 for evenly spread ones, sigma^2 / 64 at most
// (measured: 0.04 % more MTF50 error than bins twice as fine).
constexpr double kBinsPerSigma = 4.0;
constexpr int kBinsPerStep = 2;
// Distances first looked at (widened when the window needs more room for its plateaus), and
// the refinement's iterations.
constexpr double kFirstRange = 8.0;
constexpr double kPlateauRoom = 1.5;
constexpr double kMinRange = 1.0;
constexpr int kRefinements = 2;
// Reported curve: step and highest frequency, which also stops where the kernel's transfer
// falls below kMinTransfer (dividing by less only amplifies noise).
constexpr double kFrequencyStep = 0.005;
constexpr double kMaxFrequency = 1.0;
constexpr double kMinTransfer = 0.05;
// The line spread's core, kept at full resolution: 1.4 rises each side of the edge (3.6
// standard deviations of a Gaussian spread).
constexpr double kCoreRises = 1.4;
// How fast the tails' blobs widen, in pixels per pixel beyond the core: in proportion to the
// samples' noise, relative to the edge's height and averaged along the edge (one part in a
// thousand: 1 % noise over 100 rows, widens by 0.8), within bounds. At that noise the
// spectrum's scatter is no larger than a window cut at two rises gave; without noise the
// tails keep nearly full resolution.
constexpr double kWideningPerNoise = 800.0;
constexpr double kMinWidening = 0.1;
constexpr double kMaxWidening = 1.5;

// How fast the tails' blobs widen for these samples: from their scatter beyond the core,
// relative to the edge's height, per square root of the rows along it.
double tailWidening(const EdgeSamples& s, const FarField& far, const LsfWindow& window,
                    double coreHalf) {
    if (window.height == 0.0) {
        return kMaxWidening;
    }
    const double noise = far.scatterBeyond(window.centre, coreHalf + 1.0) /
                         (std::fabs(window.height) * std::sqrt(static_cast<double>(s.rows())));
    return std::clamp(kWideningPerNoise * noise, kMinWidening, kMaxWidening);
}

// Largest distance of any sample from the line (at the corners of the lattice).
double farthestSample(const EdgeSamples& s, const EdgeFrame& frame) {
    double far = 0.0;
    for (int j : {0, s.cols() - 1}) {
        for (int i : {0, s.rows() - 1}) {
            far = std::max(far, std::fabs(frame.distance(s.x(j), s.y(i))));
        }
    }
    return far;
}

// Sign that makes levels rise with distance: compares the sides within a few pixels, or
// over the whole region when one side has nothing that near.
double riseSign(const EdgeSamples& s, const EdgeLine& line) {
    const EdgeFrame frame{line, 1.0};
    const double scale = frame.scale();  // frame.distance's, made once
    for (double reach : {8.0, 1.0e6}) {
        double left = 0.0, right = 0.0, nLeft = 0.0, nRight = 0.0;
        for (int i = 0; i < s.rows(); ++i) {
            const float* level = s.values.ptr<float>(i);
            const ColumnSpan span = columnsWithin(s, frame, i, reach);
            for (int j = span.first; j < span.last; ++j) {
                const double d = (s.x(j) - line.intercept - line.slope * s.y(i)) * scale;
                if (d < -1.0) {
                    left += level[j];
                    nLeft += 1.0;
                } else if (d > 1.0) {
                    right += level[j];
                    nRight += 1.0;
                }
            }
        }
        if (nLeft > 0.0 && nRight > 0.0) {
            return right / nRight >= left / nLeft ? 1.0 : -1.0;
        }
    }
    return 1.0;  // the line misses the samples; the profile will show no spectrum
}

// How the profile is built for the current line: row weights, kernel and bin width.
struct Construction {
    PhaseWeights weights;
    double sigma = 0.0;
    double binWidth = 0.0;
};

Construction constructionFor(const EdgeSamples& s, const EdgeFrame& frame) {
    Construction c;
    c.weights = phaseWeights(s, frame);
    c.sigma = kernelSigmaFor(c.weights, frame.line.slope, s.pitch, kLatticeResidual);
    c.binWidth = c.sigma / kBinsPerSigma;
    return c;
}

LocalLinearProfile profileOf(const EdgeSamples& s, const EdgeFrame& frame, double range,
                             const Construction& c) {
    return localLinearProfile(binByDistance(s, c.weights.rowWeight, frame, range, c.binWidth),
                              c.sigma, kBinsPerStep);
}

// The line, the construction it implies and the profile built along it.
struct Fit {
    EdgeFrame frame;
    Construction c;
    double range = 0.0;
    LocalLinearProfile profile;
    LsfWindow window;
};

// A first profile along `initial`, over a range widened once when the window needs more
// room for its plateaus.
Fit firstLook(const EdgeSamples& samples, const EdgeLine& initial) {
    if (samples.values.type() != CV_32FC1 || samples.values.total() < 4) {
        throw std::invalid_argument("too few samples");
    }
    Fit f;
    f.frame = EdgeFrame{initial, riseSign(samples, initial)};
    f.c = constructionFor(samples, f.frame);
    const double available = farthestSample(samples, f.frame);
    f.range = std::max(kMinRange, std::min(available, kFirstRange + 5.0 * f.c.sigma));
    f.profile = profileOf(samples, f.frame, f.range, f.c);
    f.window = lsfWindowFor(f.profile);
    const double needed = std::fabs(f.window.centre) + kPlateauRoom * f.window.reach() + 1.0;
    if (needed > f.range && f.range < available) {
        f.range = std::min(available, needed);
        f.profile = profileOf(samples, f.frame, f.range, f.c);
        f.window = lsfWindowFor(f.profile);
    }
    return f;
}

void refineLine(const EdgeSamples& samples, Fit& f) {
    for (int i = 0; i < kRefinements; ++i) {
        const double near = std::min(f.range, std::fabs(f.window.centre) + f.window.reach() + 1.0);
        const EdgeFrame next =
            refineEdgeLine(samples, f.c.weights.rowWeight, f.frame, f.profile, near);
        const double moved =
            std::fabs(next.line.slope - f.frame.line.slope) * samples.rows() * samples.pitch +
            std::fabs(next.line.intercept - f.frame.line.intercept);
        f.frame = next;
        f.c = constructionFor(samples, f.frame);
        if (moved < 1.0e-4 || i + 1 == kRefinements) {
            break;
        }
        f.profile = profileOf(samples, f.frame, near, f.c);
    }
}
}  // namespace

EdgeLine refinePreciseLine(const EdgeSamples& samples, const EdgeLine& initial) {
    Fit f = firstLook(samples, initial);
    refineLine(samples, f);
    return f.frame.line;
}

PreciseCurve measurePrecise(const EdgeSamples& samples, const EdgeLine& initial,
                            const std::vector<double>& frequencies, bool refine) {
    Fit f = firstLook(samples, initial);
    if (refine) {
        refineLine(samples, f);
    }
    const EdgeFrame& frame = f.frame;
    const Construction& c = f.c;
    // Unrefined, the first look's profile is already the one along the final line.
    const LocalLinearProfile profile =
        refine ? profileOf(samples, frame, f.range, c) : std::move(f.profile);
    const LsfWindow window = refine ? lsfWindowFor(profile) : f.window;
    // Every sample for the tails: they reach as far as the region does.
    const SampleBins all =
        binByDistance(samples, c.weights.rowWeight, frame,
                      std::max(kMinRange, farthestSample(samples, frame)), c.binWidth);
    const FarField far(all);

    PreciseCurve curve;
    curve.kernelSigma = c.sigma;
    curve.step = profile.step;
    curve.edgeAngle = std::atan(frame.line.slope) * 180.0 / kPi;
    // The core of the line spread at full resolution, the tails beyond it out to the samples'
    // reach as blobs that widen with the distance, by as much as the samples' noise asks.
    const double coreHalf = std::min(kCoreRises * window.rise, window.reach());
    std::vector<double> core;
    int first = -1, last = -1;
    for (int k = window.lo; k <= window.hi; ++k) {
        if (std::fabs(profile.position(k) - window.centre) > coreHalf) {
            continue;
        }
        first = first < 0 ? k : first;
        last = k;
        curve.esf.push_back(profile.level[k]);
        core.push_back(profile.slope[k]);
    }
    if (first < 0) {
        throw NoSpectrum();
    }
    const double widening = tailWidening(samples, far, window, coreHalf);
    const double halfStep = 0.5 * profile.step;
    std::vector<TailBlob> tails =
        lineSpreadTail(profile, window.lo, window.hi, far, profile.position(last) + halfStep,
                       far.last(), 1, window.centre + coreHalf, widening);
    const std::vector<TailBlob> left =
        lineSpreadTail(profile, window.lo, window.hi, far, profile.position(first) - halfStep,
                       far.first(), -1, window.centre - coreHalf, widening);
    tails.insert(tails.end(), left.begin(), left.end());
    curve.lsf = core;
    const SlopeSpectrum spectrum(std::move(core), profile.position(first), profile.step, c.sigma,
                                 std::move(tails));
    if (!std::isfinite(spectrum.at(0.0))) {
        throw NoSpectrum();
    }
    double limit = kMaxFrequency;
    while (limit > 0.0 && gaussianTransfer(c.sigma, limit) < kMinTransfer) {
        limit -= kFrequencyStep;
    }
    const int count = static_cast<int>(std::floor(limit / kFrequencyStep + 1e-9)) + 1;
    curve.sfr = spectrum.sampled(count, kFrequencyStep);
    for (int k = 0; k < count; ++k) {
        curve.frequency.push_back(k * kFrequencyStep);
    }
    limit = curve.frequency.back();
    const std::vector<double> mtf =
        spectrum.frequenciesAtLevels({0.1, 0.3, 0.5}, curve.frequency, curve.sfr);
    curve.mtf10 = mtf[0];
    curve.mtf30 = mtf[1];
    curve.mtf50 = mtf[2];
    std::vector<double> within;  // the asked frequencies the curve reaches, read together
    for (double f : frequencies) {
        if (f >= 0.0 && f <= limit + 1e-12) {
            within.push_back(f);
        }
    }
    std::vector<double> reading(within.size());
    spectrum.atEach(within.data(), static_cast<int>(within.size()), reading.data());
    size_t next = 0;
    for (double f : frequencies) {
        curve.sfrAt.push_back(f >= 0.0 && f <= limit + 1e-12
                                  ? reading[next++]
                                  : std::numeric_limits<double>::quiet_NaN());
    }
    return curve;
}

}  // namespace sfr
}  // namespace talonvireo
