#include "locate/OtsuThreshold.h"

#include <array>

namespace RegularSFR {

int otsuThresholdBelowQuantile(std::vector<unsigned char> samples, float fraction) {
    std::array<int, 256> count{};
    for (const unsigned char s : samples) {
        ++count[s];
    }
    const float limitF = static_cast<float>(samples.size()) * fraction;
    if (!(limitF < 2147483647.0f)) {
        return 0;  // no bin can exceed such a limit
    }
    const int limit = static_cast<int>(limitF);
    int last = -1;
    int total = 0;
    for (int i = 0; i < 256; ++i) {
        total += count[i];
        if (total > limit) {
            last = i;
            break;
        }
    }
    if (last < 0 || total == 0) {
        return 0;
    }
    // Bins above the quantile bin weigh nothing; sums run in float as the levels always have.
    std::array<float, 256> p{};
    for (int i = 0; i <= last; ++i) {
        p[i] = static_cast<float>(count[i]) / static_cast<float>(total);
    }
    int best = 0;
    double bestScore = 0.0;
    for (int k = 0; k < 256; ++k) {
        float w0 = 0.0f, s0 = 0.0f, w1 = 0.0f, s1 = 0.0f;
        for (int i = 0; i <= k; ++i) {
            w0 += p[i];
            s0 += static_cast<float>(i) * p[i];
        }
        for (int i = k + 1; i < 256; ++i) {
            w1 += p[i];
            s1 += static_cast<float>(i) * p[i];
        }
        const float d = s0 / w0 - s1 / w1;
        const float score = w1 * w0 * (d * d);
        // A NaN score (an empty class) never compares greater.
        if (static_cast<double>(score) > bestScore) {
            bestScore = score;
            best = k;
        }
    }
    return best;
}

}  // namespace RegularSFR
