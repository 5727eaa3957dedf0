// Where the K31R22BX locate functions put each located edge: the edge the locator lists
// i-th goes to result slot order[i] - 1, so that a slot always names the same chart edge.
#pragma once

#include <array>

namespace talonvireo {
namespace api {

using LocateOrder = std::array<int, 34>;

// SFRLocate_K31R22BX (layout SFRLocate_LX).
inline constexpr LocateOrder kK31R22BXOrder = {1,  2,  3,  4,  8,  7,  5,  6,  10, 9,  14, 13,
                                               18, 17, 15, 16, 20, 19, 28, 27, 32, 31, 29, 30,
                                               34, 33, 24, 23, 11, 12, 26, 25, 22, 21};

// SFRLocate_K31R22BX_2 (layout SFRLocate_LX2).
inline constexpr LocateOrder kK31R22BX2Order = {2,  1,  3,  4,  5,  6,  10, 9,  8,  7,  13, 14,
                                                15, 16, 20, 19, 18, 17, 26, 25, 11, 12, 23, 24,
                                                22, 21, 27, 28, 29, 30, 34, 33, 32, 31};

}  // namespace api
}  // namespace talonvireo
