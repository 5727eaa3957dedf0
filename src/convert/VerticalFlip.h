// Turning an image upside down in place, whatever its pixel kind.
#pragma once

namespace talonvireo {
namespace convert {

// Exchanges row i and row rowCount - 1 - i of a buffer of rowCount rows of bytesPerRow bytes,
// for i = 0 .. (rowCount + 1) / 2 - 1, through two row-sized temporaries from the C heap (the
// middle row of an odd count is exchanged with itself). Returns false for a null buffer, a
// negative row size or count, or a temporary that cannot be allocated; a row count or row
// size of 0 does nothing and returns true.
bool flipVertical(void* buffer, int bytesPerRow, int rowCount);

}  // namespace convert
}  // namespace talonvireo
