#include "sfr/LineSpreadTails.h"

#include <algorithm>
#include <cmath>

namespace talonvireo {
namespace sfr {

namespace {
// The profile's level at `b`, averaged over +-half around it within outputs lo..hi; between
// the two nearest outputs when that holds fewer than two.
double levelNear(const LocalLinearProfile& p, double b, double half, int lo, int hi) {
    const int a = std::max(lo, static_cast<int>(std::ceil((b - half) / p.step)) - p.first);
    const int z = std::min(hi, static_cast<int>(std::floor((b + half) / p.step)) - p.first);
    if (z - a >= 1) {
        double sum = 0.0;
        for (int k = a; k <= z; ++k) {
            sum += p.level[static_cast<size_t>(k)];
        }
        return sum / (z - a + 1);
    }
    return p.levelAt(b, lo, hi);
}
}  // namespace

std::vector<TailBlob> lineSpreadTail(const LocalLinearProfile& p, int from, int to, int direction,
                                     double coreEdge, double widening) {
    std::vector<TailBlob> out;
    const int lo = std::min(from, to), hi = std::max(from, to);
    const int inLo = std::max(0, lo - 1), inHi = std::min(p.size() - 1, hi + 1);
    double boundary = p.position(from) - 0.5 * direction * p.step;
    double level = levelNear(p, boundary, 0.0, inLo, inHi);
    for (int k = from; direction > 0 ? k <= to : k >= to;) {
        // A blob about as long as it is wide: its own extent is then lost in its spread.
        const double beyond = std::fabs(p.position(k) - coreEdge);
        const int length = std::max(1, static_cast<int>(widening * beyond / p.step));
        int n = 0;
        for (; n < length && (direction > 0 ? k <= to : k >= to); ++n) {
            k += direction;
        }
        const double next = boundary + direction * n * p.step;
        const double half = 0.5 * widening * std::fabs(next - coreEdge);
        const double nextLevel = levelNear(p, next, half, lo, hi);
        TailBlob blob;
        blob.position = 0.5 * (boundary + next);
        blob.weight = direction * (nextLevel - level) / p.step;
        blob.width = widening * std::fabs(blob.position - coreEdge);
        out.push_back(blob);
        boundary = next;
        level = nextLevel;
    }
    return out;
}

double scatterBeyond(const EdgeSamples& s, const EdgeFrame& frame, const LocalLinearProfile& p,
                     double centre, double reach, int lo, int hi) {
    if (hi <= lo) {
        return 0.0;
    }
    const double from = p.position(lo), to = p.position(hi);
    const double scale = frame.scale();
    double sum = 0.0;
    long n = 0;
    for (int i = 0; i < s.rows(); ++i) {
        const float* level = s.values.ptr<float>(i);
        const double start = (s.x(0) - frame.line.intercept - frame.line.slope * s.y(i)) * scale;
        const double step = s.pitch * scale;
        for (int j = 0; j < s.cols(); ++j) {
            const double d = start + step * j;
            if (std::fabs(d - centre) <= reach || d < from || d >= to) {
                continue;
            }
            const double residual = level[j] - p.levelAt(d, lo, hi);
            sum += residual * residual;
            ++n;
        }
    }
    return n > 0 ? std::sqrt(sum / static_cast<double>(n)) : 0.0;
}

}  // namespace sfr
}  // namespace talonvireo
