// Runs a row-band body over an image in parallel, each thread with its own scratch buffer.
// Bands are short enough that a band's unpacked rows stay in cache between being written
// and being read.
#pragma once

#include <algorithm>
#include <cstddef>
#include <new>
#include <vector>

namespace talonvireo {
namespace convert {

inline constexpr int kBandRows = 32;

// body(firstRow, endRow, scratch) for consecutive bands covering rows 0 .. height - 1; the
// body must not throw. Every thread gets its scratch (`scratchBytes`, zeroed) before any band
// runs: when one cannot, no band runs and the result is false.
template <class Body>
bool forEachBand(int height, std::size_t scratchBytes, Body body) {
    const int bands = (height + kBandRows - 1) / kBandRows;
    bool failed = false;
#pragma omp parallel if (bands > 1)
    {
        std::vector<unsigned char> scratch;
        try {
            scratch.assign(scratchBytes, 0);
        } catch (const std::bad_alloc&) {
#pragma omp atomic write
            failed = true;
        }
#pragma omp barrier
        bool stop;
#pragma omp atomic read
        stop = failed;
        const bool run = !stop;
#pragma omp for schedule(static)
        for (int band = 0; band < bands; ++band) {
            if (run) {
                const int first = band * kBandRows;
                body(first, std::min(height, first + kBandRows), scratch.data());
            }
        }
    }
    return !failed;
}

}  // namespace convert
}  // namespace talonvireo
