// The oversampled profile, the spectrum, the derivative correction, the tables and read-outs.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <sstream>
#include <vector>

#include "PlainSlantedEdge.h"
#include "TestRegions.h"
#include "sfr/DerivativeCorrection.h"
#include "sfr/EdgeLocation.h"
#include "sfr/EdgeProjection.h"
#include "sfr/LineSpread.h"
#include "sfr/LineSpreadTransform.h"
#include "sfr/SfrContext.h"
#include "sfr/SfrCore.h"
#include "sfr/SfrReadout.h"
#include "sfr/SfrTables.h"

namespace {
using namespace talonvireo::sfr;
using namespace talonvireo::testing;
namespace render = talonvireo::render;

SfrContext runCore(const cv::Mat& region, int* status = nullptr) {
    SfrContext ctx = makeSfrContext(region);
    const int s = runSfrCore(ctx);
    if (status != nullptr) {
        *status = s;
    }
    return ctx;
}

TEST(SfrTables, ThirtyTwoColumnRegionGivesSixtyFourEntriesAndSixtyFiveCorrections) {
    render::SlantedEdgeScene scene = edgeScene(0.8, 5.0);
    scene.width = 32;
    scene.height = 40;
    int status = -1;
    const SfrContext ctx = runCore(renderGrey8(scene), &status);
    ASSERT_EQ(status, 0);
    ASSERT_EQ(ctx.working.cols, 32);
    ASSERT_EQ(ctx.freqTable.size(), 64u);
    ASSERT_EQ(ctx.sfrTable.size(), 64u);
    for (int k = 0; k < 64; ++k) {
        EXPECT_NEAR(ctx.freqTable[k][0], k / (32.0 * ctx.delfac), 1e-14) << k;
    }
    // 2 * 32 + 1 corrections; the tables use indices 0..63, never 64.
    const std::vector<double> correct = derivativeCorrection(32);
    EXPECT_EQ(correct.size(), 65u);
}

TEST(SfrTables, DerivativeCorrectionNeverExceedsTen) {
    for (int cols = 5; cols <= 400; ++cols) {
        const std::vector<double> correct = derivativeCorrection(cols);
        ASSERT_EQ(correct.size(), static_cast<size_t>(2 * cols + 1));
        EXPECT_EQ(correct[0], 1.0);
        double largest = 0.0;
        for (double c : correct) {
            EXPECT_LE(c, 10.0);
            EXPECT_GE(c, 1.0);
            largest = std::max(largest, c);
        }
        EXPECT_EQ(largest, 10.0) << "the last entries approach x = pi and are limited";
    }
    // correct(i) = x / sin(x), x = 2 pi (i + 1) / (2n + 2): spot values for 32 columns.
    const std::vector<double> correct = derivativeCorrection(32);
    const double x = 2.0 * M_PI * 11.0 / 132.0;
    EXPECT_NEAR(correct[10], x / std::sin(x), 1e-15);
}

TEST(SfrTables, RowsAfterTheCropEnterTheOffsetAsRowsTimesSlope) {
    // round(-R s 4): with R = 5, s = 0.3 this is -6; (R - 1) s would give -5 (4.8 rounds to 5).
    EXPECT_EQ(projectionOffset(5, 0.3), -6);
    EXPECT_EQ(projectionOffset(91, 0.0875), -32);  // -31.85
    EXPECT_EQ(projectionOffset(10, -0.125), 5);    // halves round away from zero
    EXPECT_EQ(projectionOffset(10, 0.0625), -3);   // -2.5 -> -3
}

TEST(SfrTables, SfrAtZeroIsExactlyOneWhateverTheSpectrum) {
    std::mt19937 rng(3);
    for (int trial = 0; trial < 12; ++trial) {
        render::SlantedEdgeScene scene = edgeScene(0.4 + 0.1 * trial, 2.0 + 3.0 * trial);
        scene.noise = trial * 2.0;
        scene.seed = rng();
        scene.darkFirst = trial % 2 == 0;
        int status = -1;
        const SfrContext ctx = runCore(renderGrey8(scene), &status);
        ASSERT_EQ(status, 0) << trial;
        EXPECT_EQ(ctx.sfrTable[0][0], 1.0);
        EXPECT_EQ(ctx.freqTable[0][0], 0.0);
    }
}

TEST(SfrTables, ZeroSpectrumIsRefusedWithMinus2AndWritesNoTable) {
    // A flat working image has a flat profile, a zero LSF and so a zero DC term.
    SfrContext ctx = makeSfrContext(cv::Mat(20, 20, CV_8U, cv::Scalar(50)));
    ctx.working = cv::Mat(20, 20, CV_64F, cv::Scalar(50.0));
    ctx.line.slope = 0.1;
    ctx.kernels = DerivativeKernels{{-0.5, 0.5}, {-0.5, 0.0, 0.5}};
    EXPECT_EQ(writeChannelTables(ctx, 0), -2);
    EXPECT_TRUE(ctx.freqTable.empty());
    EXPECT_TRUE(ctx.sfrTable.empty());
}

TEST(SfrTables, EmptyBinsAreFilledFromTheirNeighboursInIncreasingOrder) {
    ProjectionBins bins;
    bins.counts = {0, 0, 2, 0, 0, 4, 1, 0, 0};
    bins.sums = {0, 0, 20, 0, 0, 80, 30, 0, 0};
    bins.start = 1;
    fillEmptyBins(bins, 6);
    // Bin 1 copies bin 2; bin 3 averages bins 2 and 4 (still empty); bin 4 then averages the
    // freshly filled bin 3 and bin 5.
    const std::vector<double> counts = {0, 2, 2, 1, 2.5, 4, 1, 0, 0};
    const std::vector<double> sums = {0, 20, 20, 10, 45, 80, 30, 0, 0};
    EXPECT_EQ(bins.counts, counts);
    EXPECT_EQ(bins.sums, sums);
    const std::vector<double> esf = binMeans(bins, 6);
    EXPECT_EQ(esf, (std::vector<double>{10, 10, 10, 18, 20, 30}));
}

TEST(SfrTables, BinsStillEmptyGiveZeroInTheProfile) {
    ProjectionBins bins;
    bins.counts = {0, 0, 0, 0, 3, 0};
    bins.sums = {0, 0, 0, 0, 9, 0};
    bins.start = 2;
    fillEmptyBins(bins, 3);  // bin 2 averages two empty neighbours and stays empty
    EXPECT_EQ(bins.counts[2], 0.0);
    EXPECT_EQ(bins.counts[3], 1.5);  // half of bin 4's count and sum: mean 3
    EXPECT_EQ(binMeans(bins, 3), (std::vector<double>{0, 3, 3}));
}

TEST(SfrTables, EveryPixelLandsInOneBin) {
    const cv::Mat grey = renderGrey8(edgeScene(0.8, 7.0));
    cv::Mat working;
    grey.convertTo(working, CV_64F);
    const ProjectionBins bins = projectOntoEdgeNormal(working, std::tan(7.0 * M_PI / 180.0));
    double count = 0.0;
    double sum = 0.0;
    for (size_t i = 0; i < bins.counts.size(); ++i) {
        count += bins.counts[i];
        sum += bins.sums[i];
    }
    EXPECT_EQ(count, 100.0 * 100.0);
    EXPECT_DOUBLE_EQ(sum, cv::sum(working)[0]);
    EXPECT_EQ(bins.counts[0], 0.0);
}

TEST(SfrTables, CentredLineSpreadPeaksAtTheMiddle) {
    std::vector<double> esf(80);
    for (int i = 0; i < 80; ++i) {
        esf[i] = 1.0 / (1.0 + std::exp(-(i - 20.3) / 1.5));  // edge far left of the middle
    }
    const double k3[3] = {-0.5, 0.0, 0.5};
    const std::vector<double> lsf = centredLineSpread(esf, k3);
    size_t peak = 0;
    for (size_t i = 0; i < lsf.size(); ++i) {
        peak = lsf[i] > lsf[peak] ? i : peak;
    }
    EXPECT_NEAR(static_cast<double>(peak), 40.0 - 1.0, 1.0);  // (N + 1) / 2, one-based
}

TEST(LineSpreadTransform, EqualsTheDirectSumWithOneSineAndCosinePerTerm) {
    std::mt19937 rng(5);
    std::normal_distribution<double> gauss(0.0, 1.0);
    double worst = 0.0;
    for (int n : {20, 36, 100, 240, 360, 400, 800}) {
        for (int kind = 0; kind < 3; ++kind) {
            std::vector<double> lsf(n);
            for (int j = 0; j < n; ++j) {
                const double d = (j - n / 2.0) / 3.0;
                lsf[j] = kind == 0   ? std::exp(-d * d)
                         : kind == 1 ? gauss(rng)
                                     : std::exp(-d * d) + 0.01 * gauss(rng);
            }
            const std::vector<double> direct = plainSpectrum(lsf, n / 2);
            std::vector<double> fast(n / 2);
            lineSpreadTransform(lsf.data(), n, n / 2, fast.data());
            double scale = 0.0;
            for (double v : lsf) {
                scale += std::fabs(v);
            }
            for (int k = 0; k < n / 2; ++k) {
                const double rel = std::fabs(fast[k] - direct[k]) / scale;
                worst = std::max(worst, rel);
                ASSERT_LE(rel, 1e-12) << "n " << n << " k " << k;
            }
        }
    }
    std::ostringstream text;
    text << std::scientific << worst;
    RecordProperty("worst_relative_difference", text.str());
}

TEST(LineSpreadTransform, MagnitudesOfKnownSignals) {
    std::vector<double> impulse(16, 0.0);
    impulse[3] = 2.0;
    std::vector<double> mag(8);
    lineSpreadTransform(impulse.data(), 16, 8, mag.data());
    for (double m : mag) {
        EXPECT_NEAR(m, 2.0, 1e-15);
    }
    std::vector<double> tone(16);
    for (int j = 0; j < 16; ++j) {
        tone[j] = std::cos(2.0 * M_PI * 3.0 * j / 16.0);
    }
    lineSpreadTransform(tone.data(), 16, 8, mag.data());
    for (int k = 0; k < 8; ++k) {
        EXPECT_NEAR(mag[k], k == 3 ? 8.0 : 0.0, 1e-13) << k;
    }
}

SfrContext tableContext(const std::vector<double>& freq, const std::vector<double>& sfr) {
    SfrContext ctx = makeSfrContext(cv::Mat(4, 4, CV_8U, cv::Scalar(0)));
    for (size_t i = 0; i < freq.size(); ++i) {
        ctx.freqTable.push_back({freq[i], 0, 0, 0});
        ctx.sfrTable.push_back({sfr[i], 0, 0, 0});
    }
    return ctx;
}

TEST(SfrReadout, InterpolatesBetweenTheBracketingEntries) {
    const SfrContext ctx = tableContext({0.0, 0.1, 0.2, 0.3}, {1.0, 0.8, 0.4, 0.2});
    EXPECT_NEAR(sfrAtDivisor(ctx, 0, 4.0), 0.8 + (0.4 - 0.8) / 0.1 * 0.025, 1e-15);  // f 0.125
    EXPECT_NEAR(sfrAtDivisor(ctx, 0, 2.5), 0.4, 1e-15);  // f 0.2 is not "above" 0.2
    EXPECT_NEAR(mtf50(ctx, 0), 0.1 + 0.1 / (0.4 - 0.8) * (0.5 - 0.8), 1e-15);
}

TEST(SfrReadout, Mtf50ExtendsTheFirstSegmentWhenTheSfrNeverFallsBelowHalf) {
    const SfrContext ctx = tableContext({0.0, 0.1, 0.2}, {1.0, 0.9, 0.7});
    EXPECT_NEAR(mtf50(ctx, 0), 0.0 + 0.1 / (0.9 - 1.0) * (0.5 - 1.0), 1e-15);  // 0.5
}

TEST(SfrReadout, FrequencyBeyondTheTableReadsTheMissingEntryAsZeros) {
    const SfrContext ctx = tableContext({0.0, 0.1, 0.2}, {1.0, 0.9, 0.7});
    EXPECT_EQ(sfrAtDivisor(ctx, 0, 0.5), std::numeric_limits<double>::infinity());
}

TEST(SfrReadout, ChannelOutsideTheRegionReadsMinusOne) {
    const SfrContext ctx = tableContext({0.0, 0.1, 0.2}, {1.0, 0.9, 0.7});
    EXPECT_EQ(sfrAtDivisor(ctx, -1, 2.0), -1.0);
    EXPECT_EQ(sfrAtDivisor(ctx, 1, 2.0), -1.0);
    EXPECT_EQ(mtf50(ctx, 1), -1.0);
    EXPECT_EQ(mtf50(ctx, -2), -1.0);
}

}  // namespace
