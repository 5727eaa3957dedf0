#include "detect/SideRefinement.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace talonvireo {
namespace detect {

namespace {

// Samples averaged at each end of a profile for its dark and light levels.
constexpr int kLevelSamples = 3;
// The step must reach this share of the lighter level: flat ground gives nothing.
constexpr double kMinRelativeStep = 0.12;
// Profiles start this far from each corner, in half-widths plus pixels, so that the
// neighbouring side's blur never enters a window; at most this share of the side each end.
constexpr double kCornerHalfWidths = 1.5;
constexpr double kCornerPixels = 8.0;
constexpr double kMaxCornerShare = 0.3;
// Positions farther from the fit than this many robust deviations are dropped (never
// closer than the floor: the sampling itself scatters them by a few hundredths).
constexpr double kOutlierDeviations = 3.0;
constexpr double kOutlierFloor = 0.25;
// Second-pass half-length: the rise times this, plus the level samples, within these bounds.
constexpr double kRiseHalfWidths = 1.3;
constexpr int kMinSecondHalfWidth = 4;
// Samples within this share of the rise (and at least a pixel) of the edge make its 50 %
// line: about one blur sigma either side, where the edge is nearly straight.
constexpr double kCrossingShare = 0.4;
// Sides longer than this (pixels) are crossed by every other profile in the first pass.
constexpr double kSparseSideLength = 80.0;

// The frame seen with "along" the axis the side runs nearer to.
struct Axes {
    bool columns;  // profiles run down columns: along = x, across = y
    cv::Point2d swap(cv::Point2d p) const { return columns ? p : cv::Point2d(p.y, p.x); }
};

// Profiles across the side, each 2 w + 1 whole pixels centred on the predicted line.
struct Profiles {
    int w = 0;
    std::vector<int> along;
    std::vector<int> centre;
    std::vector<double> values;
    size_t count() const { return along.size(); }
    const double* row(size_t j) const { return values.data() + j * (2 * w + 1); }
};

template <typename T>
Profiles gather(const cv::Mat& grey, const SideSearch& s, Axes axes, double a, double b, int w,
                int stride) {
    const cv::Point2d p0 = axes.swap(s.from), p1 = axes.swap(s.to);
    const int alongSize = axes.columns ? grey.cols : grey.rows;
    const int acrossSize = axes.columns ? grey.rows : grey.cols;
    const double length = cv::norm(p1 - p0);
    const double cosine = std::abs(p1.x - p0.x) / length;
    const double margin =
        std::min(kCornerHalfWidths * w + kCornerPixels, kMaxCornerShare * length) * cosine;
    const int first = std::max(0, static_cast<int>(std::ceil(std::min(p0.x, p1.x) + margin)));
    const int last =
        std::min(alongSize - 1, static_cast<int>(std::floor(std::max(p0.x, p1.x) - margin)));
    Profiles p;
    p.w = w;
    const size_t capacity = static_cast<size_t>(std::max(0, (last - first) / stride + 1));
    p.along.reserve(capacity);
    p.centre.reserve(capacity);
    p.values.reserve(capacity * (2 * w + 1));
    for (int along = first; along <= last; along += stride) {
        const int centre = static_cast<int>(std::lround(a + b * along));
        if (centre - w < 0 || centre + w >= acrossSize) {
            continue;
        }
        p.along.push_back(along);
        p.centre.push_back(centre);
        for (int k = centre - w; k <= centre + w; ++k) {
            p.values.push_back(axes.columns ? grey.at<T>(k, along) : grey.at<T>(along, k));
        }
    }
    return p;
}

// y = a + b x by least squares over the marked points; false for too few.
bool fitStraight(const std::vector<double>& x, const std::vector<double>& y,
                 const std::vector<char>& use, double& a, double& b) {
    double n = 0.0, mx = 0.0, my = 0.0;
    for (size_t i = 0; i < x.size(); ++i) {
        if (use[i]) {
            n += 1.0;
            mx += x[i];
            my += y[i];
        }
    }
    if (n < kMinProfiles) {
        return false;
    }
    mx /= n;
    my /= n;
    double sxx = 0.0, sxy = 0.0;
    for (size_t i = 0; i < x.size(); ++i) {
        if (use[i]) {
            sxx += (x[i] - mx) * (x[i] - mx);
            sxy += (x[i] - mx) * (y[i] - my);
        }
    }
    if (!(sxx > 0.0)) {
        return false;
    }
    b = sxy / sxx;
    a = my - b * mx;
    return true;
}

// Unmarks the points farther from the line than kOutlierDeviations robust deviations.
void dropOutliers(const std::vector<double>& x, const std::vector<double>& y, double a, double b,
                  double floor, std::vector<char>& use) {
    std::vector<double> residual;
    for (size_t i = 0; i < x.size(); ++i) {
        if (use[i]) {
            residual.push_back(std::abs(y[i] - (a + b * x[i])));
        }
    }
    if (residual.empty()) {
        return;
    }
    std::vector<double> sorted = residual;
    auto mid = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), mid, sorted.end());
    const double limit = std::max(floor, kOutlierDeviations * 1.4826 * *mid);
    for (size_t i = 0; i < x.size(); ++i) {
        if (use[i] && std::abs(y[i] - (a + b * x[i])) > limit) {
            use[i] = 0;
        }
    }
}

// Robust straight-line fit: fit, drop outliers, fit again.
bool fitRobust(const std::vector<double>& x, const std::vector<double>& y, double floor,
               std::vector<char>& use, double& a, double& b) {
    if (!fitStraight(x, y, use, a, b)) {
        return false;
    }
    dropOutliers(x, y, a, b, floor, use);
    return fitStraight(x, y, use, a, b);
}

// y = a + b (x - xm) + c (x - xm)^2 by least squares over the marked points, with the
// standard error of c; false for too few points or a degenerate spread.
bool fitParabola(const std::vector<double>& x, const std::vector<double>& y,
                 const std::vector<char>& use, double xm, double& a, double& b, double& c,
                 double& cError) {
    // Normal equations in u = x - xm; sums up to u^4.
    double s[5] = {0, 0, 0, 0, 0}, t[3] = {0, 0, 0};
    for (size_t i = 0; i < x.size(); ++i) {
        if (!use[i]) {
            continue;
        }
        const double u = x[i] - xm;
        double p = 1.0;
        for (int k = 0; k < 5; ++k) {
            s[k] += p;
            if (k < 3) {
                t[k] += p * y[i];
            }
            p *= u;
        }
    }
    if (s[0] < kMinProfiles + 1) {
        return false;
    }
    const cv::Matx33d m(s[0], s[1], s[2], s[1], s[2], s[3], s[2], s[3], s[4]);
    cv::Matx33d inverse;
    if (std::abs(cv::determinant(m)) < 1e-12 * std::max(1.0, s[4] * s[2] * s[0])) {
        return false;
    }
    inverse = m.inv(cv::DECOMP_SVD);
    const cv::Vec3d coef = inverse * cv::Vec3d(t[0], t[1], t[2]);
    a = coef[0];
    b = coef[1];
    c = coef[2];
    double sum2 = 0.0;
    for (size_t i = 0; i < x.size(); ++i) {
        if (use[i]) {
            const double u = x[i] - xm;
            const double r = y[i] - (a + u * (b + u * c));
            sum2 += r * r;
        }
    }
    cError = std::sqrt(sum2 / (s[0] - 3.0) * inverse(2, 2));
    return true;
}

// Unmarks the points farther from the parabola than kOutlierDeviations robust deviations.
void dropParabolaOutliers(const std::vector<double>& x, const std::vector<double>& y, double xm,
                          double a, double b, double c, double floor, std::vector<char>& use) {
    std::vector<double> shifted(y.size());
    for (size_t i = 0; i < x.size(); ++i) {
        const double u = x[i] - xm;
        shifted[i] = y[i] - u * u * c;
    }
    dropOutliers(x, shifted, a - b * xm, b, floor, use);
}

// Dark and light levels along the side: the start and end level of each profile, fitted by
// straight lines in `along`. Profiles whose step is missing or of the wrong sense, or whose
// levels stray from the fit, are unmarked.
struct Levels {
    double startA = 0.0, startB = 0.0, endA = 0.0, endB = 0.0;
    double start(double along) const { return startA + startB * along; }
    double end(double along) const { return endA + endB * along; }
};

bool fitLevels(const Profiles& p, double rising, Levels& levels, std::vector<char>& use) {
    const size_t n = p.count();
    std::vector<double> x(n), start(n), end(n);
    use.assign(n, 0);
    double scale = 0.0;
    for (size_t j = 0; j < n; ++j) {
        const double* v = p.row(j);
        for (int k = 0; k < kLevelSamples; ++k) {
            start[j] += v[k];
            end[j] += v[2 * p.w - k];
        }
        start[j] /= kLevelSamples;
        end[j] /= kLevelSamples;
        x[j] = p.along[j];
        const double step = (end[j] - start[j]) * rising;
        use[j] = step >= kMinRelativeStep * std::max(start[j], end[j]) ? 1 : 0;
        scale = std::max(scale, std::abs(step));
    }
    // A profile that strays from either level's fit by more than a tenth of the step
    // crosses something else.
    std::vector<char> useStart = use, useEnd = use;
    if (!fitRobust(x, start, 0.1 * scale, useStart, levels.startA, levels.startB) ||
        !fitRobust(x, end, 0.1 * scale, useEnd, levels.endA, levels.endB)) {
        return false;
    }
    for (size_t j = 0; j < n; ++j) {
        use[j] = useStart[j] && useEnd[j] ? 1 : 0;
    }
    return true;
}

// Where a sharp step between the levels would hold the profile's sum.
double balancePosition(const Profiles& p, size_t j, double start, double end) {
    const double* v = p.row(j);
    double before = 0.0;
    for (int k = 0; k <= 2 * p.w; ++k) {
        before += (v[k] - end) / (start - end);
    }
    return p.centre[j] - p.w - 0.5 + before;
}

// 50 % position by a straight line through the normalised samples near `guess`.
bool crossingPosition(const Profiles& p, size_t j, double start, double end, double guess,
                      double reach, double& at) {
    const double* v = p.row(j);
    double n = 0.0, mq = 0.0, mf = 0.0, sqq = 0.0, sqf = 0.0;
    const int lo = std::max(0, static_cast<int>(std::ceil(guess - reach)) - (p.centre[j] - p.w));
    const int hi =
        std::min(2 * p.w, static_cast<int>(std::floor(guess + reach)) - (p.centre[j] - p.w));
    for (int k = lo; k <= hi; ++k) {
        n += 1.0;
        mq += k;
        mf += (v[k] - start) / (end - start);
    }
    if (n < 2.0) {
        return false;
    }
    mq /= n;
    mf /= n;
    for (int k = lo; k <= hi; ++k) {
        const double f = (v[k] - start) / (end - start);
        sqq += (k - mq) * (k - mq);
        sqf += (k - mq) * (f - mf);
    }
    if (!(sqf > 0.0)) {
        return false;
    }
    at = p.centre[j] - p.w + mq + (0.5 - mf) * sqq / sqf;
    return std::abs(at - guess) <= reach + 0.5;
}

// The 10-90 % rise of one normalised profile, walking out from the edge at `at`.
bool risePixels(const Profiles& p, size_t j, double start, double end, double at, double& rise) {
    const double* v = p.row(j);
    auto f = [&](int k) { return (v[k] - start) / (end - start); };
    const int k0 =
        std::clamp(static_cast<int>(std::lround(at)) - (p.centre[j] - p.w), 1, 2 * p.w - 1);
    int hi = k0;
    while (hi < 2 * p.w && f(hi) < 0.9) {
        ++hi;
    }
    int lo = k0;
    while (lo > 0 && f(lo) > 0.1) {
        --lo;
    }
    if (f(hi) < 0.9 || f(lo) > 0.1) {
        return false;
    }
    const double q90 = hi - 1 + (0.9 - f(hi - 1)) / (f(hi) - f(hi - 1));
    const double q10 = lo + (0.1 - f(lo)) / (f(lo + 1) - f(lo));
    rise = q90 - q10;
    return std::isfinite(rise) && rise > 0.0;
}

// A bow is kept only when it reaches this many pixels over the half side and this many of
// its own standard errors: a straight side's fit stays a line, with its smaller scatter.
constexpr double kMinBowPixels = 0.05;
constexpr double kBowSignificance = 3.0;

struct PassResult {
    // across = a + b along + c (along - xm)^2: the tangent at xm plus the side's bow.
    double a = 0.0, b = 0.0;
    double c = 0.0;
    double xm = 0.0;
    int kept = 0;
    double rms = 0.0;
    double rise = 0.0;
};

// One pass: profiles around across = a + b along, their positions, the line through them.
template <typename T>
bool pass(const cv::Mat& grey, const SideSearch& s, Axes axes, double a, double b, int w,
          bool crossing, double crossingReach, PassResult& out) {
    // The first pass only centres the second and measures the rise: every other profile of
    // a long side does.
    const int stride = !crossing && cv::norm(s.to - s.from) > kSparseSideLength ? 2 : 1;
    const Profiles p = gather<T>(grey, s, axes, a, b, w, stride);
    const double rising = s.polarity * (axes.swap(s.outward).y > 0.0 ? 1.0 : -1.0);
    Levels levels;
    std::vector<char> use;
    if (!fitLevels(p, rising, levels, use)) {
        return false;
    }
    std::vector<double> x(p.count()), y(p.count());
    std::vector<double> rises;
    for (size_t j = 0; j < p.count(); ++j) {
        if (!use[j]) {
            continue;
        }
        x[j] = p.along[j];
        const double start = levels.start(x[j]), end = levels.end(x[j]);
        if ((end - start) * rising < kMinRelativeStep * std::max(start, end)) {
            use[j] = 0;
            continue;
        }
        double at = balancePosition(p, j, start, end);
        if (at < p.centre[j] - w + kLevelSamples || at > p.centre[j] + w - kLevelSamples) {
            use[j] = 0;
            continue;
        }
        if (crossing && !crossingPosition(p, j, start, end, at, crossingReach, at)) {
            use[j] = 0;
            continue;
        }
        y[j] = at;
        double rise = 0.0;
        if (!crossing && risePixels(p, j, start, end, at, rise)) {
            rises.push_back(rise);
        }
    }
    out.xm = 0.5 * (axes.swap(s.from).x + axes.swap(s.to).x);
    out.c = 0.0;
    std::vector<char> useCurve = use;
    if (!fitRobust(x, y, kOutlierFloor, use, out.a, out.b) || (!crossing && rises.empty())) {
        return false;
    }
    // A side that lens distortion bows is followed by a parabola, never forced straight.
    double ca = 0.0, cb = 0.0, cc = 0.0, ce = 0.0;
    if (crossing && fitParabola(x, y, useCurve, out.xm, ca, cb, cc, ce)) {
        dropParabolaOutliers(x, y, out.xm, ca, cb, cc, kOutlierFloor, useCurve);
        const double half = 0.5 * std::abs(axes.swap(s.to).x - axes.swap(s.from).x);
        if (fitParabola(x, y, useCurve, out.xm, ca, cb, cc, ce) &&
            std::abs(cc) * half * half >= kMinBowPixels && std::abs(cc) >= kBowSignificance * ce) {
            out.a = ca - cb * out.xm;
            out.b = cb;
            out.c = cc;
            use = useCurve;
        }
    }
    double sum2 = 0.0;
    out.kept = 0;
    for (size_t j = 0; j < p.count(); ++j) {
        if (use[j]) {
            const double u = x[j] - out.xm;
            const double r = y[j] - (out.a + out.b * x[j] + out.c * u * u);
            sum2 += r * r;
            ++out.kept;
        }
    }
    out.rms = std::sqrt(sum2 / out.kept);
    if (!rises.empty()) {
        auto mid = rises.begin() + static_cast<std::ptrdiff_t>(rises.size() / 2);
        std::nth_element(rises.begin(), mid, rises.end());
        out.rise = *mid;
    }
    return true;
}

template <typename T>
bool refine(const cv::Mat& grey, const SideSearch& s, SideFit& fit) {
    const cv::Point2d d = s.to - s.from;
    const Axes axes{std::abs(d.x) >= std::abs(d.y)};
    const cv::Point2d p0 = axes.swap(s.from), p1 = axes.swap(s.to);
    const double b0 = (p1.y - p0.y) / (p1.x - p0.x);
    PassResult first, second;
    // A side running close along the frame border leaves room only for shorter profiles.
    if (!pass<T>(grey, s, axes, p0.y - b0 * p0.x, b0, s.halfWidth, false, 0.0, first) &&
        (s.halfWidth / 2 < kMinSecondHalfWidth ||
         !pass<T>(grey, s, axes, p0.y - b0 * p0.x, b0, s.halfWidth / 2, false, 0.0, first))) {
        return false;
    }
    const int w =
        std::clamp(static_cast<int>(std::ceil(kRiseHalfWidths * first.rise)) + kLevelSamples,
                   kMinSecondHalfWidth, s.halfWidth);
    const double reach = std::max(1.0, kCrossingShare * first.rise);
    if (!pass<T>(grey, s, axes, first.a, first.b, w, true, reach, second)) {
        return false;
    }
    fit.profiles = second.kept;
    fit.rms = second.rms;
    fit.rise = first.rise;
    const double mid = second.xm;
    const double half = 0.5 * std::abs(p1.x - p0.x);
    // For a parabola the chord between two points symmetric about xm runs parallel to the
    // tangent at xm, c half^2 across from it: the chord is the side's line.
    const cv::Point2d onCurve = axes.swap({mid, second.a + second.b * mid});
    const cv::Point2d chordPoint =
        axes.swap({mid, second.a + second.b * mid + second.c * half * half});
    cv::Point2d dir = axes.swap({1.0, second.b});
    dir /= cv::norm(dir);
    if (dir.dot(d) < 0.0) {
        dir = -dir;
    }
    fit.line = {chordPoint, dir};
    fit.midpoint = onCurve;
    // Across offsets in along units become distances along the normal by the cosine.
    const double cosine = 1.0 / std::sqrt(1.0 + second.b * second.b);
    fit.bow = second.c == 0.0 ? 0.0 : (onCurve - chordPoint).dot(s.outward);
    fit.curvature = std::abs(second.c) * cosine * cosine * cosine;
    return true;
}

}  // namespace

bool refineSide(const cv::Mat& grey, const SideSearch& search, SideFit& fit) {
    CV_Assert(grey.channels() == 1 && (grey.depth() == CV_8U || grey.depth() == CV_16U));
    return grey.depth() == CV_8U ? refine<unsigned char>(grey, search, fit)
                                 : refine<unsigned short>(grey, search, fit);
}

}  // namespace detect
}  // namespace talonvireo
