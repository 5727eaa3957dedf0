// The pieces of the precise method: phase weights, kernel width, local regression, spectrum.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "sfr/EdgeSamples.h"
#include "sfr/KernelWidth.h"
#include "sfr/LocalLinearProfile.h"
#include "sfr/PhaseWeights.h"
#include "sfr/SampleBins.h"
#include "sfr/SlopeSpectrum.h"

namespace {
using namespace talonvireo::sfr;

EdgeSamples flatSamples(int rows, int cols) {
    EdgeSamples s;
    s.values = cv::Mat(rows, cols, CV_32F, cv::Scalar(0));
    return s;
}

TEST(PhaseWeights, RowsSeenTwiceAsOftenWeighHalf) {
    // 60 rows drifting 0.025 px each cover 1.475 phase cycles: phases 0.525..1 twice.
    const EdgeSamples s = flatSamples(60, 10);
    const EdgeFrame frame{{0.025, 0.0}, 1.0};
    const PhaseWeights w = phaseWeights(s, frame);
    ASSERT_EQ(w.rowWeight.size(), 60u);
    double sum = 0.0;
    for (double q : w.rowWeight) {
        sum += q;
    }
    EXPECT_NEAR(sum / 60.0, 1.0, 1e-12);
    // Row 25 sits at phase 0.375, which no other row shares; row 45 at 0.875, which rows 1
    // to 19 also cover.
    EXPECT_NEAR(w.rowWeight[45] / w.rowWeight[25], 0.5, 0.05);
    EXPECT_LT(phaseComponent(w, 1), 0.02);
}

TEST(PhaseWeights, ASimpleFractionSlopeBunchesThePhases) {
    const EdgeSamples s = flatSamples(100, 10);
    const EdgeFrame frame{{0.5, 0.3}, 1.0};
    const PhaseWeights w = phaseWeights(s, frame);
    for (double q : w.rowWeight) {
        EXPECT_NEAR(q, 1.0, 1e-9);  // the two clusters share equally
    }
    EXPECT_NEAR(phaseComponent(w, 2), 1.0, 1e-9);
    EXPECT_NEAR(phaseComponent(w, 1), 0.0, 1e-9);
}

TEST(KernelWidth, WidensOnlyWhereThePhasesBunch) {
    const EdgeSamples s = flatSamples(100, 10);
    const EdgeFrame half{{0.5, 0.0}, 1.0};
    const EdgeFrame irrational{{0.1234567, 0.0}, 1.0};
    const double bunched = kernelSigmaFor(phaseWeights(s, half), 0.5, 1, 2e-4);
    const double even = kernelSigmaFor(phaseWeights(s, irrational), 0.1234567, 1, 2e-4);
    // Clusters every cos(a) / 2 = 0.447 px: the kernel must smooth them out.
    EXPECT_GE(bunched, 0.29);
    EXPECT_LE(bunched, 0.35);
    EXPECT_NEAR(even, 0.2, 1e-12);
}

TEST(LocalLinearProfile, ALinearEdgeIsFitExactly) {
    // Levels 3 + 2 d on samples of a slanted line: level and slope everywhere exact.
    EdgeSamples s = flatSamples(40, 40);
    const EdgeFrame frame{{0.2, 19.5}, 1.0};
    for (int i = 0; i < 40; ++i) {
        for (int j = 0; j < 40; ++j) {
            s.values.at<float>(i, j) = static_cast<float>(3.0 + 2.0 * frame.distance(j, i));
        }
    }
    const std::vector<double> weight(40, 1.0);
    const LocalLinearProfile p =
        localLinearProfile(binByDistance(s, weight, frame, 5.0, 0.025), 0.2, 4);
    ASSERT_GT(p.size(), 10);
    for (int k = 0; k < p.size(); ++k) {
        if (p.weight[k] > 0.0) {
            EXPECT_NEAR(p.slope[k], 2.0, 1e-3);
            EXPECT_NEAR(p.level[k], 3.0 + 2.0 * p.position(k), 1e-3);
        }
    }
}

TEST(SlopeSpectrum, AGaussianLineSpreadGivesItsTransformWithTheKernelDividedOut) {
    // A Gaussian line spread of sigma 0.6 already smoothed by a kernel of 0.3.
    const double sigma = 0.6, kernel = 0.3, step = 0.05;
    const double total2 = sigma * sigma + kernel * kernel;
    std::vector<double> lsf;
    for (int k = -200; k <= 200; ++k) {
        const double x = k * step;
        lsf.push_back(std::exp(-0.5 * x * x / total2));
    }
    const SlopeSpectrum spectrum(lsf, -200 * step, step, kernel);
    for (double f : {0.0, 0.1, 0.25, 0.5, 0.8}) {
        EXPECT_NEAR(spectrum.at(f), std::exp(-2.0 * M_PI * M_PI * sigma * sigma * f * f), 1e-9)
            << f;
    }
}

}  // namespace
