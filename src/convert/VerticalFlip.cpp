#include "convert/VerticalFlip.h"

#include <cstddef>
#include <cstring>

#include "convert/HeapBlock.h"

namespace talonvireo {
namespace convert {

bool flipVertical(void* buffer, int bytesPerRow, int rowCount) {
    if (buffer == nullptr || bytesPerRow < 0 || rowCount < 0) {
        return false;
    }
    if (bytesPerRow == 0 || rowCount == 0) {
        return true;
    }
    const std::size_t rowBytes = static_cast<std::size_t>(bytesPerRow);
    const HeapBlock upper(rowBytes);
    const HeapBlock lower(rowBytes);
    if (!upper || !lower) {
        return false;
    }
    auto* rows = static_cast<unsigned char*>(buffer);
    for (int i = 0; i < (rowCount + 1) / 2; ++i) {
        unsigned char* top = rows + static_cast<std::size_t>(i) * rowBytes;
        unsigned char* bottom = rows + static_cast<std::size_t>(rowCount - 1 - i) * rowBytes;
        std::memcpy(upper.data(), top, rowBytes);
        std::memcpy(lower.data(), bottom, rowBytes);
        std::memcpy(top, lower.data(), rowBytes);
        std::memcpy(bottom, upper.data(), rowBytes);
    }
    return true;
}

}  // namespace convert
}  // namespace talonvireo
