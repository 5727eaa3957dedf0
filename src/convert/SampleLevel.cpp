#include "convert/SampleLevel.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "convert/ImageExtent.h"

namespace talonvireo {
namespace convert {

namespace {
// trunc(sample - level), clamped or wrapped into an unsigned sample of `modulus` values.
// fmod is exact, so the wrap is right for any finite difference.
std::uint32_t levelledSample(int sample, double level, bool clamp, double modulus) {
    const double difference = std::trunc(static_cast<double>(sample) - level);
    if (clamp && difference < 0.0) {
        return 0;
    }
    double wrapped = std::fmod(difference, modulus);
    if (wrapped < 0.0) {
        wrapped += modulus;
    }
    return static_cast<std::uint32_t>(wrapped);
}

template <typename T>
void subtractFrom(T* samples, std::size_t count, double level, bool clamp) {
    constexpr double kModulus = static_cast<double>(std::numeric_limits<T>::max()) + 1.0;
    if constexpr (sizeof(T) == 1) {
        // 256 possible inputs: a table is cheaper than the arithmetic per sample.
        T table[256];
        for (int v = 0; v < 256; ++v) {
            table[v] = static_cast<T>(levelledSample(v, level, clamp, kModulus));
        }
        for (std::size_t i = 0; i < count; ++i) {
            samples[i] = table[samples[i]];
        }
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<T>(levelledSample(samples[i], level, clamp, kModulus));
    }
}

template <typename T>
double sumOfRectangle(const T* samples, int width, int height, int x0, int y0) {
    std::uint64_t sum = 0;
    if (x0 >= width) {
        return 0.0;
    }
    for (int y = y0; y < height; ++y) {
        const T* row = samples + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
        for (int x = x0; x < width; ++x) {
            sum += row[x];
        }
    }
    return static_cast<double>(sum);
}
}  // namespace

bool subtractLevel(void* samples, double level, int width, int height, bool clamp,
                   bool sixteenBit) {
    const std::size_t count = pixelCount(width, height);
    if (samples == nullptr || count == 0 || !std::isfinite(level)) {
        return false;
    }
    if (sixteenBit) {
        subtractFrom(static_cast<std::uint16_t*>(samples), count, level, clamp);
    } else {
        subtractFrom(static_cast<std::uint8_t*>(samples), count, level, clamp);
    }
    return true;
}

double meanLevel(const void* samples, int width, int height, int x0, int y0, bool sixteenBit) {
    if (samples == nullptr || x0 < 0 || y0 < 0) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const double sum =
        sixteenBit
            ? sumOfRectangle(static_cast<const std::uint16_t*>(samples), width, height, x0, y0)
            : sumOfRectangle(static_cast<const std::uint8_t*>(samples), width, height, x0, y0);
    const double area = (static_cast<double>(width) - x0) * (static_cast<double>(height) - y0);
    return sum / area;
}

}  // namespace convert
}  // namespace talonvireo
