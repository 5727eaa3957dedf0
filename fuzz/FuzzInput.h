// Reading a fuzzer's bytes as a small header of fields followed by a payload.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace talonvireo {
namespace fuzz {

class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    // The next sizeof(T) bytes (little-endian host), zeros past the end.
    template <class T>
    T take() {
        T value{};
        const std::size_t n = std::min(sizeof(T), size_ - pos_);
        if (n > 0) {
            std::memcpy(&value, data_ + pos_, n);
        }
        pos_ += n;
        return value;
    }

    // `size` bytes of payload: the rest of the input, repeated, or zeros when none is left.
    std::vector<std::uint8_t> payload(std::size_t size) const {
        std::vector<std::uint8_t> out(size, 0);
        const std::size_t rest = size_ - pos_;
        for (std::size_t i = 0; rest > 0 && i < size; ++i) {
            out[i] = data_[pos_ + i % rest];
        }
        return out;
    }

private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t pos_ = 0;
};

// A fuzzed size folded into -limit .. limit, so that zero and negative sizes stay reachable
// while every call stays quick.
inline int foldSize(std::int16_t v, int limit) {
    return v % (limit + 1);
}

// Aborts the run: libFuzzer reports it as a crash with the input that caused it.
inline void contract(bool holds) {
    if (!holds) {
        std::abort();
    }
}

}  // namespace fuzz
}  // namespace talonvireo
