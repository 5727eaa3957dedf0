#include "locate/ChartRegistrationFit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>

#include "locate/RegistrationLeastSquares.h"

namespace talonvireo {
namespace locate {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kDeg = kPi / 180.0;

// Seeds: each shape is paired with its nearest shapes, each anchor quad with its nearest quads.
constexpr int kShapeNeighbours = 8;
constexpr int kQuadNeighbours = 6;
constexpr int kMaxAnchors = 10;
// A seed that places this many of its neighbourhood on found quads needs no further anchor.
constexpr int kConfidentSeedScore = 6;
constexpr int kMinSeedScore = 3;
constexpr int kMaxCandidates = 6;
// Between two neighbours: distance and size ratios, relative turn, and bearing from the first.
// Lens distortion squeezes a frame corner more along the radius than across it, which skews
// bearings there by several degrees but leaves a square's mean turn nearly as it was.
constexpr double kRatioTolerance = 0.2;
constexpr double kTurnTolerance = 2.5 * kDeg;
constexpr double kBearingTolerance = 10.0 * kDeg;
// Size of a found quad over the size the model predicts.
constexpr double kSizeRatioLow = 0.8;
constexpr double kSizeRatioHigh = 1.25;

// Growth: while the model extrapolates, corners within this fraction of the predicted size; the
// reach grows by kGrowthFactor a step so that no step extrapolates far.
constexpr double kGrowthTolerance = 0.2;
constexpr double kGrowthFactor = 1.6;
constexpr double kFirstReach = 2.2;  // nearest-neighbour spacings about the seed
// A grown placement whose corners miss by this much is a wrong seed: stop growing it.
constexpr double kAbortRms = 2.0 * kMaxRegistrationRms;
// Settling: corners within this, or four times the fit's rms, of the model.
constexpr double kMatchPixels = 1.5;
constexpr int kSettleRounds = 5;
// Terms by what the matched corners can carry: perspective from four shapes on; k1 once they
// reach rho 0.3 (nearer the centre the homography takes up nearly all of it); k2 from six
// shapes reaching rho 0.4, and then only where it earns its place (below).
constexpr std::size_t kPerspectiveShapes = 4;
constexpr double kK1Reach = 0.3;
constexpr std::size_t kK2Shapes = 6;
constexpr double kK2Reach = 0.4;
// k2 is kept where it lowers the corners' sum of squares by more than this many times their
// noise variance (a chi-square of one term at four sigma), noise taken as no less than
// kNoiseFloor pixels: k2 fitted to noise bends the model beyond the matched corners.
constexpr double kK2Significance = 16.0;
constexpr double kNoiseFloor = 0.01;
// Of the shapes a placement puts wholly in the frame, at least this share must be found: a
// chart that shares every other row with the description matches half of it exactly.
constexpr double kMinFoundShare = 0.6;

// To [-pi/4, pi/4): the turn of a square is known to a quarter turn only.
double wrapQuarter(double a) {
    a = std::fmod(a + kPi / 4.0, kPi / 2.0);
    if (a < 0.0) {
        a += kPi / 2.0;
    }
    return a - kPi / 4.0;
}

// To (-pi, pi].
double wrapTurn(double a) {
    a = std::fmod(a + kPi, 2.0 * kPi);
    if (a <= 0.0) {
        a += 2.0 * kPi;
    }
    return a - kPi;
}

double area2(const std::array<cv::Point2d, 4>& c) {
    double sum = 0.0;
    for (int i = 0; i < 4; ++i) {
        const cv::Point2d& a = c[i];
        const cv::Point2d& b = c[(i + 1) % 4];
        sum += a.x * b.y - b.x * a.y;
    }
    return sum;  // positive clockwise on screen (y down)
}

// A shape of the description or a found quad, reduced to what seeds compare.
struct Outline {
    std::array<cv::Point2d, 4> corners{};
    cv::Point2d centre;
    double size = 0.0;  // square root of the area
    double turn = 0.0;  // mean direction of the sides, to a quarter turn
    int polarity = 0;
    bool cut = false;
    bool usable = false;
};

Outline outlineOf(const std::array<cv::Point2d, 4>& corners, int polarity, bool cut) {
    Outline o;
    o.corners = corners;
    o.polarity = polarity;
    o.cut = cut;
    const double a2 = area2(corners);
    double c = 0.0, s = 0.0;
    for (int i = 0; i < 4; ++i) {
        const cv::Point2d d = corners[(i + 1) % 4] - corners[i];
        const double length = std::hypot(d.x, d.y);
        const double angle = std::atan2(d.y, d.x);
        c += length * std::cos(4.0 * angle);
        s += length * std::sin(4.0 * angle);
        o.centre += 0.25 * corners[i];
    }
    o.size = a2 > 0.0 ? std::sqrt(0.5 * a2) : 0.0;
    o.turn = wrapQuarter(std::atan2(s, c) / 4.0);
    o.usable = (polarity == 1 || polarity == -1) && a2 > 0.0 && std::isfinite(a2) &&
               std::isfinite(o.centre.x) && std::isfinite(o.centre.y);
    return o;
}

// Found quads bucketed by centre, for the quads near a predicted centre.
class QuadIndex {
public:
    QuadIndex(const std::vector<Outline>& quads, double cell) {
        double x0 = std::numeric_limits<double>::infinity(), y0 = x0, x1 = -x0, y1 = -x0;
        for (const Outline& q : quads) {
            if (q.usable) {
                x0 = std::min(x0, q.centre.x);
                y0 = std::min(y0, q.centre.y);
                x1 = std::max(x1, q.centre.x);
                y1 = std::max(y1, q.centre.y);
            }
        }
        if (!(x1 >= x0)) {
            return;  // no usable quad: every query finds nothing
        }
        cell_ = std::max({cell, (x1 - x0) / 256.0, (y1 - y0) / 256.0, 1.0});
        x0_ = x0;
        y0_ = y0;
        nx_ = static_cast<int>((x1 - x0) / cell_) + 1;
        ny_ = static_cast<int>((y1 - y0) / cell_) + 1;
        start_.assign(static_cast<std::size_t>(nx_ * ny_ + 1), 0);
        std::vector<int> bucket(quads.size(), -1);
        for (std::size_t k = 0; k < quads.size(); ++k) {
            if (quads[k].usable) {
                const int ix =
                    std::min(static_cast<int>((quads[k].centre.x - x0) / cell_), nx_ - 1);
                const int iy =
                    std::min(static_cast<int>((quads[k].centre.y - y0) / cell_), ny_ - 1);
                bucket[k] = iy * nx_ + ix;
                ++start_[static_cast<std::size_t>(bucket[k]) + 1];
            }
        }
        for (std::size_t b = 1; b < start_.size(); ++b) {
            start_[b] += start_[b - 1];
        }
        items_.resize(static_cast<std::size_t>(start_.back()));
        std::vector<int> fill(start_.begin(), start_.end() - 1);
        for (std::size_t k = 0; k < quads.size(); ++k) {
            if (bucket[k] >= 0) {
                items_[static_cast<std::size_t>(fill[static_cast<std::size_t>(bucket[k])]++)] =
                    static_cast<int>(k);
            }
        }
    }

    // Calls visit(k) for every usable quad in the buckets touching the square of half-side
    // `radius` about p (a superset of those within `radius`).
    template <typename Visit>
    void visit(cv::Point2d p, double radius, Visit&& visit) const {
        if (nx_ == 0 || !std::isfinite(p.x) || !std::isfinite(p.y)) {
            return;
        }
        const double fx0 = std::floor((p.x - radius - x0_) / cell_);
        const double fx1 = std::floor((p.x + radius - x0_) / cell_);
        const double fy0 = std::floor((p.y - radius - y0_) / cell_);
        const double fy1 = std::floor((p.y + radius - y0_) / cell_);
        if (fx1 < 0.0 || fy1 < 0.0 || fx0 >= nx_ || fy0 >= ny_) {
            return;
        }
        const int ix0 = static_cast<int>(std::max(fx0, 0.0));
        const int ix1 = static_cast<int>(std::min(fx1, nx_ - 1.0));
        const int iy0 = static_cast<int>(std::max(fy0, 0.0));
        const int iy1 = static_cast<int>(std::min(fy1, ny_ - 1.0));
        for (int iy = iy0; iy <= iy1; ++iy) {
            for (int ix = ix0; ix <= ix1; ++ix) {
                const std::size_t b = static_cast<std::size_t>(iy * nx_ + ix);
                for (int i = start_[b]; i < start_[b + 1]; ++i) {
                    visit(items_[static_cast<std::size_t>(i)]);
                }
            }
        }
    }

private:
    double x0_ = 0.0, y0_ = 0.0, cell_ = 1.0;
    int nx_ = 0, ny_ = 0;
    std::vector<int> start_, items_;
};

double median(std::vector<double> v) {
    if (v.empty()) {
        return 0.0;
    }
    std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(v.size() / 2), v.end());
    return v[v.size() / 2];
}

std::vector<Outline> shapeOutlines(const ChartDescription& description) {
    std::vector<Outline> shapes;
    shapes.reserve(description.shapes.size());
    for (const ChartShape& shape : description.shapes) {
        std::array<cv::Point2d, 4> c;
        for (int i = 0; i < 4; ++i) {
            c[i] = {shape.corners[i].x, shape.corners[i].y};
        }
        shapes.push_back(outlineOf(c, shape.polarity, false));
    }
    return shapes;
}

std::vector<Outline> quadOutlines(const std::vector<detect::Quad>& quads) {
    std::vector<Outline> outlines;
    outlines.reserve(quads.size());
    for (const detect::Quad& q : quads) {
        outlines.push_back(outlineOf(q.corners, q.polarity, q.cut));
    }
    return outlines;
}

double medianQuadSize(const std::vector<Outline>& quads) {
    std::vector<double> sizes;
    for (const Outline& q : quads) {
        if (q.usable) {
            sizes.push_back(q.size);
        }
    }
    return median(sizes);
}

// Everything one call works from.
struct Scene {
    Scene(const ChartDescription& d, const std::vector<detect::Quad>& found, int w, int h)
        : description(d),
          shapes(shapeOutlines(d)),
          quads(quadOutlines(found)),
          frame(undistortedRegistration(w, h)),
          width(w),
          height(h),
          index(quads, medianQuadSize(quads)) {
        describeNeighbourhoods();
    }

    const ChartDescription& description;
    std::vector<Outline> shapes;
    std::vector<Outline> quads;
    ChartRegistration frame;  // distortion centre and norm radius
    int width = 0;
    int height = 0;
    QuadIndex index;
    std::vector<std::vector<int>> neighbours;  // per shape, its nearest shapes, nearest first
    std::vector<double> spacing;               // per shape, distance to its nearest shape
    std::vector<int> every;                    // 0 .. shapes - 1
    double shapeSize = 0.0;                    // median shape size, chart units
    cv::Point2d chartCentre;                   // centroid of the shape centres
    double chartSpread = 0.0;                  // their rms distance from it

private:
    void describeNeighbourhoods();
};

void Scene::describeNeighbourhoods() {
    const std::size_t n = shapes.size();
    neighbours.assign(n, {});
    spacing.assign(n, 0.0);
    std::vector<double> sizes;
    std::vector<std::pair<double, int>> byDistance;
    int used = 0;
    for (std::size_t a = 0; a < n; ++a) {
        const Outline& sa = shapes[a];
        if (!sa.usable) {
            continue;
        }
        sizes.push_back(sa.size);
        chartCentre += sa.centre;
        ++used;
        byDistance.clear();
        for (std::size_t b = 0; b < n; ++b) {
            if (b != a && shapes[b].usable) {
                byDistance.emplace_back(cv::norm(shapes[b].centre - sa.centre),
                                        static_cast<int>(b));
            }
        }
        const std::size_t keep = std::min<std::size_t>(kShapeNeighbours, byDistance.size());
        std::partial_sort(byDistance.begin(),
                          byDistance.begin() + static_cast<std::ptrdiff_t>(keep), byDistance.end());
        for (std::size_t i = 0; i < keep; ++i) {
            neighbours[a].push_back(byDistance[i].second);
        }
        spacing[a] = keep > 0 ? byDistance[0].first : sa.size;
    }
    shapeSize = median(sizes);
    every.resize(n);
    std::iota(every.begin(), every.end(), 0);
    if (used > 0) {
        chartCentre /= static_cast<double>(used);
    }
    double spread = 0.0;
    for (const Outline& s : shapes) {
        if (s.usable) {
            const cv::Point2d d = s.centre - chartCentre;
            spread += d.dot(d);
        }
    }
    chartSpread = used > 0 ? std::sqrt(spread / used) : 0.0;
}

// x -> to + scale R(angle) (x - from)
struct Similarity {
    Similarity() = default;
    Similarity(double scale_, double angle_, cv::Point2d from_, cv::Point2d to_)
        : scale(scale_),
          angle(angle_),
          from(from_),
          to(to_),
          c(scale_ * std::cos(angle_)),
          s(scale_ * std::sin(angle_)) {}

    cv::Point2d operator()(cv::Point2d x) const {
        const cv::Point2d d = x - from;
        return {to.x + c * d.x - s * d.y, to.y + s * d.x + c * d.y};
    }

    double scale = 1.0;
    double angle = 0.0;
    cv::Point2d from;
    cv::Point2d to;
    double c = 1.0;  // scale cos(angle)
    double s = 0.0;  // scale sin(angle)
};

// Two neighbours, in the first one's own terms.
struct PairShape {
    int first = -1;
    int second = -1;
    double distance = 0.0;   // between centres, over the first's size
    double bearing = 0.0;    // of the second from the first, against the first's turn
    double sizeRatio = 0.0;  // second over first
    double turn = 0.0;       // second's turn less the first's
};

PairShape pairShape(const std::vector<Outline>& outlines, int first, int second) {
    const Outline& a = outlines[static_cast<std::size_t>(first)];
    const Outline& b = outlines[static_cast<std::size_t>(second)];
    const cv::Point2d d = b.centre - a.centre;
    PairShape p;
    p.first = first;
    p.second = second;
    p.distance = std::hypot(d.x, d.y) / a.size;
    p.bearing = wrapQuarter(std::atan2(d.y, d.x) - a.turn);
    p.sizeRatio = b.size / a.size;
    p.turn = wrapQuarter(b.turn - a.turn);
    return p;
}

bool pairsAgree(const PairShape& found, const PairShape& shapes) {
    return std::abs(found.distance / shapes.distance - 1.0) <= kRatioTolerance &&
           std::abs(found.sizeRatio / shapes.sizeRatio - 1.0) <= kRatioTolerance &&
           std::abs(wrapQuarter(found.turn - shapes.turn)) <= kTurnTolerance &&
           std::abs(wrapQuarter(found.bearing - shapes.bearing)) <= kBearingTolerance;
}

// The similarity taking shapes a, b onto quads p, q: scale and the quarter turn from the pair,
// the turn within the quarter from the squares themselves.
bool seedSimilarity(const Outline& a, const Outline& b, const Outline& p, const Outline& q,
                    Similarity& sim) {
    const cv::Point2d ds = b.centre - a.centre, dq = q.centre - p.centre;
    const double ls = std::hypot(ds.x, ds.y), lq = std::hypot(dq.x, dq.y);
    if (!(ls > 0.0 && lq > 0.0)) {
        return false;
    }
    const double pairAngle = std::atan2(dq.y, dq.x) - std::atan2(ds.y, ds.x);
    const double t1 = wrapQuarter(p.turn - a.turn);
    const double mean = t1 + 0.5 * wrapQuarter(q.turn - b.turn - t1);
    const double angle = mean + 0.5 * kPi * std::round((pairAngle - mean) / (0.5 * kPi));
    if (std::abs(wrapTurn(angle - pairAngle)) > kBearingTolerance) {
        return false;
    }
    sim = Similarity(lq / ls, wrapTurn(angle), 0.5 * (a.centre + b.centre),
                     0.5 * (p.centre + q.centre));
    return true;
}

// How many of the shapes the similarity puts on an uncut quad of the same polarity, size and
// turn; -1 as soon as fewer than `needed` can be.
template <typename Shapes>
int placedShapes(const Scene& scene, const Similarity& sim, const Shapes& shapes, int needed = 0) {
    int placed = 0;
    int left = static_cast<int>(shapes.size());
    for (const int s : shapes) {
        if (placed + left < needed) {
            return -1;
        }
        --left;
        const Outline& shape = scene.shapes[static_cast<std::size_t>(s)];
        if (!shape.usable) {
            continue;
        }
        const cv::Point2d at = sim(shape.centre);
        const double size = sim.scale * shape.size;
        const double radius = 0.35 * size;
        bool found = false;
        scene.index.visit(at, radius, [&](int k) {
            const Outline& quad = scene.quads[static_cast<std::size_t>(k)];
            if (found || quad.cut || quad.polarity != shape.polarity ||
                cv::norm(quad.centre - at) > radius) {
                return;
            }
            const double ratio = quad.size / size;
            found = ratio >= kSizeRatioLow && ratio <= kSizeRatioHigh &&
                    std::abs(wrapQuarter(quad.turn - shape.turn - sim.angle)) <= kTurnTolerance;
        });
        placed += found ? 1 : 0;
    }
    return placed;
}

struct Seed {
    Similarity sim;
    int score = 0;   // of the seed shape and its neighbours, placed
    int placed = 0;  // of all shapes, placed; for the seeds that tie locally
    int shape = -1;
};

// Seeds from anchors nearest the frame centre, where the lens distorts least; the best
// distinct ones first.
std::vector<Seed> findSeeds(const Scene& scene) {
    std::vector<PairShape> shapePairs;
    for (std::size_t a = 0; a < scene.shapes.size(); ++a) {
        for (int b : scene.neighbours[a]) {
            shapePairs.push_back(pairShape(scene.shapes, static_cast<int>(a), b));
        }
    }
    std::vector<int> anchors;
    for (std::size_t k = 0; k < scene.quads.size(); ++k) {
        if (scene.quads[k].usable && !scene.quads[k].cut) {
            anchors.push_back(static_cast<int>(k));
        }
    }
    const cv::Point2d centre(scene.frame.centreX, scene.frame.centreY);
    auto distanceTo = [&](cv::Point2d p, int k) {
        return cv::norm(scene.quads[static_cast<std::size_t>(k)].centre - p);
    };
    std::vector<int> byCentre = anchors;
    std::sort(byCentre.begin(), byCentre.end(),
              [&](int i, int j) { return distanceTo(centre, i) < distanceTo(centre, j); });

    std::vector<Seed> seeds;
    int best = 0;
    std::vector<int> near;
    for (std::size_t i = 0; i < byCentre.size() && static_cast<int>(i) < kMaxAnchors; ++i) {
        if (best >= kConfidentSeedScore) {
            break;
        }
        const int p = byCentre[i];
        const cv::Point2d at = scene.quads[static_cast<std::size_t>(p)].centre;
        near = anchors;
        near.erase(std::remove(near.begin(), near.end(), p), near.end());
        const std::size_t keep = std::min<std::size_t>(kQuadNeighbours, near.size());
        std::partial_sort(near.begin(), near.begin() + static_cast<std::ptrdiff_t>(keep),
                          near.end(),
                          [&](int u, int v) { return distanceTo(at, u) < distanceTo(at, v); });
        near.resize(keep);
        for (int q : near) {
            const PairShape found = pairShape(scene.quads, p, q);
            const Outline& op = scene.quads[static_cast<std::size_t>(p)];
            const Outline& oq = scene.quads[static_cast<std::size_t>(q)];
            for (const PairShape& pair : shapePairs) {
                const Outline& a = scene.shapes[static_cast<std::size_t>(pair.first)];
                const Outline& b = scene.shapes[static_cast<std::size_t>(pair.second)];
                if (a.polarity != op.polarity || b.polarity != oq.polarity ||
                    !pairsAgree(found, pair)) {
                    continue;
                }
                Seed seed;
                if (!seedSimilarity(a, b, op, oq, seed.sim)) {
                    continue;
                }
                seed.shape = pair.first;
                const std::vector<int>& around =
                    scene.neighbours[static_cast<std::size_t>(pair.first)];
                seed.score = placedShapes(scene, seed.sim, std::array<int, 1>{pair.first}) +
                             placedShapes(scene, seed.sim, around);
                if (seed.score >= kMinSeedScore) {
                    best = std::max(best, seed.score);
                    seeds.push_back(seed);
                }
            }
        }
    }
    std::stable_sort(seeds.begin(), seeds.end(),
                     [](const Seed& x, const Seed& y) { return x.score > y.score; });
    // Distinct placements: two seeds alike at the chart's centre and at two points a spread
    // away from it are the same placement found twice.
    const std::array<cv::Point2d, 3> probes = {
        scene.chartCentre, scene.chartCentre + cv::Point2d(scene.chartSpread, 0.0),
        scene.chartCentre + cv::Point2d(0.0, scene.chartSpread)};
    std::vector<Seed> distinct;
    for (const Seed& seed : seeds) {
        if (seed.score < std::max(kMinSeedScore, (best + 1) / 2)) {
            break;
        }
        const double same = 0.5 * seed.sim.scale * scene.shapeSize;
        bool repeat = false;
        for (std::size_t i = 0; i < distinct.size() && !repeat; ++i) {
            bool alike = true;
            for (const cv::Point2d& probe : probes) {
                alike = alike && cv::norm(seed.sim(probe) - distinct[i].sim(probe)) <= same;
            }
            repeat = alike;
        }
        if (!repeat) {
            distinct.push_back(seed);
        }
    }
    // A neighbourhood may be matched equally well one or more cells over (a grid whose squares
    // turn alike matches itself anywhere; a missing shape costs the right seed a point): the
    // whole chart, placed, tells such seeds apart.
    // Counting stops for a seed that can no longer place as many as the kMaxCandidates-th
    // best so far.
    std::vector<int> top;  // best counts so far, descending
    for (Seed& seed : distinct) {
        const int needed = static_cast<int>(top.size()) < kMaxCandidates ? 0 : top.back();
        seed.placed = placedShapes(scene, seed.sim, scene.every, needed);
        if (seed.placed >= needed) {
            top.insert(std::upper_bound(top.begin(), top.end(), seed.placed, std::greater<int>()),
                       seed.placed);
            if (static_cast<int>(top.size()) > kMaxCandidates) {
                top.pop_back();
            }
        }
    }
    std::stable_sort(distinct.begin(), distinct.end(), [](const Seed& x, const Seed& y) {
        return x.placed != y.placed ? x.placed > y.placed : x.score > y.score;
    });
    if (distinct.size() > static_cast<std::size_t>(kMaxCandidates)) {
        distinct.resize(kMaxCandidates);
    }
    return distinct;
}

ChartRegistration similarityModel(const Scene& scene, const Similarity& sim) {
    ChartRegistration model = scene.frame;
    const double c = sim.c, s = sim.s;
    const double tx = sim.to.x - (c * sim.from.x - s * sim.from.y);
    const double ty = sim.to.y - (s * sim.from.x + c * sim.from.y);
    const double h[9] = {c, -s, tx, s, c, ty, 0.0, 0.0, 1.0};
    std::copy(h, h + 9, model.homography);
    return model;
}

std::array<cv::Point2d, 4> predictCorners(const ChartRegistration& model, const ChartShape& shape) {
    std::array<cv::Point2d, 4> p;
    for (int i = 0; i < 4; ++i) {
        const ChartPoint f = chartToFrame(model, shape.corners[i]);
        p[i] = {f.x, f.y};
    }
    return p;
}

// Root mean square distance of the quad's corners from the predicted ones, corner i of the
// shape against quad corner (i + shift) % 4.
double cornerRms(const std::array<cv::Point2d, 4>& predicted,
                 const std::array<cv::Point2d, 4>& quad, int shift) {
    double sum = 0.0;
    for (int i = 0; i < 4; ++i) {
        const cv::Point2d d = predicted[i] - quad[(i + shift) % 4];
        sum += d.dot(d);
    }
    return std::sqrt(0.25 * sum);
}

struct Tolerance {
    double relative = 0.0;  // of the predicted size
    double pixels = 0.0;
};

// Each shape `consider` admits against the quads near its predicted place: same polarity,
// corners within the tolerance (a cut quad's loosely), one quad per shape, uncut quads and then
// the closest first.
std::vector<ShapeMatch> matchShapes(const Scene& scene, const ChartRegistration& model,
                                    const std::vector<char>& consider, Tolerance tolerance) {
    struct Option {
        double key;
        ShapeMatch match;
    };
    std::vector<Option> options;
    for (std::size_t s = 0; s < scene.shapes.size(); ++s) {
        if (!consider[s] || !scene.shapes[s].usable) {
            continue;
        }
        const std::array<cv::Point2d, 4> predicted =
            predictCorners(model, scene.description.shapes[s]);
        const double a2 = area2(predicted);
        if (!(a2 > 0.0)) {
            continue;
        }
        const double size = std::sqrt(0.5 * a2);
        const cv::Point2d centre =
            0.25 * (predicted[0] + predicted[1] + predicted[2] + predicted[3]);
        const double uncutLimit = std::max(tolerance.pixels, tolerance.relative * size);
        const double cutLimit = std::max(3.0 * uncutLimit, 0.1 * size);
        // A quad's centre is off by no more than its corners' rms.
        scene.index.visit(centre, cutLimit, [&](int k) {
            const Outline& quad = scene.quads[static_cast<std::size_t>(k)];
            const double limit = quad.cut ? cutLimit : uncutLimit;
            if (quad.polarity != scene.shapes[s].polarity ||
                cv::norm(quad.centre - centre) > limit) {
                return;
            }
            if (!quad.cut &&
                (quad.size < kSizeRatioLow * size || quad.size > kSizeRatioHigh * size)) {
                return;
            }
            int shift = 0;
            double cost = cornerRms(predicted, quad.corners, 0);
            for (int t = 1; t < 4; ++t) {
                const double c = cornerRms(predicted, quad.corners, t);
                if (c < cost) {
                    cost = c;
                    shift = t;
                }
            }
            if (cost <= limit) {
                options.push_back(
                    {(quad.cut ? 1e12 : 0.0) + cost, {static_cast<int>(s), k, shift}});
            }
        });
    }
    std::sort(options.begin(), options.end(),
              [](const Option& x, const Option& y) { return x.key < y.key; });
    std::vector<char> shapeTaken(scene.shapes.size(), 0), quadTaken(scene.quads.size(), 0);
    std::vector<ShapeMatch> matches;
    for (const Option& o : options) {
        char& st = shapeTaken[static_cast<std::size_t>(o.match.shape)];
        char& qt = quadTaken[static_cast<std::size_t>(o.match.quad)];
        if (!st && !qt) {
            st = qt = 1;
            matches.push_back(o.match);
        }
    }
    std::sort(matches.begin(), matches.end(),
              [](const ShapeMatch& x, const ShapeMatch& y) { return x.shape < y.shape; });
    return matches;
}

std::vector<PointPair> cornerPairs(const Scene& scene, const std::vector<ShapeMatch>& matches) {
    std::vector<PointPair> pairs;
    pairs.reserve(4 * matches.size());
    for (const ShapeMatch& m : matches) {
        const Outline& quad = scene.quads[static_cast<std::size_t>(m.quad)];
        if (quad.cut) {
            continue;
        }
        const ChartShape& shape = scene.description.shapes[static_cast<std::size_t>(m.shape)];
        for (int i = 0; i < 4; ++i) {
            pairs.push_back({shape.corners[i], quad.corners[(i + m.cornerShift) % 4]});
        }
    }
    return pairs;
}

int uncutCount(const Scene& scene, const std::vector<ShapeMatch>& matches) {
    int n = 0;
    for (const ShapeMatch& m : matches) {
        n += scene.quads[static_cast<std::size_t>(m.quad)].cut ? 0 : 1;
    }
    return n;
}

// The terms the matched corners can carry: perspective from four shapes on, the radial terms
// once the corners reach far enough from the centre for them to move a corner measurably.
// Complete when no term the lens may need is held back.
ModelTerms termsFor(const Scene& scene, const std::vector<PointPair>& pairs, bool allowK2,
                    bool& complete) {
    const std::size_t shapes = pairs.size() / 4;
    double reach = 0.0;
    for (const PointPair& p : pairs) {
        reach = std::max(
            reach, std::hypot(p.frame.x - scene.frame.centreX, p.frame.y - scene.frame.centreY));
    }
    reach /= scene.frame.normRadius;
    ModelTerms terms;
    terms.perspective = shapes >= kPerspectiveShapes;
    terms.k1 = shapes >= kPerspectiveShapes && reach >= kK1Reach;
    terms.k2 = allowK2 && shapes >= kK2Shapes && reach >= kK2Reach;
    complete = terms.perspective && (terms.k1 || reach < kK1Reach);
    return terms;
}

// Fits the model to the matches' corners; NaN when they cannot carry it.
double fitModel(const Scene& scene, const std::vector<ShapeMatch>& matches, int iterations,
                bool allowK2, ChartRegistration& model, bool& complete) {
    const std::vector<PointPair> pairs = cornerPairs(scene, matches);
    complete = false;
    if (pairs.size() < 8) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    return refineRegistration(pairs, termsFor(scene, pairs, allowK2, complete), iterations, model);
}

// Drops matches whose corners sit far off a fit the rest agree on: a clutter quad that took a
// missing shape's place must not bend the model toward itself.
bool dropOutliers(const Scene& scene, const ChartRegistration& model,
                  std::vector<ShapeMatch>& matches) {
    std::vector<double> residuals;
    for (const ShapeMatch& m : matches) {
        const Outline& quad = scene.quads[static_cast<std::size_t>(m.quad)];
        residuals.push_back(cornerRms(
            predictCorners(model, scene.description.shapes[static_cast<std::size_t>(m.shape)]),
            quad.corners, m.cornerShift));
    }
    const double limit = std::max(2.0 * kMatchPixels, 5.0 * median(residuals));
    std::vector<ShapeMatch> kept;
    for (std::size_t i = 0; i < matches.size(); ++i) {
        const bool cut = scene.quads[static_cast<std::size_t>(matches[i].quad)].cut;
        if (residuals[i] <= (cut ? 3.0 * limit : limit)) {
            kept.push_back(matches[i]);
        }
    }
    const bool dropped = kept.size() != matches.size();
    matches.swap(kept);
    return dropped;
}

bool sameMatches(const std::vector<ShapeMatch>& x, const std::vector<ShapeMatch>& y) {
    return x.size() == y.size() &&
           std::equal(x.begin(), x.end(), y.begin(), [](const ShapeMatch& a, const ShapeMatch& b) {
               return a.shape == b.shape && a.quad == b.quad && a.cornerShift == b.cornerShift;
           });
}

struct Placement {
    bool valid = false;
    ChartRegistration model;
    std::vector<ShapeMatch> matches;
    int uncut = 0;
    double rotation = 0.0;  // of the chart's x axis at its centre, radians
};

// Where the model's radial term stops growing with radius, the frame folds over and nothing
// beyond can be seen.
bool unfolded(const ChartRegistration& model, ChartPoint p) {
    const double* h = model.homography;
    const double w = h[6] * p.x + h[7] * p.y + h[8];
    if (!(w > 0.0)) {
        return false;
    }
    const double dx = (h[0] * p.x + h[1] * p.y + h[2]) / w - model.centreX;
    const double dy = (h[3] * p.x + h[4] * p.y + h[5]) / w - model.centreY;
    const double q = (dx * dx + dy * dy) / (model.normRadius * model.normRadius);
    return 1.0 + q * (3.0 * model.k1 + 5.0 * model.k2 * q) > 0.0;
}

// Shapes the model puts wholly and clearly inside the frame.
int shapesInFrame(const Scene& scene, const ChartRegistration& model) {
    int n = 0;
    for (std::size_t s = 0; s < scene.shapes.size(); ++s) {
        if (!scene.shapes[s].usable) {
            continue;
        }
        const ChartShape& shape = scene.description.shapes[s];
        const std::array<cv::Point2d, 4> p = predictCorners(model, shape);
        const double a2 = area2(p);
        if (!(a2 > 0.0)) {
            continue;
        }
        const double margin = 0.05 * std::sqrt(0.5 * a2);
        bool inside = true;
        for (int i = 0; i < 4 && inside; ++i) {
            inside = unfolded(model, shape.corners[i]) && p[i].x >= margin && p[i].y >= margin &&
                     p[i].x <= scene.width - 1 - margin && p[i].y <= scene.height - 1 - margin;
        }
        n += inside ? 1 : 0;
    }
    return n;
}

// Grows a seed outward a ring at a time, then settles it with every shape.
Placement grow(const Scene& scene, const Seed& seed) {
    Placement placement;
    ChartRegistration model = similarityModel(scene, seed.sim);
    const Outline& first = scene.shapes[static_cast<std::size_t>(seed.shape)];
    double farthest = 0.0;
    for (const Outline& s : scene.shapes) {
        if (s.usable) {
            farthest = std::max(farthest, cv::norm(s.centre - seed.sim.from));
        }
    }
    double reach =
        kFirstReach * std::max(scene.spacing[static_cast<std::size_t>(seed.shape)], first.size);
    std::vector<char> consider(scene.shapes.size(), 0);
    std::vector<ShapeMatch> matches;
    double rms = 0.0;
    bool fitted = false;
    for (;;) {
        for (std::size_t s = 0; s < scene.shapes.size(); ++s) {
            consider[s] = cv::norm(scene.shapes[s].centre - seed.sim.from) <= reach;
        }
        matches = matchShapes(scene, model, consider, {kGrowthTolerance, 0.0});
        bool complete = false;
        double fit = fitModel(scene, matches, 5, false, model, complete);
        if (std::isfinite(fit) && dropOutliers(scene, model, matches)) {
            fit = fitModel(scene, matches, 5, false, model, complete);
        }
        // Too few shapes yet to fit (a sparse chart, a seed at the frame's edge): the model as
        // it stands reaches further. A model still held to fewer terms than the lens needs may
        // miss by a few pixels across a wide reach; a tenth of a square's size is a wrong seed
        // whatever the terms.
        const double abort =
            complete ? kAbortRms : std::max(kAbortRms, 0.1 * seed.sim.scale * scene.shapeSize);
        if (std::isfinite(fit)) {
            if (fit > abort) {
                return placement;
            }
            rms = fit;
            fitted = true;
        }
        if (reach >= farthest) {
            if (!fitted) {
                return placement;
            }
            break;
        }
        reach *= kGrowthFactor;
    }
    std::fill(consider.begin(), consider.end(), 1);
    // Every shape against the model, refitted until the matches hold still.
    auto settle = [&](bool allowK2) {
        for (int round = 0; round < kSettleRounds; ++round) {
            std::vector<ShapeMatch> next =
                matchShapes(scene, model, consider, {0.0, std::max(kMatchPixels, 4.0 * rms)});
            bool complete = false;
            rms = fitModel(scene, next, 10, allowK2, model, complete);
            if (!std::isfinite(rms)) {
                return false;
            }
            const bool settled = sameMatches(next, matches);
            matches.swap(next);
            if (settled) {
                break;
            }
        }
        return true;
    };
    if (!settle(false)) {
        return placement;
    }
    // k2 only where it explains the corners better than k1 alone by more than noise would.
    const std::vector<PointPair> pairs = cornerPairs(scene, matches);
    bool complete = false;
    if (termsFor(scene, pairs, true, complete).k2) {
        ChartRegistration withK2 = model;
        const double rms2 =
            refineRegistration(pairs, termsFor(scene, pairs, true, complete), 10, withK2);
        const double n = static_cast<double>(pairs.size());
        const double variance =
            std::max(rms2 * rms2 * n / (2.0 * n - 10.0), kNoiseFloor * kNoiseFloor);
        if (std::isfinite(rms2) && (rms * rms - rms2 * rms2) * n / variance > kK2Significance) {
            model = withK2;
            rms = rms2;
            if (!settle(true)) {
                return placement;
            }
        }
    }
    placement.uncut = uncutCount(scene, matches);
    placement.valid = placement.uncut >= kMinMatchedShapes && rms <= kMaxRegistrationRms &&
                      placement.uncut >= kMinFoundShare * shapesInFrame(scene, model);
    const ChartPoint c{scene.chartCentre.x, scene.chartCentre.y};
    const ChartPoint a = chartToFrame(model, c);
    const ChartPoint b = chartToFrame(model, {c.x + scene.shapeSize, c.y});
    placement.rotation = std::atan2(b.y - a.y, b.x - a.x);
    placement.model = model;
    placement.matches = std::move(matches);
    return placement;
}

// Corner residual of the matched uncut quads, pixels: rms and largest.
void residuals(const Scene& scene, const std::vector<ShapeMatch>& matches,
               ChartRegistration& model) {
    double sum = 0.0, largest = 0.0;
    int n = 0;
    for (const PointPair& p : cornerPairs(scene, matches)) {
        const ChartPoint f = chartToFrame(model, p.chart);
        const double d = std::hypot(f.x - p.frame.x, f.y - p.frame.y);
        sum += d * d;
        largest = std::max(largest, d);
        ++n;
    }
    model.residualRms = n > 0 ? std::sqrt(sum / n) : std::numeric_limits<double>::quiet_NaN();
    model.residualMax = n > 0 ? largest : std::numeric_limits<double>::quiet_NaN();
}

// More shapes matched wins; then a clearly smaller residual; placements alike in both (a
// symmetric grid) go to the one nearest upright.
bool better(const Placement& x, const Placement& y) {
    if (x.uncut != y.uncut) {
        return x.uncut > y.uncut;
    }
    const double rx = x.model.residualRms, ry = y.model.residualRms;
    if (std::abs(rx - ry) > 0.25 * std::max(rx, ry) + 0.02) {
        return rx < ry;
    }
    return std::abs(x.rotation) < std::abs(y.rotation) - 1e-9;
}

}  // namespace

bool registerChart(const ChartDescription& description, const std::vector<detect::Quad>& quads,
                   int width, int height, ChartRegistration& registration,
                   std::vector<ShapeMatch>& matches) {
    if (width <= 0 || height <= 0 || description.shapes.empty() ||
        quads.size() < static_cast<std::size_t>(kMinMatchedShapes)) {
        return false;
    }
    const Scene scene(description, quads, width, height);
    if (!(scene.shapeSize > 0.0)) {
        return false;
    }
    Placement best;
    for (const Seed& seed : findSeeds(scene)) {
        Placement p = grow(scene, seed);
        if (!p.valid) {
            continue;
        }
        residuals(scene, p.matches, p.model);
        if (!best.valid || better(p, best)) {
            best = std::move(p);
        }
    }
    if (!best.valid) {
        return false;
    }
    best.model.registered = true;
    best.model.matchedShapes = static_cast<int>(best.matches.size());
    registration = best.model;
    matches = std::move(best.matches);
    return true;
}

}  // namespace locate
}  // namespace talonvireo
