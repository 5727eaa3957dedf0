#include "render/LevelExposure.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>

#include "render/FrameField.h"

namespace talonvireo {
namespace render {

namespace {

std::uint64_t splitMix(std::uint64_t x) {
    x += 0x9e3779b97f4a7c15ull;
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ull;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebull;
    return x ^ (x >> 31);
}

double siteGain(const DescriptionRenderSettings& s, int row, int col) {
    if (!s.bayer) {
        return 1.0;
    }
    if (row % 2 == 0) {
        return col % 2 == 0 ? s.gainRed : s.gainGreen;
    }
    return col % 2 == 0 ? s.gainGreen : s.gainBlue;
}

template <typename Word>
void exposeRow(const double* level, Word* out, int row, const DescriptionRenderSettings& s,
               int cols, const FrameField& field, double fullScale) {
    const bool noisy = s.readNoise > 0.0 || s.shotNoise > 0.0;
    std::mt19937_64 rng(splitMix(splitMix(s.seed) + static_cast<std::uint64_t>(row)));
    std::normal_distribution<double> normal(0.0, 1.0);
    const double falloff = 1.0 - s.cornerLight;
    for (int c = 0; c < cols; ++c) {
        double v = level[c] * (1.0 - falloff * field.rho2(c, row));
        for (const ClutterSpot& spot : s.clutter.spots) {
            const double dx = c - spot.x, dy = row - spot.y;
            const double q = (dx * dx + dy * dy) / (spot.radius * spot.radius);
            if (q < 80.0) {
                v += spot.peak * std::exp(-0.5 * q);
            }
        }
        v *= fullScale * siteGain(s, row, c);
        if (noisy) {
            const double variance = s.readNoise * s.readNoise +
                                    s.shotNoise * s.shotNoise * std::max(v, 0.0) / fullScale;
            v += std::sqrt(variance) * normal(rng);
        }
        out[c] = static_cast<Word>(std::clamp(std::round(v), 0.0, fullScale));
    }
}

}  // namespace

cv::Mat exposeLevels(const cv::Mat& levels, const DescriptionRenderSettings& s) {
    const double fullScale = std::ldexp(1.0, s.bits) - 1.0;
    const FrameField field = FrameField::of(s.width, s.height);
    cv::Mat out(levels.size(), s.bits == 8 ? CV_8U : CV_16U);
#pragma omp parallel for schedule(static)
    for (int r = 0; r < levels.rows; ++r) {
        if (s.bits == 8) {
            exposeRow(levels.ptr<double>(r), out.ptr<std::uint8_t>(r), r, s, levels.cols, field,
                      fullScale);
        } else {
            exposeRow(levels.ptr<double>(r), out.ptr<std::uint16_t>(r), r, s, levels.cols, field,
                      fullScale);
        }
    }
    return out;
}

}  // namespace render
}  // namespace talonvireo
