#include "sfr/EdgeQuality.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace talonvireo {
namespace sfr {

namespace {
// Bins of the classic edge spread: quarter pixels along the working image's rows.
constexpr double kEsfBin = 0.25;

double meanOf(const std::vector<double>& v, std::size_t from, std::size_t to) {
    double sum = 0.0;
    for (std::size_t i = from; i < to; ++i) {
        sum += v[i];
    }
    return to > from ? sum / static_cast<double>(to - from) : 0.0;
}

// The 10-90 % rise of the edge spread, in its bins; 0 for a spread too short to tell.
double riseInBins(const std::vector<double>& esf) {
    const std::size_t n = esf.size();
    const std::size_t tail = std::max<std::size_t>(1, n / 10);
    if (n < 4 * tail) {
        return 0.0;
    }
    const double lo = meanOf(esf, 0, tail);
    const double hi = meanOf(esf, n - tail, n);
    if (lo == hi) {
        return 0.0;
    }
    std::size_t k10 = n, k90 = n;
    for (std::size_t k = 0; k < n; ++k) {
        const double g = (esf[k] - lo) / (hi - lo);
        if (k10 == n && g >= 0.1) {
            k10 = k;
        }
        if (k90 == n && g >= 0.9) {
            k90 = k;
        }
    }
    return k90 > k10 && k90 < n ? static_cast<double>(k90 - k10) : 0.0;
}
// The two sides' mean levels and noise clear of q's transition zone.
void readPlateaus(const cv::Mat& region, EdgeQuality& q);
}  // namespace

EdgeQuality edgeQuality(const SfrContext& ctx, const cv::Mat& region) {
    EdgeQuality q;
    if (ctx.profiles.empty() || region.channels() != 1 || region.empty()) {
        return q;
    }
    const ChannelProfile& p = ctx.profiles[0];
    const double slope = p.line.slope;
    const double norm = 1.0 / std::sqrt(1.0 + slope * slope);
    if (!p.rotated) {
        // Working (row r, column c) is the region's; the line is c = intercept + slope r.
        q.a = norm;
        q.b = -slope * norm;
        q.c = -p.line.intercept * norm;
    } else {
        // A quarter turn: working (i, j) is region (row j, column cols - 1 - i).
        const double last = region.cols - 1.0;
        q.a = slope * norm;
        q.b = norm;
        q.c = (-p.line.intercept - slope * last) * norm;
    }
    q.transitionHalfWidth = riseInBins(p.esf) * kEsfBin * norm + 1.0;
    readPlateaus(region, q);
    return q;
}

EdgeQuality edgeQualityAbout(const cv::Mat& region, cv::Point2d point, cv::Point2d direction,
                             double transitionHalfWidth) {
    EdgeQuality q;
    if (region.channels() != 1 || region.empty()) {
        return q;
    }
    q.a = direction.y;
    q.b = -direction.x;
    q.c = -(q.a * point.x + q.b * point.y);
    q.transitionHalfWidth = transitionHalfWidth;
    readPlateaus(region, q);
    return q;
}

namespace {
void readPlateaus(const cv::Mat& region, EdgeQuality& q) {
    cv::Mat levels;
    region.convertTo(levels, CV_64F);
    double sum[2] = {0.0, 0.0}, sum2[2] = {0.0, 0.0};
    long count[2] = {0, 0};
    const double clear = q.transitionHalfWidth + 1.0;
    for (int y = 0; y < levels.rows; ++y) {
        const double* row = levels.ptr<double>(y);
        for (int x = 0; x < levels.cols; ++x) {
            const double d = q.distance(x, y);
            if (std::fabs(d) <= clear) {
                continue;
            }
            const int side = d > 0.0 ? 1 : 0;
            sum[side] += row[x];
            sum2[side] += row[x] * row[x];
            ++count[side];
        }
    }
    if (count[0] < 2 || count[1] < 2) {
        return;
    }
    const double mean0 = sum[0] / count[0];
    const double mean1 = sum[1] / count[1];
    q.darkLevel = std::min(mean0, mean1);
    q.lightLevel = std::max(mean0, mean1);
    const double scatter = (sum2[0] - mean0 * sum[0]) + (sum2[1] - mean1 * sum[1]);
    q.noise = std::sqrt(std::max(0.0, scatter) / static_cast<double>(count[0] + count[1] - 2) +
                        1.0 / 12.0);
}
}  // namespace

void countClipped(const cv::Mat& raw, const EdgeQuality& quality, double whiteLevel, long& zone,
                  long& clipped) {
    zone = 0;
    clipped = 0;
    if (raw.type() != CV_16UC1 || !std::isfinite(quality.transitionHalfWidth)) {
        return;
    }
    for (int y = 0; y < raw.rows; ++y) {
        const std::uint16_t* row = raw.ptr<std::uint16_t>(y);
        for (int x = 0; x < raw.cols; ++x) {
            if (std::fabs(quality.distance(x, y)) <= quality.transitionHalfWidth) {
                ++zone;
                clipped += row[x] >= whiteLevel ? 1 : 0;
            }
        }
    }
}

}  // namespace sfr
}  // namespace talonvireo
