// One region in every pixel format gives the same figures.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <map>
#include <string>

#include <opencv2/imgproc.hpp>

#include "TestRegions.h"

namespace {
using namespace talonvireo::testing;
namespace pf = talonvireo::PixelFormat;
namespace render = talonvireo::render;

// Transfer function of one of OpenCV's Bayer-to-grey conversions on a neutral scene,
// measured from its impulse responses: every output site of the 2 x 2 mosaic cell has its
// own kernel; an edge crossing many cells sees their average.
class DemosaicTransfer {
public:
    explicit DemosaicTransfer(int code) {
        const int size = 24;
        const double height = 10000.0;
        for (int qy = 10; qy < 12; ++qy) {
            for (int qx = 10; qx < 12; ++qx) {
                cv::Mat impulse(size, size, CV_16U, cv::Scalar(0));
                impulse.at<unsigned short>(qy, qx) = static_cast<unsigned short>(height);
                cv::Mat out;
                cv::cvtColor(impulse, out, code);
                for (int py = qy - 4; py <= qy + 4; ++py) {
                    for (int px = qx - 4; px <= qx + 4; ++px) {
                        const double w = out.at<unsigned short>(py, px) / height;
                        kernels_[(py % 2) * 2 + px % 2][{qx - px, qy - py}] = w;
                    }
                }
            }
        }
    }

    // |H| at frequency f along the normal of an edge angleDeg from vertical.
    double along(double f, double angleDeg) const {
        const double a = angleDeg * M_PI / 180.0;
        const double fx = f * std::cos(a);
        const double fy = -f * std::sin(a);
        std::complex<double> sum = 0.0;
        for (const auto& kernel : kernels_) {
            for (const auto& [d, w] : kernel) {
                sum += w * std::polar(1.0, -2.0 * M_PI * (fx * d.first + fy * d.second));
            }
        }
        return std::abs(sum) / 4.0;
    }

private:
    std::map<std::pair<int, int>, double> kernels_[4];
};

void expectSameFigures(const tagSFRResult& a, int ca, const tagSFRResult& b, int cb, double tol) {
    EXPECT_NEAR(a.sfrQuarterNyquist[ca], b.sfrQuarterNyquist[cb], tol);
    EXPECT_NEAR(a.sfrHalfNyquist[ca], b.sfrHalfNyquist[cb], tol);
    EXPECT_NEAR(a.mtf50[ca], b.mtf50[cb], tol);
    EXPECT_NEAR(a.sfrCustom[ca], b.sfrCustom[cb], tol);
}

class FormatConsistency : public ::testing::TestWithParam<double> {
protected:
    cv::Mat grey8() const {
        render::SlantedEdgeScene scene = edgeScene(GetParam(), 6.0);
        scene.noise = 0.5;
        return renderGrey8(scene);
    }
};

TEST_P(FormatConsistency, Grey16TimesTwoFiftySixAndBgrMatchGrey8) {
    const cv::Mat g8 = grey8();
    const Measurement grey = measure(g8, pf::Grey8, 8.0);
    ASSERT_EQ(grey.status, 0);
    const Measurement grey16 = measure(widen16(g8), pf::Grey16, 8.0);
    const Measurement bgr8 = measure(g8, pf::Bgr8, 8.0);
    const Measurement bgr16 = measure(widen16(g8), pf::Bgr16, 8.0);
    for (const Measurement* m : {&grey16, &bgr8, &bgr16}) {
        ASSERT_EQ(m->status, 0);
        EXPECT_NEAR(m->result.edgeAngle, grey.result.edgeAngle, 1e-9);
        EXPECT_NEAR(m->result.nyquist, grey.result.nyquist, 1e-9);
    }
    expectSameFigures(grey16.result, 0, grey.result, 0, 1e-9);
    for (int c = 0; c < 3; ++c) {
        expectSameFigures(bgr8.result, c, grey.result, 0, 1e-9);
        expectSameFigures(bgr16.result, c, grey.result, 0, 1e-9);
        EXPECT_GT(bgr8.result.sfrHalfNyquist[c], 0.0) << "all three channels are filled";
    }
    EXPECT_EQ(grey16.result.sfrHalfNyquist[1], 0.0);
}

// A mosaic region is measured on OpenCV's Bayer-to-grey conversion of it: exactly the figures
// of that grey image.
TEST_P(FormatConsistency, BayerPathEqualsOpenCvsGreyConversionMeasuredAsGrey) {
    const cv::Mat g8 = grey8();
    for (int phase : {pf::PhaseRG, pf::PhaseGR, pf::PhaseGB, pf::PhaseBG}) {
        for (int layout : {pf::Bayer8, pf::Bayer16, pf::Bayer16B, pf::Bayer16C}) {
            const bool wide = layout != pf::Bayer8;
            const cv::Mat mosaic = wide ? widen16(g8) : g8;
            const Measurement m = measure(mosaic, layout | phase, 8.0);
            ASSERT_EQ(m.status, 0) << std::hex << (layout | phase);
            cv::Mat converted;
            cv::cvtColor(mosaic, converted, expectedBayerToGreyCode(phase));
            const Measurement direct = measure(converted, wide ? pf::Grey16 : pf::Grey8, 8.0);
            ASSERT_EQ(direct.status, 0);
            EXPECT_EQ(std::memcmp(&m.result, &direct.result, sizeof m.result), 0)
                << std::hex << (layout | phase);
        }
    }
}

// OpenCV's Bayer-to-grey interpolates two of the three colours at every site, which is a
// low-pass filter: a neutral mosaic reads lower than the same scene given as grey. Its
// effect is predicted from the conversion's own impulse responses, averaged over the four
// sites of the mosaic cell, at the edge's normal frequency.
TEST_P(FormatConsistency, EveryBayerPhaseMatchesGreyTimesTheDemosaicTransfer) {
    const double angle = 6.0;
    const cv::Mat g8 = grey8();
    const Measurement grey = measure(g8, pf::Grey8, 8.0);
    ASSERT_EQ(grey.status, 0);
    const double cosA = std::cos(angle * M_PI / 180.0);
    for (int phase : {pf::PhaseRG, pf::PhaseGR, pf::PhaseGB, pf::PhaseBG}) {
        const DemosaicTransfer transfer(expectedBayerToGreyCode(phase));
        for (int layout : {pf::Bayer8, pf::Bayer16}) {
            const bool wide = layout != pf::Bayer8;
            const Measurement m = measure(wide ? widen16(g8) : g8, layout | phase, 8.0);
            ASSERT_EQ(m.status, 0);
            // Reported at f means measured at f cos(angle) along the edge normal.
            const auto predicted = [&](double f) { return transfer.along(f * cosA, angle); };
            EXPECT_NEAR(m.result.sfrQuarterNyquist[0],
                        grey.result.sfrQuarterNyquist[0] * predicted(0.125), 0.03);
            EXPECT_NEAR(m.result.sfrHalfNyquist[0], grey.result.sfrHalfNyquist[0] * predicted(0.25),
                        0.03);
            EXPECT_NEAR(m.result.sfrCustom[0], grey.result.sfrCustom[0] * predicted(0.0625), 0.03);
            EXPECT_EQ(m.result.sfrHalfNyquist[1], 0.0) << "a mosaic is one grey channel";
            RecordProperty(
                "bayer_minus_grey_half_nyquist",
                std::to_string(m.result.sfrHalfNyquist[0] - grey.result.sfrHalfNyquist[0]));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Blur, FormatConsistency, ::testing::Values(0.5, 0.8, 1.2));

}  // namespace
