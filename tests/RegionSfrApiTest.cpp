// The exported region functions: record handling, region loop and bad input.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "TestRegions.h"
#include "render/RegionEncoding.h"
#include "render/SfrTruth.h"

namespace {
using namespace talonvireo::testing;
namespace pf = talonvireo::PixelFormat;
namespace render = talonvireo::render;

// A record every byte of which is a recognisable pattern.
tagSFRResult sentinelRecord() {
    tagSFRResult r;
    std::memset(&r, 0xA5, sizeof r);
    return r;
}

bool sameBytes(const tagSFRResult& a, const tagSFRResult& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// A 300 x 100 grey image holding three vertical slanted edges side by side.
struct ThreeEdgeImage {
    static constexpr int kWidth = 300;
    static constexpr int kHeight = 100;
    cv::Mat grey;
    ThreeEdgeImage() {
        grey.create(kHeight, kWidth, CV_8U);
        for (int i = 0; i < 3; ++i) {
            render::SlantedEdgeScene s = edgeScene(0.6 + 0.3 * i, 4.0 + i);
            renderGrey8(s).copyTo(grey.colRange(100 * i, 100 * i + 100));
        }
    }
};

TEST(TalonCalSFR, NyquistDivisorZeroLeavesCustomAtZero) {
    const Measurement m = measureScene(edgeScene(0.8, 5.0), 0.0);
    ASSERT_EQ(m.status, 0);
    for (double v : m.result.sfrCustom) {
        EXPECT_EQ(v, 0.0);
    }
}

TEST(TalonCalSFR, NyquistDivisorEightGivesSfrAtOneSixteenthCyclePerPixel) {
    const Measurement m = measureScene(edgeScene(0.8, 5.0), 8.0);
    ASSERT_EQ(m.status, 0);
    EXPECT_NEAR(m.result.sfrCustom[0], render::trueSfr(0.0625, 0.8, 5.0), 0.01);
    EXPECT_GT(m.result.sfrCustom[0], m.result.sfrQuarterNyquist[0]);
    // Divisors 4 and 2 through the custom slot match the fixed figures exactly.
    EXPECT_EQ(measureScene(edgeScene(0.8, 5.0), 4.0).result.sfrCustom[0],
              m.result.sfrQuarterNyquist[0]);
    EXPECT_EQ(measureScene(edgeScene(0.8, 5.0), 2.0).result.sfrCustom[0],
              m.result.sfrHalfNyquist[0]);
}

TEST(TalonCalSFR, DivisorSurvivesAndEveryOtherFieldIsClearedFirst) {
    cv::Mat flat(50, 50, CV_8U, cv::Scalar(128));
    std::vector<unsigned char> bytes = render::encodeRegion(flat, pf::Grey8);
    tagSFRResult r = sentinelRecord();
    r.nyquistDivisor = 3.5;
    EXPECT_EQ(TalonCalSFR(bytes.data(), 50, 50, pf::Grey8, r), -2);
    EXPECT_EQ(r.nyquistDivisor, 3.5);
    const double* fields = &r.sfrQuarterNyquist[0];
    for (int i = 0; i < 14; ++i) {
        EXPECT_EQ(fields[i], 0.0) << "field " << i;
    }
}

TEST(TalonCalSFR, GreyRegionFillsIndexZeroOnly) {
    const Measurement m = measureScene(edgeScene(0.8, 5.0), 8.0);
    ASSERT_EQ(m.status, 0);
    const tagSFRResult& r = m.result;
    EXPECT_GT(r.sfrQuarterNyquist[0], 0.0);
    EXPECT_GT(r.sfrHalfNyquist[0], 0.0);
    EXPECT_GT(r.mtf50[0], 0.0);
    EXPECT_GT(r.sfrCustom[0], 0.0);
    for (int c = 1; c < 3; ++c) {
        EXPECT_EQ(r.sfrQuarterNyquist[c], 0.0);
        EXPECT_EQ(r.sfrHalfNyquist[c], 0.0);
        EXPECT_EQ(r.mtf50[c], 0.0);
        EXPECT_EQ(r.sfrCustom[c], 0.0);
    }
    EXPECT_NEAR(r.edgeAngle, 5.0, 0.1);
    EXPECT_NEAR(r.nyquist, 0.5 / std::cos(r.edgeAngle * M_PI / 180.0), 1e-12);
}

TEST(TalonCalSFR, FrequencyBeyondTheTableReadsInfinity) {
    // 0.5 / 0.1 = 5 cycles per pixel lies beyond the last table entry (about 2).
    const Measurement m = measureScene(edgeScene(0.8, 5.0), 0.1);
    ASSERT_EQ(m.status, 0);
    EXPECT_TRUE(std::isinf(m.result.sfrCustom[0]));
    EXPECT_GT(m.result.sfrCustom[0], 0.0);
}

TEST(TalonCalSFRS, RegionExactlyTouchingRightAndBottomBorderIsAccepted) {
    ThreeEdgeImage img;
    std::vector<unsigned char> bytes = render::encodeRegion(img.grey, pf::Grey8);
    tagEdgeRoi roi{200, 0, 100, 100};  // x + width = image width, y + height = image height
    tagSFRResult r{};
    EXPECT_EQ(TalonCalSFRS(bytes.data(), img.kWidth, img.kHeight, pf::Grey8, 1, &roi, &r), 0);
    EXPECT_GT(r.sfrHalfNyquist[0], 0.0);
}

TEST(TalonCalSFRS, OneColumnOrRowMorePastTheBorderIsRefused) {
    ThreeEdgeImage img;
    std::vector<unsigned char> bytes = render::encodeRegion(img.grey, pf::Grey8);
    for (tagEdgeRoi roi : {tagEdgeRoi{201, 0, 100, 100}, tagEdgeRoi{200, 0, 101, 100},
                           tagEdgeRoi{200, 1, 100, 100}, tagEdgeRoi{200, 0, 100, 101}}) {
        tagSFRResult r = sentinelRecord();
        const tagSFRResult before = r;
        EXPECT_EQ(TalonCalSFRS(bytes.data(), img.kWidth, img.kHeight, pf::Grey8, 1, &roi, &r), -1);
        EXPECT_TRUE(sameBytes(r, before)) << "refused before the record is cleared";
    }
}

TEST(TalonCalSFRS, ThirdRegionOutsideLeavesTwoFilledAndThirdUntouched) {
    ThreeEdgeImage img;
    std::vector<unsigned char> bytes = render::encodeRegion(img.grey, pf::Grey8);
    tagEdgeRoi rois[4] = {
        {0, 0, 100, 100}, {100, 0, 100, 100}, {250, 0, 100, 100}, {200, 0, 100, 100}};
    tagSFRResult results[4] = {sentinelRecord(), sentinelRecord(), sentinelRecord(),
                               sentinelRecord()};
    for (tagSFRResult& r : results) {
        r.nyquistDivisor = 8.0;
    }
    const tagSFRResult untouched = results[2];
    EXPECT_EQ(TalonCalSFRS(bytes.data(), img.kWidth, img.kHeight, pf::Grey8, 4, rois, results), -1);
    for (int i = 0; i < 2; ++i) {
        const double sigma = 0.6 + 0.3 * i;
        EXPECT_NEAR(results[i].sfrHalfNyquist[0], render::trueSfr(0.25, sigma, 4.0 + i), 0.015);
        EXPECT_EQ(results[i].sfrHalfNyquist[1], 0.0) << "cleared before filling";
        EXPECT_EQ(results[i].nyquistDivisor, 8.0);
    }
    EXPECT_TRUE(sameBytes(results[2], untouched));
    EXPECT_TRUE(sameBytes(results[3], untouched)) << "regions after the failure are not touched";
}

TEST(TalonCalSFRS, RegionsAreMeasuredLikeSeparateCalls) {
    ThreeEdgeImage img;
    std::vector<unsigned char> bytes = render::encodeRegion(img.grey, pf::Grey8);
    tagEdgeRoi rois[3] = {{0, 0, 100, 100}, {100, 0, 100, 100}, {200, 0, 100, 100}};
    tagSFRResult results[3] = {};
    ASSERT_EQ(TalonCalSFRS(bytes.data(), img.kWidth, img.kHeight, pf::Grey8, 3, rois, results), 0);
    for (int i = 0; i < 3; ++i) {
        const Measurement single =
            measure(img.grey.colRange(100 * i, 100 * i + 100).clone(), pf::Grey8);
        ASSERT_EQ(single.status, 0);
        EXPECT_TRUE(sameBytes(results[i], single.result)) << "region " << i;
    }
}

TEST(TalonCalSFRS, CountZeroReturnsZeroAfterWrappingTheImage) {
    std::vector<unsigned char> bytes(100, 0);
    EXPECT_EQ(TalonCalSFRS(bytes.data(), 10, 10, pf::Grey8, 0, nullptr, nullptr), 0);
    EXPECT_EQ(TalonCalSFRS(bytes.data(), 10, 10, pf::Grey8, -3, nullptr, nullptr), 0);
    // The image is wrapped first: a bad image fails even with nothing to measure.
    EXPECT_EQ(TalonCalSFRS(nullptr, 10, 10, pf::Grey8, 0, nullptr, nullptr), -1);
    EXPECT_EQ(TalonCalSFRS(bytes.data(), 10, 10, 0x030, 0, nullptr, nullptr), -1);
}

TEST(TalonCalSFRS, NegativeOriginOrSizeIsRefusedAfterClearing) {
    ThreeEdgeImage img;
    std::vector<unsigned char> bytes = render::encodeRegion(img.grey, pf::Grey8);
    for (tagEdgeRoi roi : {tagEdgeRoi{-10, 0, 60, 100}, tagEdgeRoi{0, -5, 100, 60},
                           tagEdgeRoi{50, 0, -20, 100}, tagEdgeRoi{INT32_MIN, 0, INT32_MIN, 10}}) {
        tagSFRResult r = sentinelRecord();
        r.nyquistDivisor = 2.0;
        EXPECT_EQ(TalonCalSFRS(bytes.data(), img.kWidth, img.kHeight, pf::Grey8, 1, &roi, &r), -1);
        EXPECT_EQ(r.nyquistDivisor, 2.0);
        EXPECT_EQ(r.sfrHalfNyquist[0], 0.0);
    }
}

TEST(TalonCalSFRS, HugeRegionsWrapAndAreRefused) {
    ThreeEdgeImage img;
    std::vector<unsigned char> bytes = render::encodeRegion(img.grey, pf::Grey8);
    for (tagEdgeRoi roi : {tagEdgeRoi{INT32_MAX, 0, 10, 10}, tagEdgeRoi{0, 0, INT32_MAX, 10},
                           tagEdgeRoi{0, INT32_MAX, 10, INT32_MAX}}) {
        tagSFRResult r{};
        EXPECT_EQ(TalonCalSFRS(bytes.data(), img.kWidth, img.kHeight, pf::Grey8, 1, &roi, &r), -1);
    }
}

TEST(TalonCalSFRS, RefusedEdgeEndsTheLoopWithMinusOne) {
    cv::Mat grey(100, 200, CV_8U, cv::Scalar(90));
    renderGrey8(edgeScene(0.8, 5.0)).copyTo(grey.colRange(0, 100));  // right half is flat
    std::vector<unsigned char> bytes = render::encodeRegion(grey, pf::Grey8);
    tagEdgeRoi rois[2] = {{0, 0, 100, 100}, {100, 0, 100, 100}};
    tagSFRResult results[2] = {};
    EXPECT_EQ(TalonCalSFRS(bytes.data(), 200, 100, pf::Grey8, 2, rois, results), -1);
    EXPECT_GT(results[0].sfrHalfNyquist[0], 0.0);
    EXPECT_EQ(results[1].sfrHalfNyquist[0], 0.0);
}

TEST(TalonCalSFRS, NullRegionOrResultArraysAreRefused) {
    std::vector<unsigned char> bytes(100, 0);
    tagEdgeRoi roi{0, 0, 10, 10};
    tagSFRResult r{};
    EXPECT_EQ(TalonCalSFRS(bytes.data(), 10, 10, pf::Grey8, 1, nullptr, &r), -1);
    EXPECT_EQ(TalonCalSFRS(bytes.data(), 10, 10, pf::Grey8, 1, &roi, nullptr), -1);
}

TEST(BadInput, NullBufferReturnsMinusOne) {
    tagSFRResult r{};
    EXPECT_EQ(TalonCalSFR(nullptr, 100, 100, pf::Grey8, r), -1);
}

TEST(BadInput, ZeroOrNegativeSizesReturnMinusOne) {
    std::vector<unsigned char> bytes(64, 100);
    tagSFRResult r{};
    for (auto wh : {std::pair<int, int>{0, 8}, {8, 0}, {0, 0}, {-8, 8}, {8, -8}, {-1, -1}}) {
        EXPECT_EQ(TalonCalSFR(bytes.data(), wh.first, wh.second, pf::Grey8, r), -1);
    }
}

TEST(BadInput, PixelCountOverflowingThirtyTwoBitsReturnsMinusOne) {
    std::vector<unsigned char> bytes(64, 100);  // far smaller than the claimed size
    tagSFRResult r{};
    EXPECT_EQ(TalonCalSFR(bytes.data(), 70000, 70000, pf::Grey8, r), -1);
    EXPECT_EQ(TalonCalSFR(bytes.data(), 65536, 65536, pf::Bgr16, r), -1);
    EXPECT_EQ(TalonCalSFR(bytes.data(), INT32_MAX, INT32_MAX, pf::Bayer8 | pf::PhaseRG, r), -1);
}

TEST(BadInput, UnknownFormatCodesReturnMinusOne) {
    cv::Mat grey = renderGrey8(edgeScene(0.8, 5.0));
    std::vector<unsigned char> bytes = render::encodeRegion(grey, pf::Grey8);
    tagSFRResult r{};
    for (int format : {0, 0x010, 0x030, 0x110, 0x300, 0x1000, 0x01F, -1}) {
        EXPECT_EQ(TalonCalSFR(bytes.data(), 100, 100, format, r), -1) << std::hex << format;
    }
}

TEST(BadInput, OneRowOrOneColumnRegionReturnsMinusOne) {
    std::vector<unsigned char> bytes(600, 0);
    for (int i = 0; i < 100; ++i) {
        bytes[i] = i < 50 ? 20 : 220;
    }
    tagSFRResult r{};
    for (int format : {pf::Grey8, pf::Grey16, pf::Bgr8, pf::Bgr16, pf::Bayer8 | pf::PhaseBG,
                       pf::Bayer16 | pf::PhaseGR}) {
        EXPECT_EQ(TalonCalSFR(bytes.data(), 100, 1, format, r), -1) << std::hex << format;
        EXPECT_EQ(TalonCalSFR(bytes.data(), 1, 100, format, r), -1) << std::hex << format;
    }
}

TEST(BadInput, TinyRegionsOfEverySizeAndFormatNeverCrash) {
    const struct {
        int format;
        size_t bytesPerPixel;
    } formats[] = {{pf::Grey8, 1},
                   {pf::Grey16, 2},
                   {pf::Bgr8, 3},
                   {pf::Bgr16, 6},
                   {pf::Bayer8 | pf::PhaseRG, 1},
                   {pf::Bayer16 | pf::PhaseBG, 2}};
    std::mt19937 rng(7);
    for (const auto& f : formats) {
        for (int w = 1; w <= 9; ++w) {
            for (int h = 1; h <= 9; ++h) {
                // Exactly the bytes the format needs: AddressSanitizer sees any overread.
                std::vector<unsigned char> bytes(static_cast<size_t>(w * h) * f.bytesPerPixel);
                for (auto& b : bytes) {
                    b = static_cast<unsigned char>(rng());
                }
                tagSFRResult r{};
                const int status = TalonCalSFR(bytes.data(), w, h, f.format, r);
                EXPECT_TRUE(status >= -4 && status <= 0) << w << "x" << h;
            }
        }
    }
}

TEST(BadInput, FlatRegionIsRefusedForContrast) {
    cv::Mat flat(60, 60, CV_8U, cv::Scalar(128));
    EXPECT_EQ(measure(flat, pf::Grey8).status, -2);
}

TEST(BadInput, AllBlackRegionHasNoEdgeAndIsRefusedAsAligned) {
    // 0 / 0 contrast is not "below 20 %"; every row then has no centroid, so the fitted
    // slope is exactly 0.
    cv::Mat black(60, 60, CV_8U, cv::Scalar(0));
    EXPECT_EQ(measure(black, pf::Grey8).status, -4);
}

TEST(BadInput, NoiseRegionsGiveAStatusNeverACrash) {
    std::mt19937 rng(11);
    for (int trial = 0; trial < 40; ++trial) {
        cv::Mat noise(40 + trial, 70 - trial, CV_8U);
        for (auto it = noise.begin<unsigned char>(); it != noise.end<unsigned char>(); ++it) {
            *it = static_cast<unsigned char>(rng() % (trial % 2 ? 256 : 40));
        }
        tagSFRResult r{};
        std::vector<unsigned char> bytes = render::encodeRegion(noise, pf::Grey8);
        const int status = TalonCalSFR(bytes.data(), noise.cols, noise.rows, pf::Grey8, r);
        EXPECT_TRUE(status >= -4 && status <= 0) << "trial " << trial;
        if (status == 0) {
            EXPECT_EQ(r.sfrHalfNyquist[1], 0.0);
        }
    }
}

}  // namespace
