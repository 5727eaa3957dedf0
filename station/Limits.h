// Limits a line grades edges against, read from a TOML file.
//
//   # Minimums per field zone; an edge belongs to the first zone (in file order) whose
//   # max_height (image height, % of the half-diagonal) it does not exceed. An edge beyond
//   # the last zone is "unzoned": only its [[slot]] limits grade it.
//   [[zone]]
//   name = "centre"
//   max_height = 20
//   sfr_quarter_nyquist = 0.60      # any of: sfr_quarter_nyquist, sfr_half_nyquist,
//   sfr_half_nyquist = 0.35         #   sfr_custom, mtf50 (cycles per pixel), and with a
//   mtf50_lp_per_mm = 80            #   pixel pitch mtf50_lp_per_mm, mtf50_lw_per_ph
//   [zone.sagittal]                 # optional, per orientation: overrides the zone's figures
//   sfr_quarter_nyquist = 0.55
//   [[slot]]                        # optional, per record slot: overrides everything else
//   edge = 7                        # a slot of the member's chart (0 .. slots - 1); `index`
//                                   #   is read too, as older files spell it
//   sfr_quarter_nyquist = 0.50
//
// TOML because a limits file is a small typed table that people edit by hand: comments,
// no significant indentation, and a parser (toml++) that names the line of every error.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace talonvireo {
namespace station {

// Minimums on the figures of one edge; an absent one is not checked.
struct FigureLimits {
    std::optional<double> sfrQuarterNyquist;
    std::optional<double> sfrHalfNyquist;
    std::optional<double> sfrCustom;
    std::optional<double> mtf50;
    // MTF50 in sensor units: line pairs per mm and line widths per picture height. Each is a
    // minimum of its own, beside mtf50 in cycles per pixel; both need a pixel pitch.
    std::optional<double> mtf50LpPerMm;
    std::optional<double> mtf50LwPerPh;

    // `over` where it sets a figure, this otherwise.
    FigureLimits overriddenBy(const FigureLimits& over) const;
    bool empty() const {
        return !sfrQuarterNyquist && !sfrHalfNyquist && !sfrCustom && !mtf50 && !mtf50LpPerMm &&
               !mtf50LwPerPh;
    }
};

struct ZoneLimits {
    std::string name;
    double maxHeight = 0.0;  // % of the half-diagonal
    FigureLimits figures;
    FigureLimits tangential;  // overrides for edges whose normal runs along the radius
    FigureLimits sagittal;    // and across it
};

struct SlotLimits {
    int index = 0;
    int line = 0;  // of its index in the file, for refusals that come after reading it
    FigureLimits figures;
};

struct Limits {
    std::string path;
    std::vector<ZoneLimits> zones;
    std::vector<SlotLimits> slots;

    // The first key that needs a pixel pitch (mtf50_lp_per_mm, mtf50_lw_per_ph) and its
    // line; empty when none does.
    std::string pitchKey;
    int pitchLine = 0;

    bool needsMtf50() const;
    bool needsCustom() const;
    bool needsPitch() const { return !pitchKey.empty(); }
};

// Reads and checks a limits file. Throws Failure (bad input) naming the file, the line
// and the key at fault: a syntax error, an unknown key, a value of the wrong type or range,
// zones out of order or none at all.
Limits readLimits(const std::string& path);

// Throws Failure (bad input), naming the file and the line, for a [[slot]] index that the
// member's chart does not have (MemberInfo::slots: 0 .. slots - 1).
void checkLimitSlots(const Limits& limits, const std::string& member, int slots);

// Throws Failure (bad input), naming the file, the line and the key, for a limit in lp/mm or
// LW/PH without a pixel pitch (NaN).
void checkLimitUnits(const Limits& limits, double pixelPitchUm);

}  // namespace station
}  // namespace talonvireo
