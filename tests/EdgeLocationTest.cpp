// Orientation, contrast, per-row centroids, the line fit and the slope refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "TestRegions.h"
#include "render/RegionEncoding.h"
#include "sfr/EdgeCentroids.h"
#include "sfr/EdgeContrast.h"
#include "sfr/EdgeLocation.h"
#include "sfr/EdgeOrientation.h"
#include "sfr/HammingWindow.h"
#include "sfr/LineFit.h"
#include "sfr/RowCentroid.h"
#include "sfr/RowDerivative.h"
#include "sfr/SfrContext.h"

namespace {
using namespace talonvireo::sfr;
using namespace talonvireo::testing;
namespace pf = talonvireo::PixelFormat;
namespace render = talonvireo::render;

// Runs edge location on an 8-bit grey image; returns the status and leaves the context.
int locate(const cv::Mat& grey, SfrContext& ctx) {
    ctx = makeSfrContext(grey);
    return locateEdge(ctx, ctx.region);
}

TEST(EdgeLocation, VerticalEdgeWithSlopeExactlyZeroIsRefusedWithMinus4) {
    // Every row identical: the fitted slope is exactly 0, and such an edge has no phase
    // diversity to oversample.
    cv::Mat grey = renderGrey8(edgeScene(0.8, 0.0));
    SfrContext ctx;
    EXPECT_EQ(locate(grey, ctx), -4);
    EXPECT_EQ(ctx.line.slope, 0.0);
    EXPECT_EQ(measure(grey, pf::Grey8).status, -4);
}

TEST(EdgeLocation, EdgeAtFiftyDegreesIsMeasured) {
    // A wide region keeps a steep edge upright: its top and bottom strips differ less than
    // its left and right strips.
    render::SlantedEdgeScene scene = edgeScene(0.8, 50.0);
    scene.width = 160;
    scene.height = 60;
    SfrContext ctx;
    ASSERT_EQ(locate(renderGrey8(scene), ctx), 0);
    EXPECT_EQ(ctx.rotated, 0);
    EXPECT_NEAR(ctx.line.slope, std::tan(50.0 * M_PI / 180.0), 0.01);  // 1.19
    const Measurement m = measure(renderGrey8(scene), pf::Grey8);
    EXPECT_EQ(m.status, 0);
    EXPECT_NEAR(m.result.edgeAngle, 50.0, 0.2);
}

TEST(EdgeLocation, EdgeAtFiftyTwoDegreesIsRefusedWithMinus3) {
    render::SlantedEdgeScene scene = edgeScene(0.8, 52.0);  // slope 1.28
    scene.width = 160;
    scene.height = 60;
    SfrContext ctx;
    EXPECT_EQ(locate(renderGrey8(scene), ctx), -3);
    EXPECT_GT(std::fabs(ctx.line.slope), 1.25);
    EXPECT_EQ(measure(renderGrey8(scene), pf::Grey8).status, -3);
}

TEST(EdgeLocation, HorizontalEdgeIsTurnedAQuarterTurnAndMeasuredLikeAVerticalOne) {
    // H is V turned back a quarter turn: H(a, b) = V(cols - 1 - b, a), top dark, bottom bright.
    const cv::Mat v = renderGrey8(edgeScene(0.8, 6.0));
    cv::Mat h(v.cols, v.rows, CV_8U);
    for (int a = 0; a < h.rows; ++a) {
        for (int b = 0; b < h.cols; ++b) {
            h.at<unsigned char>(a, b) = v.at<unsigned char>(h.cols - 1 - b, a);
        }
    }
    ASSERT_LT(cv::mean(h.rowRange(0, 3))[0], cv::mean(h.rowRange(h.rows - 3, h.rows))[0]);
    SfrContext ctx;
    ASSERT_EQ(locate(h, ctx), 0);
    EXPECT_EQ(ctx.rotated, 1);
    const Measurement mh = measure(h, pf::Grey8, 8.0);
    const Measurement mv = measure(v, pf::Grey8, 8.0);
    ASSERT_EQ(mh.status, 0);
    EXPECT_EQ(std::memcmp(&mh.result, &mv.result, sizeof mh.result), 0);
}

TEST(EdgeLocation, QuarterTurnMapsPixelsAsTransposeThenRowReversal) {
    cv::Mat m(6, 5, CV_64F);
    for (int r = 0; r < 6; ++r) {
        for (int c = 0; c < 5; ++c) {
            m.at<double>(r, c) = r < 3 ? 0.0 : 100.0 + 10 * r + c;  // top dark, bottom bright
        }
    }
    const cv::Mat before = m.clone();
    ASSERT_TRUE(turnEdgeUpright(m));
    ASSERT_EQ(m.size(), cv::Size(6, 5));
    for (int i = 0; i < 5; ++i) {
        for (int j = 0; j < 6; ++j) {
            EXPECT_EQ(m.at<double>(i, j), before.at<double>(j, 4 - i));
        }
    }
    cv::Mat upright = before.t();
    EXPECT_FALSE(turnEdgeUpright(upright)) << "an edge already upright is left alone";
}

TEST(EdgeLocation, StripSums100And140AreRefusedFor167PercentContrast) {
    EXPECT_FALSE(hasEnoughContrast(EdgeStrips{100.0, 140.0}));
    // Through a whole image: 10 rows, the first five columns at 2.0 (sum 100), the last five
    // at 2.8 (sum 140).
    cv::Mat img(10, 20, CV_64F, cv::Scalar(2.0));
    img.colRange(15, 20).setTo(2.8);
    const EdgeStrips s = edgeStrips(img);
    EXPECT_DOUBLE_EQ(s.left, 100.0);
    EXPECT_DOUBLE_EQ(s.right, 140.0);
    EXPECT_FALSE(hasEnoughContrast(s));
    // And through the API: dark 100, bright 140 in 8-bit levels.
    render::SlantedEdgeScene scene = edgeScene(0.8, 5.0);
    scene.dark = 100;
    scene.bright = 140;
    EXPECT_EQ(measureScene(scene).status, -2);
}

TEST(EdgeLocation, StripSums100And160PassFor23PercentContrast) {
    EXPECT_TRUE(hasEnoughContrast(EdgeStrips{100.0, 160.0}));
    render::SlantedEdgeScene scene = edgeScene(0.8, 5.0);
    scene.dark = 100;
    scene.bright = 160;
    EXPECT_EQ(measureScene(scene).status, 0);
}

TEST(EdgeLocation, KernelsMakeTheDerivativeAcrossTheEdgePositive) {
    const DerivativeKernels up = kernelsFor(EdgeStrips{10.0, 90.0});
    EXPECT_EQ(up.twoTap[0], -0.5);
    EXPECT_EQ(up.twoTap[1], 0.5);
    EXPECT_EQ(up.threeTap[0], -0.5);
    EXPECT_EQ(up.threeTap[1], 0.0);
    EXPECT_EQ(up.threeTap[2], 0.5);
    const DerivativeKernels down = kernelsFor(EdgeStrips{90.0, 10.0});
    EXPECT_EQ(down.twoTap[0], 0.5);
    EXPECT_EQ(down.twoTap[1], -0.5);
    EXPECT_EQ(down.threeTap[2], -0.5);
    // Equal strips count as "not brighter on the right".
    EXPECT_EQ(kernelsFor(EdgeStrips{50.0, 50.0}).twoTap[0], 0.5);
}

TEST(EdgeLocation, RowWithWindowedSumBelowOneTenThousandthGetsCentroidZero) {
    const double tiny[5] = {0.00001, 0.00002, 0.00001, 0.00002, 0.00001};  // sum 0.00007
    EXPECT_EQ(rowCentroid(tiny, 5), 0.0);
    const double signed_[4] = {1.0, -1.0, 0.5, -0.5};  // sum 0
    EXPECT_EQ(rowCentroid(signed_, 4), 0.0);
    const double peak[5] = {0.0, 1.0, 2.0, 1.0, 0.0};
    EXPECT_DOUBLE_EQ(rowCentroid(peak, 5), 3.0);  // one-based

    cv::Mat derivative(3, 8, CV_64F, cv::Scalar(0.0));
    derivative.at<double>(0, 4) = 5.0;
    derivative.at<double>(2, 2) = 5.0;
    const std::vector<double> loc = centroidsUnderCentredWindow(derivative);
    EXPECT_DOUBLE_EQ(loc[0], 5.0 - 0.5);
    EXPECT_EQ(loc[1], -0.5);
    EXPECT_DOUBLE_EQ(loc[2], 3.0 - 0.5);
}

TEST(EdgeLocation, TwoTapDerivativeCopiesItsEndColumns) {
    const double in[5] = {1.0, 3.0, 7.0, 8.0, 20.0};
    const double k[2] = {-0.5, 0.5};
    double out[5];
    rowDerivative2(in, out, 5, k);
    // out(x) = (in(x+1) - in(x)) / 2, then out(0) = out(1), out(4) = out(3).
    const double expected[5] = {2.0, 2.0, 0.5, 6.0, 6.0};
    for (int i = 0; i < 5; ++i) {
        EXPECT_DOUBLE_EQ(out[i], expected[i]) << i;
    }
}

TEST(EdgeLocation, ThreeTapDerivativeIsCentredAndCopiesItsEndColumns) {
    const double in[6] = {1.0, 3.0, 7.0, 8.0, 20.0, 21.0};
    const double k[3] = {-0.5, 0.0, 0.5};
    double out[6];
    rowDerivative3(in, out, 6, k);
    // out(x) = (in(x+1) - in(x-1)) / 2 for x = 1..4.
    const double expected[6] = {3.0, 3.0, 2.5, 6.5, 6.5, 6.5};
    for (int i = 0; i < 6; ++i) {
        EXPECT_DOUBLE_EQ(out[i], expected[i]) << i;
    }
    EXPECT_THROW(rowDerivative3(in, out, 1, k), std::invalid_argument);
}

TEST(EdgeLocation, HammingWindowMatchesTheDirectCosine) {
    for (int n : {5, 31, 100, 400, 1000}) {
        for (double mid : {(n + 1) * 0.5, 1.0, 3.25, n * 0.8, -4.0, n + 7.5}) {
            const std::vector<double> w = hammingWindow(n, mid);
            const double wid = std::max(mid - 1.0, n - mid);
            for (int i = 1; i <= n; ++i) {
                const double direct = 0.54 + 0.46 * std::cos(M_PI * (i - mid) / wid);
                ASSERT_NEAR(w[i - 1], direct, 1e-14) << n << " " << mid << " " << i;
            }
        }
    }
    const std::vector<double> w = hammingWindow(5, 3.0);  // wid 2: ends at 0.08, centre 1
    EXPECT_NEAR(w[0], 0.08, 1e-15);
    EXPECT_NEAR(w[2], 1.0, 1e-15);
    EXPECT_NEAR(w[4], 0.08, 1e-15);
}

TEST(EdgeLocation, LineFitRecoversAnExactLine) {
    std::vector<double> y(37);
    for (int m = 0; m < 37; ++m) {
        y[m] = 12.25 + 0.1875 * m;
    }
    const EdgeLine line = fitLine(y.data(), 37);
    EXPECT_NEAR(line.slope, 0.1875, 1e-14);
    EXPECT_NEAR(line.intercept, 12.25, 1e-12);
    const std::vector<double> flat(10, 0.3);
    EXPECT_EQ(fitLine(flat.data(), 10).slope, 0.0);
    EXPECT_EQ(fitLine(flat.data(), 9).slope, 0.0);
}

TEST(EdgeLocation, CropKeepsAWholeNumberOfPhaseCycles) {
    EXPECT_EQ(phaseCycleRows(100, 0.0875), 91);   // floor(8.75) = 8 -> 8 / 0.0875 = 91.4
    EXPECT_EQ(phaseCycleRows(100, -0.0875), 91);  // the sign does not matter
    EXPECT_EQ(phaseCycleRows(100, 0.005), 0);     // less than one cycle: keep every row
    EXPECT_EQ(phaseCycleRows(60, 1.19), 60);      // 71 / 1.19 = 59.7 rounds to 60

    cv::Mat grey = renderGrey8(edgeScene(0.8, 5.0));
    SfrContext ctx;
    ASSERT_EQ(locate(grey, ctx), 0);
    EXPECT_EQ(ctx.working.rows, phaseCycleRows(100, ctx.line.slope));
    EXPECT_LT(ctx.working.rows, 100);
    EXPECT_NEAR(ctx.edgeAngle, std::atan(ctx.line.slope) * 180.0 / M_PI, 1e-12);
    EXPECT_NEAR(ctx.delfac, std::cos(std::atan(ctx.line.slope)), 1e-15);
}

TEST(EdgeLocation, SecondPassFollowsTheEdgeAcrossTheRegion) {
    // A 30-degree edge leaves the centred window far from the edge in the end rows; the
    // second pass, with its window on the first line, finds it.
    render::SlantedEdgeScene scene = edgeScene(0.8, 30.0);
    SfrContext ctx;
    ASSERT_EQ(locate(renderGrey8(scene), ctx), 0);
    EXPECT_NEAR(ctx.line.slope, std::tan(30.0 * M_PI / 180.0), 0.003);
}

TEST(EdgeLocation, RegionsBelowTheStripWidthsThrow) {
    cv::Mat narrow(10, 4, CV_64F, cv::Scalar(1.0));
    EXPECT_THROW(edgeStrips(narrow), std::invalid_argument);
    cv::Mat flat(2, 10, CV_64F, cv::Scalar(1.0));
    EXPECT_THROW(turnEdgeUpright(flat), std::invalid_argument);
}

}  // namespace
