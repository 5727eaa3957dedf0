#include "sfr/LineSpreadTails.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace talonvireo {
namespace sfr {

namespace {
// A pixel of distance covered by less than this share of the fullest pixel's samples ends the
// span.
constexpr double kMinCoverage = 0.2;
// Windows narrower than this many profile steps take the profile's level at their middle.
constexpr double kMinWindowSteps = 2.0;
}  // namespace

FarField::FarField(const SampleBins& bins) : bins_(bins) {
    const size_t n = static_cast<size_t>(bins.size());
    count_.assign(n + 1, 0.0);
    level_.assign(n + 1, 0.0);
    for (size_t k = 0; k < n; ++k) {
        count_[k + 1] = count_[k] + bins.count[k];
        level_[k + 1] = level_[k] + bins.sumLevel[k];
    }
    // Pixels of distance: groups of bins, the middle one centred on the line.
    const int group = std::max(1, static_cast<int>(std::lround(1.0 / bins.width)));
    const int half = group / 2;
    const auto weightOf = [&](int g) {  // group g covers bins centre + g group - half ...
        const int a = std::clamp(bins.centre + g * group - half, 0, bins.size());
        const int z = std::clamp(bins.centre + g * group - half + group, 0, bins.size());
        return count_[static_cast<size_t>(z)] - count_[static_cast<size_t>(a)];
    };
    const int groups = bins.centre / group + 1;
    double top = 0.0;
    for (int g = -groups; g <= groups; ++g) {
        top = std::max(top, weightOf(g));
    }
    int lo = 0, hi = 0;
    while (lo > -groups && weightOf(lo - 1) >= kMinCoverage * top) {
        --lo;
    }
    while (hi < groups && weightOf(hi + 1) >= kMinCoverage * top) {
        ++hi;
    }
    first_ = (lo * group - half - 0.5) * bins.width;
    last_ = (hi * group - half + group - 0.5) * bins.width;
}

double FarField::meanLevel(double from, double to) const {
    from = std::max(from, first_);
    to = std::min(to, last_);
    // The bins whose centres lie in [from, to].
    const int a = std::max(0, static_cast<int>(std::ceil(from / bins_.width)) + bins_.centre);
    const int z =
        std::min(bins_.size() - 1, static_cast<int>(std::floor(to / bins_.width)) + bins_.centre);
    if (z < a) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const double n = count_[static_cast<size_t>(z + 1)] - count_[static_cast<size_t>(a)];
    return n > 0.0 ? (level_[static_cast<size_t>(z + 1)] - level_[static_cast<size_t>(a)]) / n
                   : std::numeric_limits<double>::quiet_NaN();
}

double FarField::scatterBeyond(double centre, double reach) const {
    const int group = std::max(1, static_cast<int>(std::lround(1.0 / bins_.width)));
    double squares = 0.0, freedom = 0.0;
    for (int a = 0; a + group <= bins_.size(); a += group) {
        const double middle = (a + 0.5 * group - 0.5 - bins_.centre) * bins_.width;
        if (std::fabs(middle - centre) <= reach + 0.5 || middle < first_ || middle > last_) {
            continue;
        }
        // A line through the group's samples, from the sums of their positions and levels.
        double s0 = 0.0, sx = 0.0, sxx = 0.0, sv = 0.0, sxv = 0.0, svv = 0.0;
        for (int k = a; k < a + group; ++k) {
            const size_t kk = static_cast<size_t>(k);
            const double x = bins_.position(k) - middle;
            s0 += bins_.count[kk];
            sx += bins_.sumOffset[kk] + x * bins_.count[kk];
            sxx += bins_.sumOffset2[kk] + 2.0 * x * bins_.sumOffset[kk] + x * x * bins_.count[kk];
            sv += bins_.sumLevel[kk];
            sxv += bins_.sumOffsetLevel[kk] + x * bins_.sumLevel[kk];
            svv += bins_.sumLevel2[kk];
        }
        if (s0 <= 2.0) {
            continue;
        }
        const double spread = sxx - sx * sx / s0;
        const double covariance = sxv - sx * sv / s0;
        double residual = svv - sv * sv / s0;
        if (spread > 0.0) {
            residual -= covariance * covariance / spread;
        }
        squares += std::max(0.0, residual);
        freedom += s0 - 2.0;
    }
    return freedom > 0.0 ? std::sqrt(squares / freedom) : 0.0;
}

namespace {
// The edge spread's level at `b` averaged over +-half: from the core's profile where the
// window lies within its outputs lo..hi, from the samples beyond.
double levelNear(const LocalLinearProfile& p, int lo, int hi, const FarField& far, double b,
                 double half) {
    if (b - half >= p.position(lo) && b + half <= p.position(hi)) {
        if (2.0 * half >= kMinWindowSteps * p.step) {
            const int a = static_cast<int>(std::ceil((b - half) / p.step)) - p.first;
            const int z = static_cast<int>(std::floor((b + half) / p.step)) - p.first;
            double sum = 0.0;
            for (int k = a; k <= z; ++k) {
                sum += p.level[static_cast<size_t>(k)];
            }
            return sum / (z - a + 1);
        }
        return p.levelAt(b, lo, hi);
    }
    const double mean = far.meanLevel(b - half, b + half);
    return std::isfinite(mean) ? mean : p.levelAt(b, lo, hi);
}
}  // namespace

std::vector<TailBlob> lineSpreadTail(const LocalLinearProfile& p, int lo, int hi,
                                     const FarField& far, double start, double end, int direction,
                                     double coreEdge, double widening) {
    std::vector<TailBlob> out;
    double boundary = start;
    double level = p.levelAt(boundary, lo, hi);
    int left = static_cast<int>(std::lround(direction * (end - boundary) / p.step));
    while (left > 0) {
        // A blob about as long as it is wide: its own extent is then lost in its spread.
        const double beyond = std::fabs(boundary + 0.5 * direction * p.step - coreEdge);
        const int n = std::min(left, std::max(1, static_cast<int>(widening * beyond / p.step)));
        left -= n;
        const double next = boundary + direction * n * p.step;
        const double nextLevel =
            levelNear(p, lo, hi, far, next, 0.5 * widening * std::fabs(next - coreEdge));
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

}  // namespace sfr
}  // namespace talonvireo
