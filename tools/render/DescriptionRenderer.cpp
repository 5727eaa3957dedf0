#include "render/DescriptionRenderer.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include "render/BlurredCoverage.h"
#include "render/LevelExposure.h"
#include "render/LineRegionPainter.h"
#include "render/RoundPainter.h"
#include "render/TextPainter.h"
#include "render/Undistortion.h"

namespace talonvireo {
namespace render {

namespace {

constexpr int kSidePoints = 32;  // samples of a side's image for its box
constexpr int kBandRows = 32;    // rows a thread paints at a time

void require(bool ok, const std::string& what) {
    if (!ok) {
        throw std::invalid_argument("chart description: " + what);
    }
}

bool finitePoint(ChartPoint p) {
    return std::isfinite(p.x) && std::isfinite(p.y);
}

double cross(ChartPoint o, ChartPoint a, ChartPoint b) {
    return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

// Every point on the camera's side of the homography's horizon: its weight has one sign (the
// first point's) throughout.
void requireInFront(const ChartRegistration& placement, ChartPoint p, const std::string& what,
                    double& side) {
    double w = 0.0;
    chartToUndistorted(placement, p, w);
    if (side == 0.0) {
        side = w;
    }
    require(w != 0.0 && (w > 0.0) == (side > 0.0),
            what + " lies behind the camera under the placement");
}

void checkDrawable(const ChartDescription& d, const ChartRegistration& placement) {
    double side = 0.0;
    for (std::size_t i = 0; i < d.shapes.size(); ++i) {
        const ChartShape& s = d.shapes[i];
        const std::string name = "shape " + std::to_string(i);
        require(s.polarity == 1 || s.polarity == -1, name + ": polarity must be +1 or -1");
        double sign = 0.0;
        for (int k = 0; k < 4; ++k) {
            const ChartPoint a = s.corners[k], b = s.corners[(k + 1) % 4],
                             c = s.corners[(k + 2) % 4];
            require(finitePoint(a), name + ": corners must be finite");
            requireInFront(placement, a, name, side);
            require(std::hypot(b.x - a.x, b.y - a.y) > 0.0, name + ": a side has no length");
            const double turn = cross(a, b, c);
            require(turn != 0.0 && (sign == 0.0 || (turn > 0.0) == (sign > 0.0)),
                    name + ": not a convex quadrilateral");
            sign = turn;
        }
    }
    for (std::size_t i = 0; i < d.edges.size(); ++i) {
        const ChartEdge& e = d.edges[i];
        const std::string name = "lone edge " + std::to_string(i);
        require(e.polarity == 1 || e.polarity == -1, name + ": polarity must be +1 or -1");
        require(finitePoint(e.from) && finitePoint(e.to), name + ": ends must be finite");
        require(std::hypot(e.to.x - e.from.x, e.to.y - e.from.y) > 0.0, name + ": no length");
        requireInFront(placement, e.from, name, side);
        requireInFront(placement, e.to, name, side);
    }
    for (std::size_t i = 0; i < d.marks.size(); ++i) {
        const ChartMark& m = d.marks[i];
        const std::string name = "mark " + std::to_string(i);
        require(m.polarity == 1 || m.polarity == -1, name + ": polarity must be +1 or -1");
        require(finitePoint(m.centre) && m.diameter > 0.0 && std::isfinite(m.diameter),
                name + ": diameter must be positive");
        requireInFront(placement, m.centre, name, side);
    }
}

// The pixels a shape and its blur reach: the box of its sides' images, widened by the
// farthest reach of the blur.
cv::Rect shapeBox(const ChartShape& s, const ChartRegistration& placement, double reach) {
    double x0 = 1e300, y0 = 1e300, x1 = -1e300, y1 = -1e300;
    for (int k = 0; k < 4; ++k) {
        const ChartPoint a = s.corners[k], b = s.corners[(k + 1) % 4];
        for (int i = 0; i < kSidePoints; ++i) {
            const double t = static_cast<double>(i) / kSidePoints;
            const ChartPoint p =
                chartToFrame(placement, {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)});
            x0 = std::min(x0, p.x);
            y0 = std::min(y0, p.y);
            x1 = std::max(x1, p.x);
            y1 = std::max(y1, p.y);
        }
    }
    // No overflow turning a shape far outside the frame into pixels.
    constexpr double kFar = 1e7;
    x0 = std::max(x0, -kFar);
    y0 = std::max(y0, -kFar);
    x1 = std::min(x1, kFar);
    y1 = std::min(y1, kFar);
    const int c0 = static_cast<int>(std::floor(x0 - reach));
    const int r0 = static_cast<int>(std::floor(y0 - reach));
    const int c1 = static_cast<int>(std::ceil(x1 + reach));
    const int r1 = static_cast<int>(std::ceil(y1 + reach));
    if (c1 < c0 || r1 < r0) {
        return {};
    }
    return {c0, r0, c1 - c0 + 1, r1 - r0 + 1};
}

}  // namespace

cv::Mat renderDescriptionLevels(const ChartDescription& description,
                                const DescriptionRenderSettings& settings) {
    checkRenderSettings(settings);
    const ChartRegistration& placement = settings.placement;
    checkDrawable(description, placement);

    PaintContext context;
    context.placement = &placement;
    context.blur = fieldBlur(settings);
    context.bend = distortionBounds(placement, settings.width, settings.height).bend;
    context.nodes = PixelNodes::make();
    context.cdf = NormalCdfTable::make();
    const double reach = kReachSigmas * context.blur.largest() + kHalfDiagonal + 2.0;
    const cv::Rect frame(0, 0, settings.width, settings.height);
    auto level = [&](int polarity) { return polarity > 0 ? settings.dark : settings.light; };

    // Everything to paint, in painting order.
    std::vector<LineRegion> regions;
    for (const ChartEdge& e : description.edges) {
        // The dark side: right of from -> to (y down) for polarity +1.
        const double dx = e.to.x - e.from.x, dy = e.to.y - e.from.y;
        const ChartPoint mid{0.5 * (e.from.x + e.to.x), 0.5 * (e.from.y + e.to.y)};
        const ChartPoint darkSide{mid.x - e.polarity * dy, mid.y + e.polarity * dx};
        regions.push_back(lineRegion({frameLine(placement, e.from, e.to, darkSide)}, frame,
                                     settings.dark, context));
    }
    for (const ChartShape& s : description.shapes) {
        std::vector<FrameLine> sides;
        for (int k = 0; k < 4; ++k) {
            sides.push_back(
                frameLine(placement, s.corners[k], s.corners[(k + 1) % 4], s.corners[(k + 2) % 4]));
        }
        regions.push_back(lineRegion(std::move(sides), shapeBox(s, placement, reach),
                                     level(s.polarity), context));
    }
    std::vector<RoundMark> rounds;
    for (const ChartMark& m : description.marks) {
        rounds.push_back(chartMark(m, level(m.polarity), context));
    }
    for (const ClutterDisc& d : settings.clutter.discs) {
        rounds.push_back(clutterDisc(d, level(d.polarity), context));
    }
    std::vector<TextMark> texts;
    for (const ClutterText& t : settings.clutter.texts) {
        texts.push_back(textMark(t, level(t.polarity), context));
    }

    // Bands of rows apart, each painted in order, so that threads never share a pixel and a
    // shape always lands over what lies below it.
    cv::Mat levels(settings.height, settings.width, CV_64F, cv::Scalar(settings.light));
    const int bands = (settings.height + kBandRows - 1) / kBandRows;
#pragma omp parallel for schedule(dynamic, 1)
    for (int b = 0; b < bands; ++b) {
        const cv::Rect band(0, b * kBandRows, settings.width, kBandRows);
        for (const LineRegion& region : regions) {
            paintLineRegion(levels, region, band, context);
        }
        for (const RoundMark& m : rounds) {
            paintRoundMark(levels, m, band, context);
        }
        for (const TextMark& t : texts) {
            paintTextMark(levels, t, band, context);
        }
    }
    return levels;
}

cv::Mat renderDescription(const ChartDescription& description,
                          const DescriptionRenderSettings& settings) {
    return exposeLevels(renderDescriptionLevels(description, settings), settings);
}

}  // namespace render
}  // namespace talonvireo
