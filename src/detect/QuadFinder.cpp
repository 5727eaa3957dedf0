#include "detect/QuadFinder.h"

#include <algorithm>
#include <cmath>

#include "detect/CoarseImage.h"
#include "detect/EdgeFlags.h"
#include "detect/EdgeLine.h"
#include "detect/FrameClip.h"
#include "detect/NoiseLevel.h"
#include "detect/PolarityMasks.h"
#include "detect/QuadCandidates.h"
#include "detect/QuadShape.h"
#include "detect/SideRefinement.h"

namespace talonvireo {
namespace detect {

namespace {

// Profile half-length: a quarter of the shortest side, within these bounds. The upper one
// holds a blur of sigma 3 across a side turned 45 degrees from the profile, plus the coarse
// line's error, with level samples to spare.
constexpr int kMinHalfWidth = 5;
constexpr int kMaxHalfWidth = 18;
// A refined corner farther than this share of the shortest side from the coarse one means
// a side locked onto something else.
constexpr double kMaxCornerShift = 0.25;
constexpr double kMinCornerShiftPixels = 4.0;

// The frame edge nearest the midpoint of a .. b, directed like it.
EdgeLine frameEdge(cv::Point2d a, cv::Point2d b, cv::Size frame) {
    const cv::Point2d m = 0.5 * (a + b);
    const double right = frame.width - 0.5, bottom = frame.height - 0.5;
    const double distance[4] = {std::abs(m.x + 0.5), std::abs(m.y + 0.5), std::abs(right - m.x),
                                std::abs(bottom - m.y)};
    const int nearest = static_cast<int>(std::min_element(distance, distance + 4) - distance);
    const bool vertical = nearest == 0 || nearest == 2;
    const double at = nearest == 0 ? -0.5 : nearest == 1 ? -0.5 : nearest == 2 ? right : bottom;
    const cv::Point2d point = vertical ? cv::Point2d(at, m.y) : cv::Point2d(m.x, at);
    cv::Point2d dir = vertical ? cv::Point2d(0.0, 1.0) : cv::Point2d(1.0, 0.0);
    if (dir.dot(b - a) < 0.0) {
        dir = -dir;
    }
    return {point, dir};
}

bool refineCandidate(const cv::Mat& grey, const QuadCandidate& c, Quad& quad) {
    double shortest = 1e300;
    for (int i = 0; i < 4; ++i) {
        shortest = std::min(shortest, cv::norm(c.corners[(i + 1) % 4] - c.corners[i]));
    }
    const int halfWidth =
        std::clamp(static_cast<int>(shortest / 4.0), kMinHalfWidth, kMaxHalfWidth);
    const cv::Size frame = grey.size();
    std::array<EdgeLine, 4> lines;
    std::array<SideFit, 4> fits;
    for (int i = 0; i < 4; ++i) {
        const cv::Point2d from = c.corners[i], to = c.corners[(i + 1) % 4];
        if (c.borderSide[i]) {
            lines[i] = frameEdge(from, to, frame);
            continue;
        }
        const EdgeLine predicted = lineThrough(from, to);
        const cv::Point2d outward(predicted.direction.y, -predicted.direction.x);
        SideFit fit;
        if (!refineSide(grey, {from, to, outward, c.polarity, halfWidth}, fit)) {
            return false;
        }
        lines[i] = fit.line;
        fits[i] = fit;
    }
    const double maxShift = std::max(kMinCornerShiftPixels, kMaxCornerShift * shortest);
    for (int i = 0; i < 4; ++i) {
        if (!intersect(lines[(i + 3) % 4], lines[i], quad.corners[i]) ||
            cv::norm(quad.corners[i] - c.corners[i]) > maxShift) {
            return false;
        }
    }
    if (!isPlausibleQuad(quad.corners)) {
        return false;
    }
    quad.polarity = c.polarity;
    quad.cut = false;
    for (int i = 0; i < 4; ++i) {
        const cv::Point2d a = quad.corners[i], b = quad.corners[(i + 1) % 4];
        cv::Point2d from = a, to = b;
        if (!clipToFrame(from, to, frame)) {
            return false;
        }
        // A side ending on a border side runs out of the frame there.
        const bool cut = c.borderSide[(i + 3) % 4] || c.borderSide[i] ||
                         c.borderSide[(i + 1) % 4] || cv::norm(from - a) > 1e-9 ||
                         cv::norm(to - b) > 1e-9;
        quad.edges[i] = describeEdge(from, to, c.polarity, cut);
        quad.edges[i].frameBorder = c.borderSide[i];
        quad.cut = quad.cut || cut;
        if (!c.borderSide[i]) {
            EdgeGeometry& e = quad.edges[i];
            e.rise = fits[i].rise;
            if (!cut) {
                // The curve's midpoint: the chord's, moved across by the bow (the fit's own
                // midpoint sits level with the coarse corners, not the refined ones).
                const cv::Point2d d = (to - from) / std::max(cv::norm(to - from), 1e-12);
                const cv::Point2d outward(d.y, -d.x);
                e.midpoint = 0.5 * (from + to) + fits[i].bow * outward;
                e.bow = fits[i].bow;
                e.curvature = fits[i].curvature;
            }
        }
    }
    return true;
}

cv::Point2d centreOf(const Quad& q) {
    return 0.25 * (q.corners[0] + q.corners[1] + q.corners[2] + q.corners[3]);
}

}  // namespace

std::vector<Quad> findQuads(const cv::Mat& grey) {
    const CoarseImage coarse = reduceFrame(grey);
    const PolarityMasks masks = splitByLocalMean(coarse.values, noiseSigma(coarse.values));
    std::vector<QuadCandidate> candidates = findQuadCandidates(masks.dark, 1, coarse);
    const std::vector<QuadCandidate> light = findQuadCandidates(masks.light, -1, coarse);
    candidates.insert(candidates.end(), light.begin(), light.end());

    const int count = static_cast<int>(candidates.size());
    std::vector<Quad> refined(candidates.size());
    std::vector<char> kept(candidates.size(), 0);
#pragma omp parallel for schedule(dynamic)
    for (int k = 0; k < count; ++k) {
        kept[k] = refineCandidate(grey, candidates[k], refined[k]) ? 1 : 0;
    }
    std::vector<Quad> quads;
    for (int k = 0; k < count; ++k) {
        if (kept[k]) {
            quads.push_back(refined[k]);
        }
    }
    std::sort(quads.begin(), quads.end(), [](const Quad& a, const Quad& b) {
        const cv::Point2d ca = centreOf(a), cb = centreOf(b);
        return ca.y != cb.y ? ca.y < cb.y : ca.x < cb.x;
    });
    return quads;
}

}  // namespace detect
}  // namespace talonvireo
