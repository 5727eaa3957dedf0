#include "detect/QuadCandidates.h"

#include <algorithm>
#include <cmath>

#include <opencv2/imgproc.hpp>

#include "detect/EdgeLine.h"
#include "detect/QuadShape.h"

namespace talonvireo {
namespace detect {

namespace {

// Polygon fits tried in turn, as fractions of the outline's length: the tightest that
// leaves four visible sides wins, so that a blurred corner is not cut off as a fifth side.
constexpr double kFitTolerances[] = {0.015, 0.025, 0.04};
// Outline area over fitted polygon area: a disc fitted with four corners is off by pi / 2.
constexpr double kMinAreaRatio = 0.9;
constexpr double kMaxAreaRatio = 1.1;
// Outline area over its convex hull's: a quad's outline is convex up to noise and the
// rounding of its corners.
constexpr double kMinSolidity = 0.9;
// Share of each side's stretch of outline left out at either end: corners are rounded.
constexpr double kSideTrim = 0.15;

enum Border { kNone = -1, kLeft, kTop, kRight, kBottom };

// Outline stretches along the frame border shorter than this (in coarse steps) are a
// corner grazing it, not a side.
constexpr int kMinBorderRun = 3;

// The frame border a step between neighbouring outline points runs along, if any.
int stepBorder(cv::Point a, cv::Point b, cv::Size size) {
    if (a.x == 0 && b.x == 0) {
        return kLeft;
    }
    if (a.y == 0 && b.y == 0) {
        return kTop;
    }
    if (a.x == size.width - 1 && b.x == size.width - 1) {
        return kRight;
    }
    if (a.y == size.height - 1 && b.y == size.height - 1) {
        return kBottom;
    }
    return kNone;
}

// The frame's edge line in coarse coordinates, traversed either way.
EdgeLine borderLine(int border, cv::Size size) {
    const double right = size.width - 0.5, bottom = size.height - 0.5;
    switch (border) {
        case kLeft:
            return {{-0.5, 0.0}, {0.0, 1.0}};
        case kTop:
            return {{0.0, -0.5}, {1.0, 0.0}};
        case kRight:
            return {{right, 0.0}, {0.0, 1.0}};
        default:
            return {{0.0, bottom}, {1.0, 0.0}};
    }
}

// A polygon fitted to an outline: its vertices as outline indices, in outline order, and
// the border each side runs along (kNone for a side of the region itself).
struct Polygon {
    std::vector<int> vertex;
    std::vector<int> border;
};

// Indices of `poly`'s points in outline[from .. from + span] (wrapping), in order.
std::vector<int> indicesIn(const std::vector<cv::Point>& outline, int from, int span,
                           const std::vector<cv::Point>& poly) {
    const int n = static_cast<int>(outline.size());
    std::vector<int> idx;
    int k = 0;
    for (const cv::Point& v : poly) {
        while (k <= span && outline[(from + k) % n] != v) {
            ++k;
        }
        if (k > span) {
            return {};
        }
        idx.push_back((from + k) % n);
    }
    return idx;
}

Polygon fitPolygon(const std::vector<cv::Point>& outline, cv::Size size, double tolerance) {
    const int n = static_cast<int>(outline.size());
    std::vector<int> step(n);
    for (int i = 0; i < n; ++i) {
        step[i] = stepBorder(outline[i], outline[(i + 1) % n], size);
    }
    // Runs of steps with one border; a short one is no side.
    auto runStart = [&](int i) { return step[i] != step[(i + n - 1) % n]; };
    for (int i = 0; i < n; ++i) {
        if (step[i] != kNone && runStart(i)) {
            int len = 0;
            while (len < n && step[(i + len) % n] == step[i]) {
                ++len;
            }
            if (len < kMinBorderRun) {
                for (int k = 0; k < len; ++k) {
                    step[(i + k) % n] = kNone;
                }
            }
        }
    }
    Polygon poly;
    const int first = static_cast<int>(
        std::find_if(step.begin(), step.end(), [](int b) { return b != kNone; }) - step.begin());
    if (first == n) {
        std::vector<cv::Point> points;
        cv::approxPolyDP(outline, points, tolerance, true);
        // The fit keeps the outline's order but may start anywhere along it.
        const int from =
            points.empty() ? 0
                           : static_cast<int>(std::find(outline.begin(), outline.end(), points[0]) -
                                              outline.begin());
        poly.vertex = indicesIn(outline, from % n, n - 1, points);
        poly.border.assign(poly.vertex.size(), kNone);
        return poly;
    }
    // An outline wholly along one border (a sliver one pixel deep) has no run start.
    int start = first;
    for (int k = 0; k < n && !runStart(start); ++k) {
        start = (start + n - 1) % n;
    }
    if (!runStart(start)) {
        return poly;
    }
    // Each border run is one side; each stretch between runs is fitted on its own, ends fixed.
    int at = 0;
    while (at < n) {
        const int from = (start + at) % n;
        int len = 0;
        while (at + len < n && step[(from + len) % n] == step[from]) {
            ++len;
        }
        poly.vertex.push_back(from);
        poly.border.push_back(step[from]);
        if (step[from] == kNone) {
            std::vector<cv::Point> arc, points;
            for (int k = 0; k <= len; ++k) {
                arc.push_back(outline[(from + k) % n]);
            }
            cv::approxPolyDP(arc, points, tolerance, false);
            const std::vector<int> idx = indicesIn(outline, from, len, points);
            for (size_t k = 1; k + 1 < idx.size(); ++k) {
                poly.vertex.push_back(idx[k]);
                poly.border.push_back(kNone);
            }
        }
        at += len;
    }
    return poly;
}

// Least-squares line through the middle of the outline from index a forward to index b.
bool fitSide(const std::vector<cv::Point>& outline, int a, int b, EdgeLine& line) {
    const int n = static_cast<int>(outline.size());
    const int span = (b - a + n) % n;
    const int trim = static_cast<int>(kSideTrim * span);
    std::vector<cv::Point> pts;
    for (int k = trim; k <= span - trim; ++k) {
        pts.push_back(outline[(a + k) % n]);
    }
    if (pts.size() < 3) {
        return false;
    }
    cv::Vec4f f;
    cv::fitLine(pts, f, cv::DIST_L2, 0, 0.01, 0.01);
    line = {{f[2], f[3]}, {f[0], f[1]}};
    return true;
}

struct SideSpec {
    EdgeLine line;
    bool border;
};

// Fits the outline with a polygon whose real sides make a quad; the sides in outline order.
bool quadSides(const std::vector<cv::Point>& outline, cv::Size size, std::vector<SideSpec>& out) {
    const double perimeter = cv::arcLength(outline, true);
    const double area = cv::contourArea(outline);
    std::vector<cv::Point> hull;
    cv::convexHull(outline, hull);
    if (area < kMinSolidity * cv::contourArea(hull)) {
        return false;  // strokes, letters, crosses: far from convex
    }
    for (const double tolerance : kFitTolerances) {
        const Polygon poly = fitPolygon(outline, size, tolerance * perimeter);
        const int n = static_cast<int>(poly.vertex.size());
        if (n < 4 || n > 6) {
            continue;
        }
        const int real =
            static_cast<int>(std::count(poly.border.begin(), poly.border.end(), kNone));
        if (!(real == 4 || (real == 3 && n == 4))) {
            continue;
        }
        std::vector<cv::Point> points;
        for (int v : poly.vertex) {
            points.push_back(outline[v]);
        }
        const double polyArea = cv::contourArea(points);
        if (!cv::isContourConvex(points) || !(polyArea > 0.0) || area < kMinAreaRatio * polyArea ||
            area > kMaxAreaRatio * polyArea) {
            return false;
        }
        out.clear();
        for (int i = 0; i < n; ++i) {
            if (poly.border[i] != kNone) {
                // Only the lone border side of a three-sided region closes the quad.
                if (real == 3) {
                    out.push_back({borderLine(poly.border[i], size), true});
                }
                continue;
            }
            EdgeLine line;
            if (!fitSide(outline, poly.vertex[i], poly.vertex[(i + 1) % n], line)) {
                return false;
            }
            out.push_back({line, false});
        }
        return true;
    }
    return false;
}

}  // namespace

std::vector<QuadCandidate> findQuadCandidates(const cv::Mat& mask, int polarity,
                                              const CoarseImage& coarse) {
    std::vector<std::vector<cv::Point>> outlines;
    std::vector<cv::Vec4i> hierarchy;
    cv::findContours(mask, outlines, hierarchy, cv::RETR_CCOMP, cv::CHAIN_APPROX_NONE);
    const double minSide = kMinQuadSide / coarse.factor;
    const cv::Size size = mask.size();
    std::vector<QuadCandidate> found;
    for (size_t k = 0; k < outlines.size(); ++k) {
        const std::vector<cv::Point>& outline = outlines[k];
        if (hierarchy[k][3] >= 0 || outline.size() < 4 * minSide) {
            continue;  // a hole, or too short to hold four sides
        }
        const cv::Rect box = cv::boundingRect(outline);
        if (box.width < minSide || box.height < minSide ||
            (box.width >= size.width - 1 && box.height >= size.height - 1)) {
            continue;  // a speck, or the ground itself
        }
        std::vector<SideSpec> sides;
        if (!quadSides(outline, size, sides)) {
            continue;
        }
        QuadCandidate q;
        q.polarity = polarity;
        bool ok = true;
        for (int i = 0; i < 4 && ok; ++i) {
            cv::Point2d corner;
            ok = intersect(sides[(i + 3) % 4].line, sides[i].line, corner);
            q.corners[i] = coarse.toFrame(corner);
            q.borderSide[i] = sides[i].border;
        }
        if (!ok || !isPlausibleQuad(q.corners)) {
            continue;
        }
        // Clockwise on screen, starting from the corner with the smallest x + y.
        if (signedArea2(q.corners) < 0.0) {
            std::reverse(q.corners.begin(), q.corners.end());
            // New side j joins old corners 3 - j and 2 - j: it is old side (2 - j) mod 4.
            const std::array<bool, 4> b = q.borderSide;
            for (int i = 0; i < 4; ++i) {
                q.borderSide[i] = b[(6 - i) % 4];
            }
        }
        int first = 0;
        for (int i = 1; i < 4; ++i) {
            if (q.corners[i].x + q.corners[i].y < q.corners[first].x + q.corners[first].y) {
                first = i;
            }
        }
        std::rotate(q.corners.begin(), q.corners.begin() + first, q.corners.end());
        std::rotate(q.borderSide.begin(), q.borderSide.begin() + first, q.borderSide.end());
        found.push_back(q);
    }
    return found;
}

}  // namespace detect
}  // namespace talonvireo
