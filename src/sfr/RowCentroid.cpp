#include "sfr/RowCentroid.h"

#include "sfr/SfrConstants.h"

namespace talonvireo {
namespace sfr {

namespace {
double centroidOf(double weightSum, double momentSum) {
    return weightSum < kMinCentroidWeight ? 0.0 : momentSum / weightSum;
}
}  // namespace

double rowCentroid(const double* v, int n) {
    double sum = 0.0;
    double moment = 0.0;
    for (int i = 0; i < n; ++i) {
        sum += v[i];
        moment += (i + 1) * v[i];
    }
    return centroidOf(sum, moment);
}

double weightedRowCentroid(const double* v, const double* w, int n) {
    double sum = 0.0;
    double moment = 0.0;
    for (int i = 0; i < n; ++i) {
        const double p = v[i] * w[i];
        sum += p;
        moment += (i + 1) * p;
    }
    return centroidOf(sum, moment);
}

}  // namespace sfr
}  // namespace talonvireo
