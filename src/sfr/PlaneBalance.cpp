#include "sfr/PlaneBalance.h"

#include <cmath>
#include <stdexcept>

#include "sfr/PreciseSfr.h"
#include "sfr/SampleBins.h"

namespace talonvireo {
namespace sfr {

PlaneLevels planeLevels(const EdgeSamples& plane, const EdgeFrame& frame, double inner,
                        double outer) {
    double sum[2] = {0.0, 0.0}, count[2] = {0.0, 0.0};
    for (int i = 0; i < plane.rows(); ++i) {
        const float* level = plane.values.ptr<float>(i);
        const ColumnSpan span = columnsWithin(plane, frame, i, outer);
        for (int j = span.first; j < span.last; ++j) {
            const double d = frame.distance(plane.x(j), plane.y(i));
            if (std::fabs(d) >= inner) {
                sum[d > 0.0] += level[j];
                count[d > 0.0] += 1.0;
            }
        }
    }
    if (count[0] == 0.0 || count[1] == 0.0) {
        return {};  // no step to scale by: balancedMosaic refuses it
    }
    return {sum[0] / count[0], sum[1] / count[1]};
}

EdgeSamples balancedMosaic(const std::array<EdgeSamples, 4>& planes,
                           const std::array<PlaneLevels, 4>& levels, int rows, int cols) {
    EdgeSamples out;
    out.values.create(rows, cols, CV_32F);
    out.values.setTo(0.0f);
    for (size_t k = 0; k < planes.size(); ++k) {
        const EdgeSamples& p = planes[k];
        const double height = levels[k].light - levels[k].dark;
        if (!(std::fabs(height) > 0.0)) {
            throw NoSpectrum();
        }
        for (int i = 0; i < p.rows(); ++i) {
            const float* src = p.values.ptr<float>(i);
            float* dst = out.values.ptr<float>(p.y0 + p.pitch * i);
            for (int j = 0; j < p.cols(); ++j) {
                dst[p.x0 + p.pitch * j] = static_cast<float>((src[j] - levels[k].dark) / height);
            }
        }
    }
    return out;
}

}  // namespace sfr
}  // namespace talonvireo
