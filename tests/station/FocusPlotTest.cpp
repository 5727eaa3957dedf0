// The through-focus plots: their size, the panels' split by zone and orientation, the zone's
// best-focus line at its z, the map's colours on one scale with its bar, and studies without a
// surface or without edges.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "station/FocusPlot.h"

namespace {
using namespace talonvireo::station;

constexpr double kPi = 3.141592653589793;

// The SFR of a Gaussian line spread whose variance grows with the square of the defocus.
double gaussianSfr(double z, double best) {
    const double f = 0.125, sigma0 = 0.8, gain = 0.1;
    const double d = gain * (z - best);
    return std::exp(-2.0 * kPi * kPi * f * f * (sigma0 * sigma0 + d * d));
}

struct EdgeAt {
    double x, y;  // px
    std::string orientation;
    double bestZ;
};

// A study put together as studyFocus does it, from edges of known best focus on a frame of
// `size` pixels, swept over `zs`.
FocusStudy studyOf(const std::vector<EdgeAt>& edges, cv::Size size, double pitchUm,
                   const std::vector<double>& zs, double minSfr, double noise = 0.0) {
    std::mt19937 rng(7);
    std::normal_distribution<double> jitter(0.0, noise > 0.0 ? noise : 1.0);
    FocusStudy study;
    study.measurand = "talonvireoSFR_raw10_HLX6C";
    study.minSfr = minSfr;
    study.pixelPitchUm = pitchUm;
    study.width = size.width;
    study.height = size.height;
    for (const double z : zs) {
        study.frames.push_back({"frame.raw", z});
        study.frameErrors.emplace_back();
    }
    study.zones = focusZones();
    const double cx = 0.5 * (size.width - 1), cy = 0.5 * (size.height - 1);
    const double halfDiagonal = 0.5 * std::hypot(size.width, size.height);
    std::vector<FocusPoint> points;
    std::vector<FocusCurve> curves;
    for (const EdgeAt& at : edges) {
        FocusEdge e;
        e.edge = static_cast<int>(study.edges.size());
        e.x = at.x;
        e.y = at.y;
        e.xMm = (at.x - cx) * pitchUm / 1000.0;
        e.yMm = (at.y - cy) * pitchUm / 1000.0;
        e.orientation = at.orientation;
        const double field = std::hypot(at.x - cx, at.y - cy) / halfDiagonal;
        for (const FocusZone& z : study.zones) {
            if (field >= z.fromField && field <= z.toField) {
                e.zone = z.name;
                break;
            }
        }
        for (const double z : zs) {
            e.samples.push_back({z, gaussianSfr(z, at.bestZ) + (noise > 0.0 ? jitter(rng) : 0.0)});
        }
        e.curve = fitFocusCurve(e.samples, minSfr);
        curves.push_back(e.curve);
        if (e.curve.bracketed()) {
            points.push_back({e.xMm, e.yMm, e.curve.bestZ});
        }
        study.edges.push_back(e);
    }
    // Each zone's mean best focus per orientation, over the edges that bracket it.
    const auto mean = [&study](const std::string& zone, const char* orientation, int& count) {
        double sum = 0.0;
        count = 0;
        for (const FocusEdge& e : study.edges) {
            const bool counts = e.zone == zone && e.orientation == orientation;
            if (counts && e.curve.bracketed()) {
                sum += e.curve.bestZ;
                ++count;
            }
        }
        return count > 0 ? sum / count : FocusCurve::kNaN;
    };
    for (FocusZone& zone : study.zones) {
        zone.tangentialZ = mean(zone.name, "tangential", zone.tangential);
        zone.sagittalZ = mean(zone.name, "sagittal", zone.sagittal);
    }
    study.surface = fitFocusSurface(points);
    study.window = commonFocusWindow(curves);
    return study;
}

std::vector<double> sweep(double from, double to, double step) {
    std::vector<double> zs;
    for (double z = from; z <= to + 1e-9; z += step) {
        zs.push_back(z);
    }
    return zs;
}

// A 4000 x 3000 frame at 1.4 um: 52 edges in pairs (tangential and sagittal) spread over the
// field, an edge without orientation at the very centre; best focus on a tilted, curved
// surface, with astigmatism growing to 4 um at the corners.
FocusStudy realisticStudy() {
    const cv::Size size(4000, 3000);
    const double pitch = 1.4, cx = 1999.5, cy = 1499.5;
    const auto surface = [&](double x, double y) {
        const double xm = (x - cx) * pitch / 1000.0, ym = (y - cy) * pitch / 1000.0;
        return 2.0 + 3.0 * xm - 2.0 * ym + 0.5 * (xm * xm + ym * ym);
    };
    std::vector<cv::Point2d> targets = {{0.25, 0.0}, {-0.25, 0.0}, {0.0, 0.3},  {0.0, -0.3},
                                        {0.6, 0.0},  {-0.6, 0.0},  {0.0, 0.75}, {0.0, -0.75}};
    for (const double u : {-0.5, 0.5}) {
        for (const double v : {-0.5, 0.5}) {
            targets.push_back({u, v});
        }
    }
    for (const double u : {-0.9, -0.6, 0.6, 0.9}) {
        for (const double v : {-0.88, 0.88}) {
            targets.push_back({u, v});
        }
    }
    for (const double u : {-0.9, 0.9}) {
        targets.push_back({u, 0.45});
        targets.push_back({u, -0.45});
    }
    targets.push_back({0.0, 0.92});
    std::vector<EdgeAt> edges = {{cx, cy, "none", surface(cx, cy)},
                                 {cx + 160.0, cy, "tangential", surface(cx + 160.0, cy)}};
    const double halfDiagonal = 2500.0;
    for (const cv::Point2d& t : targets) {
        const double x = cx + t.x * 2000.0, y = cy + t.y * 1500.0;
        const double r = std::hypot(x - cx, y - cy);
        const double field = r / halfDiagonal, astigmatism = 4.0 * field * field;
        // The square's tangential and sagittal edges 110 px either side of its centre, at
        // the same distance from the frame centre.
        const double ux = (x - cx) / r, uy = (y - cy) / r;
        const double tx = x - 110.0 * uy, ty = y + 110.0 * ux;
        const double sx = x + 110.0 * uy, sy = y - 110.0 * ux;
        edges.push_back({tx, ty, "tangential", surface(tx, ty) + 0.5 * astigmatism});
        edges.push_back({sx, sy, "sagittal", surface(sx, sy) - 0.5 * astigmatism});
    }
    return studyOf(edges, size, pitch, sweep(-20.0, 20.0, 2.5), 0.3, 0.004);
}

int pixelsOf(const cv::Mat& img, const cv::Rect& area, const cv::Scalar& bgr, int tolerance) {
    cv::Mat mask;
    cv::inRange(img(area), bgr - cv::Scalar::all(tolerance), bgr + cv::Scalar::all(tolerance),
                mask);
    return cv::countNonZero(mask);
}

int difference(const cv::Vec3b& a, const cv::Vec3b& b) {
    return std::max({std::abs(a[0] - b[0]), std::abs(a[1] - b[1]), std::abs(a[2] - b[2])});
}

// The colour bar's colour for z.
cv::Vec3b barColour(const cv::Mat& map, const FocusMapLayout& l, double z) {
    const double t = (l.toZ - z) / (l.toZ - l.fromZ);
    const int row = l.colourBar.y + static_cast<int>(std::lround(t * (l.colourBar.height - 1)));
    return map.at<cv::Vec3b>(row, l.colourBar.x + l.colourBar.width / 2);
}

const cv::Scalar kInk(40, 40, 40);
const cv::Scalar kTangential(178, 114, 0);
const cv::Scalar kSagittal(0, 94, 213);

TEST(FocusPlot, CurvesHaveARowOfTwoPanelsPerZone) {
    const FocusStudy study = realisticStudy();
    ASSERT_EQ(study.edges.size(), 52u);
    const cv::Mat plot = plotFocusCurves(study);
    ASSERT_EQ(plot.type(), CV_8UC3);
    ASSERT_EQ(plot.size(), cv::Size(1000, 84 + 3 * 290 + 40));
    for (int row = 0; row < 3; ++row) {
        const cv::Rect left(56, 84 + 290 * row + 30, 428, 210);
        const cv::Rect right = left + cv::Point(500, 0);
        // Tangential curves on the left, sagittal on the right, never the other way.
        EXPECT_GT(pixelsOf(plot, left, kTangential, 10), 200) << row;
        EXPECT_EQ(pixelsOf(plot, left, kSagittal, 10), 0) << row;
        EXPECT_GT(pixelsOf(plot, right, kSagittal, 10), 200) << row;
        EXPECT_EQ(pixelsOf(plot, right, kTangential, 10), 0) << row;
    }
    // The edge at the very centre has no orientation: purple, with the centre's tangential.
    const cv::Scalar purple(167, 121, 204);
    EXPECT_GT(pixelsOf(plot, cv::Rect(56, 114, 428, 210), purple, 10), 30);
    EXPECT_EQ(pixelsOf(plot, cv::Rect(556, 114, 428, 210), purple, 10), 0);
}

TEST(FocusPlot, TheZonesMeanBestFocusIsADashedLineAtItsZ) {
    // Centre edges only: tangential at 1 and 5 um (mean 3), sagittal at -6 and -2 (mean -4),
    // swept -20 .. 20 (the axis, 5 um ticks), no limit.
    const cv::Size size(4000, 3000);
    const std::vector<EdgeAt> edges = {{2100, 1500, "tangential", 1.0},
                                       {1900, 1500, "tangential", 5.0},
                                       {2000, 1600, "sagittal", -6.0},
                                       {2000, 1400, "sagittal", -2.0}};
    const FocusStudy study = studyOf(edges, size, 1.4, sweep(-20.0, 20.0, 2.5), 0.0);
    ASSERT_NEAR(study.zones[0].tangentialZ, 3.0, 1e-6);
    ASSERT_NEAR(study.zones[0].sagittalZ, -4.0, 1e-6);
    const cv::Mat plot = plotFocusCurves(study);
    ASSERT_EQ(plot.size(), cv::Size(1000, 84 + 290 + 40));
    // Plotting area of a panel: x 56 .. 484 for -20 .. 20 um, y 30 .. 240 below the header.
    const auto x = [](double z) {
        return static_cast<int>(std::lround(56 + (z + 20.0) / 40 * 428));
    };
    const auto inkAt = [&](int column) {
        return pixelsOf(plot, cv::Rect(column - 1, 84 + 50, 3, 190), kInk, 0);
    };
    EXPECT_GT(inkAt(x(3.0)), 100);
    EXPECT_LT(inkAt(x(5.0)), 10);
    EXPECT_LT(inkAt(x(1.0)), 10);
    EXPECT_GT(inkAt(500 + x(-4.0)), 100);
    EXPECT_LT(inkAt(500 + x(3.0)), 10);
    // Each edge's best focus: a triangle in its colour just over its peak.
    const int peakY = static_cast<int>(std::lround(240 - gaussianSfr(0, 0) / 1.0 * 210));
    EXPECT_GT(pixelsOf(plot, cv::Rect(x(5.0) - 3, 84 + peakY - 11, 7, 8), kTangential, 10), 10);
    EXPECT_GT(pixelsOf(plot, cv::Rect(500 + x(-6.0) - 3, 84 + peakY - 11, 7, 8), kSagittal, 10),
              10);
}

TEST(FocusPlot, TheCommonWindowIsShadedAndTheLimitDashed) {
    const FocusStudy study = realisticStudy();
    ASSERT_TRUE(study.window.exists());
    const cv::Mat plot = plotFocusCurves(study);
    const auto x = [](double z) {
        return static_cast<int>(std::lround(56 + (z + 20.0) / 40 * 428));
    };
    // Low in the centre panel, below every curve inside the window: tinted there, white out.
    const int low = 84 + 240 - 10;  // SFR 0.05
    const cv::Vec3b inside = plot.at<cv::Vec3b>(low, x(study.window.centreZ()));
    EXPECT_LT(inside[0], 245);
    EXPECT_GT(inside[1], inside[0] + 3);
    EXPECT_EQ(plot.at<cv::Vec3b>(low, x(study.window.toZ + 3.0)), cv::Vec3b(255, 255, 255));
    // The 0.3 limit: a grey dashed line across the panel, at y 240 - 0.3 * 210.
    const int y = 84 + 240 - 63;
    EXPECT_GT(pixelsOf(plot, cv::Rect(60, y - 1, 380, 3), cv::Scalar(110, 110, 110), 0), 150);
}

TEST(FocusPlot, TheMapsBackgroundAndMarkersShareTheColourBarsScale) {
    const FocusStudy study = realisticStudy();
    ASSERT_TRUE(std::isfinite(study.surface.z0));
    FocusMapLayout l;
    const cv::Mat map = plotFocusMap(study, &l);
    ASSERT_EQ(map.type(), CV_8UC3);
    EXPECT_EQ(map.cols, 1000);
    // The frame: 2.8 x 2.1 mm either side of the centre, drawn to one scale both ways.
    EXPECT_NEAR(l.sensor.width / l.pxPerMm, 5.6, 0.05);
    EXPECT_NEAR(l.sensor.height / l.pxPerMm, 4.2, 0.05);
    EXPECT_LT(l.fromZ, l.toZ);
    // The bar runs from viridis purple (little green) at the foot to yellow at the top.
    EXPECT_LT(barColour(map, l, l.fromZ)[1], 10);
    EXPECT_GT(barColour(map, l, l.toZ)[1], 200);
    EXPECT_GT(barColour(map, l, l.toZ)[2], 200);

    // The background between markers is the surface's z on the bar's scale.
    const FocusSurface& s = study.surface;
    for (const cv::Point2d mm : {cv::Point2d(-1.9, 1.2), cv::Point2d(1.6, -0.4)}) {
        const cv::Point at(static_cast<int>(std::lround(l.centre.x + mm.x * l.pxPerMm)),
                           static_cast<int>(std::lround(l.centre.y + mm.y * l.pxPerMm)));
        const double z = s.z0 + s.slopeX * mm.x + s.slopeY * mm.y + s.curvature * (mm.dot(mm));
        EXPECT_LE(difference(map.at<cv::Vec3b>(at), barColour(map, l, z)), 6) << mm;
        EXPECT_GT(difference(map.at<cv::Vec3b>(at), barColour(map, l, z + 4.0)), 20) << mm;
    }
    // Each marker is filled with its own best focus's colour.
    int checked = 0;
    for (const FocusEdge& e : study.edges) {
        if (!e.curve.bracketed() || e.orientation != "sagittal") {
            continue;
        }
        const cv::Point at(static_cast<int>(std::lround(l.centre.x + e.xMm * l.pxPerMm)),
                           static_cast<int>(std::lround(l.centre.y + e.yMm * l.pxPerMm)));
        EXPECT_LE(difference(map.at<cv::Vec3b>(at), barColour(map, l, e.curve.bestZ)), 6) << e.edge;
        ++checked;
    }
    EXPECT_GE(checked, 20);
}

TEST(FocusPlot, AnEdgeOutsideTheSweepIsAHollowGreyMarker) {
    const FocusStudy study = realisticStudy();
    FocusMapLayout l;
    const cv::Mat map = plotFocusMap(study, &l);
    int open = 0;
    for (const FocusEdge& e : study.edges) {
        if (e.curve.bracketed()) {
            continue;
        }
        const cv::Point at(static_cast<int>(std::lround(l.centre.x + e.xMm * l.pxPerMm)),
                           static_cast<int>(std::lround(l.centre.y + e.yMm * l.pxPerMm)));
        EXPECT_EQ(map.at<cv::Vec3b>(at), cv::Vec3b(255, 255, 255)) << e.edge;
        EXPECT_GT(pixelsOf(map, cv::Rect(at - cv::Point(7, 7), cv::Size(15, 15)),
                           cv::Scalar(150, 150, 150), 10),
                  15)
            << e.edge;
        ++open;
    }
    EXPECT_GE(open, 1);  // the top right corner lies beyond +20 um
}

TEST(FocusPlot, AMapWithoutASurfaceShowsTheMarkersAndSaysSo) {
    // Three edges: too few for a surface.
    const std::vector<EdgeAt> edges = {{1000, 800, "tangential", -3.0},
                                       {3000, 800, "sagittal", 2.0},
                                       {2000, 2200, "tangential", 6.0}};
    const FocusStudy study = studyOf(edges, cv::Size(4000, 3000), 1.4, sweep(-20, 20, 2.5), 0.3);
    ASSERT_TRUE(std::isnan(study.surface.z0));
    FocusMapLayout l;
    const cv::Mat map = plotFocusMap(study, &l);
    ASSERT_EQ(map.type(), CV_8UC3);
    // "NO SURFACE FITTED" in vermilion in the header.
    EXPECT_GT(pixelsOf(map, cv::Rect(0, 30, 1000, 26), kSagittal, 40), 30);
    // A plain grey sensor, the markers on the scale of their best foci.
    EXPECT_EQ(map.at<cv::Vec3b>(l.sensor.y + 60, l.sensor.x + 10), cv::Vec3b(238, 238, 238));
    for (const FocusEdge& e : study.edges) {
        const cv::Point at(static_cast<int>(std::lround(l.centre.x + e.xMm * l.pxPerMm)),
                           static_cast<int>(std::lround(l.centre.y + e.yMm * l.pxPerMm)));
        EXPECT_LE(difference(map.at<cv::Vec3b>(at), barColour(map, l, e.curve.bestZ)), 6);
    }
}

TEST(FocusPlot, AStudyWithoutEdgesStillDraws) {
    FocusStudy empty;
    for (const cv::Mat& plot : {plotFocusCurves(empty), plotFocusMap(empty)}) {
        EXPECT_EQ(plot.type(), CV_8UC3);
        EXPECT_EQ(plot.cols, 1000);
        EXPECT_GT(plot.rows, 300);
    }
    FocusStudy frames = studyOf({}, cv::Size(4000, 3000), 1.4, sweep(-10, 10, 5), 0.3);
    const cv::Mat curves = plotFocusCurves(frames);
    EXPECT_EQ(curves.size(), cv::Size(1000, 84 + 290 + 40));
    EXPECT_FALSE(plotFocusMap(frames).empty());
}

}  // namespace
