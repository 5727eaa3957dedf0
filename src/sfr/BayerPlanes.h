// Where the four colour planes of a Bayer mosaic sit.
#pragma once

#include <array>

namespace talonvireo {
namespace sfr {

// One plane: its name ("R", "Gr" green on red rows, "Gb" green on blue rows, "B") and the
// column and row of its first sample.
struct PlaneSite {
    const char* name;
    int column;
    int row;
};

// The planes in the order R, Gr, Gb, B for a PixelFormat phase. Throws std::invalid_argument
// for a value that is not exactly one phase.
std::array<PlaneSite, 4> bayerPlaneSites(int phase);

}  // namespace sfr
}  // namespace talonvireo
