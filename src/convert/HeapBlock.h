// A block of bytes from the C heap that frees itself: the temporary image of a composite
// conversion, released on every path out of the call.
#pragma once

#include <cstddef>
#include <cstdlib>

namespace talonvireo {
namespace convert {

class HeapBlock {
public:
    // malloc(bytes); a request of 0 bytes still yields a distinct block, so that data() is
    // null only when the allocation failed.
    explicit HeapBlock(std::size_t bytes)
        : data_(static_cast<unsigned char*>(std::malloc(bytes == 0 ? 1 : bytes))) {}
    ~HeapBlock() { std::free(data_); }

    HeapBlock(const HeapBlock&) = delete;
    HeapBlock& operator=(const HeapBlock&) = delete;

    unsigned char* data() const { return data_; }
    explicit operator bool() const { return data_ != nullptr; }

private:
    unsigned char* data_;
};

}  // namespace convert
}  // namespace talonvireo
