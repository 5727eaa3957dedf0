// Limits a line grades edges against, read from a TOML file.
//
//   # Minimums per field zone; an edge belongs to the first zone (in file order) whose
//   # max_height (image height, % of the half-diagonal) it does not exceed.
//   [[zone]]
//   name = "centre"
//   max_height = 20
//   sfr_quarter_nyquist = 0.60      # any of: sfr_quarter_nyquist, sfr_half_nyquist,
//   sfr_half_nyquist = 0.35         #   sfr_custom, mtf50 (cycles per pixel)
//   [zone.sagittal]                 # optional, per orientation: overrides the zone's figures
//   sfr_quarter_nyquist = 0.55
//   [[slot]]                        # optional, per record slot: overrides everything else
//   index = 7
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

    // `over` where it sets a figure, this otherwise.
    FigureLimits overriddenBy(const FigureLimits& over) const;
    bool empty() const { return !sfrQuarterNyquist && !sfrHalfNyquist && !sfrCustom && !mtf50; }
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
    FigureLimits figures;
};

struct Limits {
    std::string path;
    std::vector<ZoneLimits> zones;
    std::vector<SlotLimits> slots;

    bool needsMtf50() const;
    bool needsCustom() const;
};

// Reads and checks a limits file. Throws Failure (bad input) naming the file, the line
// and the key at fault: a syntax error, an unknown key, a value of the wrong type or range,
// zones out of order or none at all.
Limits readLimits(const std::string& path);

}  // namespace station
}  // namespace talonvireo
