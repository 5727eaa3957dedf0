#include "sfr/SampleBins.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace talonvireo {
namespace sfr {

namespace {
// Adding and taking away 1.5 * 2^52 rounds any |x| < 2^51 to an integer, exactly.
constexpr double kRounder = 6755399441055744.0;

// One row's samples, ready to add: the bin each falls in (counted from the middle bin, a
// whole number) and its weighted terms.
struct RowTerms {
    std::vector<double> bin, qe, qee, qv, qev, qvv;
};

// The terms of `size` samples from column `first` on. The bins' range is bounded (at most
// 1e6 bins each side), so std::floor can be done as rounding less one where that rounded
// up. Apart from the adding, which stays in column order, the samples are independent, so
// this loop can run several at once.
void rowTerms(double start, double step, int first, int size, const float* level, double q,
              double inverse, double width, double* __restrict bin, double* __restrict qe,
              double* __restrict qee, double* __restrict qv, double* __restrict qev,
              double* __restrict qvv) {
    for (int s = 0; s < size; ++s) {
        qvv[s] = level[first + s];  // widened first: a loop of one width runs best
    }
    for (int s = 0; s < size; ++s) {
        const double d = start + step * (first + s);
        const double x = d * inverse + 0.5;
        const double y = (x + kRounder) - kRounder;
        const double r = y > x ? y - 1.0 : y;
        const double e = d - r * width;
        const double v = qvv[s];
        bin[s] = r;
        qe[s] = q * e;
        qee[s] = qe[s] * e;
        qv[s] = q * v;
        qev[s] = qe[s] * v;
        qvv[s] = qv[s] * v;
    }
}
}  // namespace

ColumnSpan columnsWithin(double start, double step, int cols, double range) {
    double lo = (-range - start) / step;
    double hi = (range - start) / step;
    if (lo > hi) {
        std::swap(lo, hi);
    }
    // ceil(lo) and floor(hi) + 1 held to 0..cols; inside those bounds they are the
    // truncations (rounded up where lo was not whole).
    ColumnSpan span;
    if (lo >= cols) {
        span.first = cols;
    } else if (lo > 0.0) {
        const int t = static_cast<int>(lo);
        span.first = t < lo ? t + 1 : t;
    }
    if (hi >= cols - 1.0) {
        span.last = cols;
    } else if (hi >= 0.0) {
        span.last = static_cast<int>(hi) + 1;
    }
    span.last = std::max(span.last, span.first);
    return span;
}

ColumnSpan columnsWithin(const EdgeSamples& samples, const EdgeFrame& frame, int i, double range) {
    const double scale = frame.scale();
    const double start = (samples.x(0) - frame.line.intercept - frame.line.slope * samples.y(i)) *
                         scale;                 // distance of column 0
    const double step = samples.pitch * scale;  // per column, signed
    return columnsWithin(start, step, samples.cols(), range);
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
    for (auto* v : {&bins.count, &bins.sumOffset, &bins.sumOffset2, &bins.sumLevel,
                    &bins.sumOffsetLevel, &bins.sumLevel2}) {
        v->assign(static_cast<size_t>(n), 0.0);
    }
    double* count = bins.count.data();
    double* sumOffset = bins.sumOffset.data();
    double* sumOffset2 = bins.sumOffset2.data();
    double* sumLevel = bins.sumLevel.data();
    double* sumOffsetLevel = bins.sumOffsetLevel.data();
    double* sumLevel2 = bins.sumLevel2.data();
    const double scale = frame.scale();
    const double inverse = 1.0 / width;
    const double step = samples.pitch * scale;
    RowTerms row;
    for (auto* v : {&row.bin, &row.qe, &row.qee, &row.qv, &row.qev, &row.qvv}) {
        v->resize(static_cast<size_t>(samples.cols()));
    }
    for (int i = 0; i < samples.rows(); ++i) {
        const double q = rowWeight[static_cast<size_t>(i)];
        const double start =
            (samples.x(0) - frame.line.intercept - frame.line.slope * samples.y(i)) * scale;
        const ColumnSpan span = columnsWithin(start, step, samples.cols(), range);
        const int size = span.last - span.first;
        rowTerms(start, step, span.first, size, samples.values.ptr<float>(i), q, inverse, width,
                 row.bin.data(), row.qe.data(), row.qee.data(), row.qv.data(), row.qev.data(),
                 row.qvv.data());
        for (int s = 0; s < size; ++s) {
            const long k = static_cast<long>(row.bin[s]) + bins.centre;
            if (k < 0 || k >= n) {
                continue;
            }
            count[k] += q;
            sumOffset[k] += row.qe[s];
            sumOffset2[k] += row.qee[s];
            sumLevel[k] += row.qv[s];
            sumOffsetLevel[k] += row.qev[s];
            sumLevel2[k] += row.qvv[s];
        }
    }
    return bins;
}

}  // namespace sfr
}  // namespace talonvireo
