// The 5 x 5 gradient-corrected demosaic kernels (Malvar, He and Cutler), integer weights
// over 16, and which kernel fills which colour at each kind of mosaic site.
#pragma once

#include <array>
#include <cstdint>

namespace talonvireo {
namespace convert {

using Kernel5x5 = std::array<std::int8_t, 25>;  // row by row from the top; centre at 12

// Green at a red or blue site.
inline constexpr Kernel5x5 kernelGreenAtRedBlue = {0,  0, -2, 0, 0,   //
                                                   0,  0, 4,  0, 0,   //
                                                   -2, 4, 8,  4, -2,  //
                                                   0,  0, 4,  0, 0,   //
                                                   0,  0, -2, 0, 0};

// The wanted colour lies left and right of the centre.
inline constexpr Kernel5x5 kernelAlongRow = {0,  0,  1,  0,  0,   //
                                             0,  -2, 0,  -2, 0,   //
                                             -2, 8,  10, 8,  -2,  //
                                             0,  -2, 0,  -2, 0,   //
                                             0,  0,  1,  0,  0};

// The wanted colour lies above and below the centre (the transpose of kernelAlongRow).
inline constexpr Kernel5x5 kernelAlongColumn = {0, 0,  -2, 0,  0,  //
                                                0, -2, 8,  -2, 0,  //
                                                1, 0,  10, 0,  1,  //
                                                0, -2, 8,  -2, 0,  //
                                                0, 0,  -2, 0,  0};

// The wanted colour lies on the diagonals.
inline constexpr Kernel5x5 kernelDiagonal = {0,  0, -3, 0, 0,   //
                                             0,  4, 0,  4, 0,   //
                                             -3, 0, 12, 0, -3,  //
                                             0,  4, 0,  4, 0,   //
                                             0,  0, -3, 0, 0};

}  // namespace convert
}  // namespace talonvireo
