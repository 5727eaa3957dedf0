#include "sfr/SampleBins.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace talonvireo {
namespace sfr {

ColumnSpan columnsWithin(const EdgeSamples& samples, const EdgeFrame& frame, int i, double range) {
    const double scale = frame.scale();
    const double start = (samples.x(0) - frame.line.intercept - frame.line.slope * samples.y(i)) *
                         scale;                 // distance of column 0
    const double step = samples.pitch * scale;  // per column, signed
    double lo = (-range - start) / step;
    double hi = (range - start) / step;
    if (lo > hi) {
        std::swap(lo, hi);
    }
    ColumnSpan span;
    span.first = static_cast<int>(std::clamp(std::ceil(lo), 0.0, double(samples.cols())));
    span.last = static_cast<int>(std::clamp(std::floor(hi) + 1.0, 0.0, double(samples.cols())));
    span.last = std::max(span.last, span.first);
    return span;
}

SampleBins binByDistance(const EdgeSamples& samples, const std::vector<double>& rowWeight,
                         const EdgeFrame& frame, double range, double width) {
    if (!(width > 0.0) || !(range > 0.0) || range / width > 1.0e6 ||
        rowWeight.size() != static_cast<size_t>(samples.rows())) {
        throw std::invalid_argument("bins need a positive width and range");
    }
    SampleBins bins;
    bins.width = width;
    bins.centre = static_cast<int>(std::ceil(range / width));
    const long n = 2L * bins.centre + 1;
    for (auto* sums : {&bins.count, &bins.sumOffset, &bins.sumOffset2, &bins.sumLevel,
                       &bins.sumOffsetLevel, &bins.sumLevel2}) {
        sums->assign(static_cast<size_t>(n), 0.0);
    }
    const double scale = frame.scale();
    const double inverse = 1.0 / width;
    for (int i = 0; i < samples.rows(); ++i) {
        const double q = rowWeight[static_cast<size_t>(i)];
        const double start =
            (samples.x(0) - frame.line.intercept - frame.line.slope * samples.y(i)) * scale;
        const double step = samples.pitch * scale;
        const float* level = samples.values.ptr<float>(i);
        const ColumnSpan span = columnsWithin(samples, frame, i, range);
        for (int j = span.first; j < span.last; ++j) {
            const double d = start + step * j;
            const long k = static_cast<long>(std::floor(d * inverse + 0.5)) + bins.centre;
            if (k < 0 || k >= n) {
                continue;
            }
            const double e = d - (k - bins.centre) * width;
            const double v = level[j];
            bins.count[k] += q;
            bins.sumOffset[k] += q * e;
            bins.sumOffset2[k] += q * e * e;
            bins.sumLevel[k] += q * v;
            bins.sumOffsetLevel[k] += q * e * v;
            bins.sumLevel2[k] += q * v * v;
        }
    }
    return bins;
}

}  // namespace sfr
}  // namespace talonvireo
