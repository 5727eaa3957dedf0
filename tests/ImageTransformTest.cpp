// The image transform toolbox: every operation against hand-computed values, the composites
// against their parts, the mode dispatch, the 4:2:2 round trip, and refusals.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "convert/EdgeDirectedDemosaic.h"
#include "convert/ImageTransform.h"

namespace {
using libs::TalonUtil::IImageTransform;
using libs::TalonUtil::ImageTransform;
using Bytes = std::vector<unsigned char>;
using Words = std::vector<unsigned short>;

constexpr unsigned char kSentinel = 0xA5;

// Exactly n samples (no spare capacity), so that the address sanitizer sees any access past
// the image.
Bytes randomBytes(std::size_t n, unsigned seed) {
    std::mt19937 rng(seed);
    Bytes v(n);
    for (auto& sample : v) {
        sample = static_cast<unsigned char>(rng());
    }
    return v;
}

Words randomWords(std::size_t n, unsigned seed, unsigned mask) {
    std::mt19937 rng(seed);
    Words v(n);
    for (auto& sample : v) {
        sample = static_cast<unsigned short>(rng() & mask);
    }
    return v;
}

// ---- Mode 4 and the mosaic-to-grey operation ----

TEST(ImageTransform, MosaicToGreyMode4EqualsTheInputByteForByte) {
    ImageTransform t;
    const Bytes src = randomBytes(37 * 23, 1);
    Bytes dst(src.size(), kSentinel);
    ASSERT_TRUE(t.mosaicToGrey(src.data(), dst.data(), 37, 23, 4));
    EXPECT_EQ(dst, src);
}

TEST(ImageTransform, UniformMosaicGivesTheSameGreyEverywhere) {
    ImageTransform t;
    for (const int v : {0, 1, 77, 128, 254, 255}) {
        for (const int mode : {0, 1, 2, 3}) {
            for (const auto& [w, h] : {std::pair{6, 6}, {40, 30}, {7, 5}}) {
                const Bytes src(static_cast<std::size_t>(w) * h, static_cast<unsigned char>(v));
                Bytes dst(src.size(), kSentinel);
                ASSERT_TRUE(t.mosaicToGrey(src.data(), dst.data(), w, h, mode));
                ASSERT_EQ(dst, src) << "value " << v << " mode " << mode << " " << w << "x" << h;
            }
        }
    }
}

TEST(ImageTransform, MosaicToGreyIsTheDemosaicThenTheLuminance) {
    ImageTransform t;
    const int w = 50, h = 12;
    const Bytes src = randomBytes(w * h, 2);
    for (const int mode : {0, 1, 2, 3}) {
        Bytes colour(4 * src.size(), 0), expected(src.size()), grey(src.size(), kSentinel);
        ASSERT_TRUE(t.mosaicToBgra(src.data(), colour.data(), w, h, mode));
        for (std::size_t i = 0; i < src.size(); ++i) {
            expected[i] = static_cast<unsigned char>(
                (117 * colour[4 * i] + 601 * colour[4 * i + 1] + 306 * colour[4 * i + 2]) >> 10);
        }
        ASSERT_TRUE(t.mosaicToGrey(src.data(), grey.data(), w, h, mode));
        EXPECT_EQ(grey, expected) << "mode " << mode;
    }
}

// ---- Mode dispatch ----

TEST(ImageTransform, ModesSelectTheirDemosaicAndUnknownModesBehaveAsZero) {
    ImageTransform t;
    const int w = 20, h = 8;
    const Bytes src = randomBytes(w * h, 3);
    auto run = [&](auto op) {
        Bytes out(4 * src.size(), kSentinel);
        EXPECT_TRUE(op(out.data()));
        return out;
    };
    auto viaMode = [&](int mode) {
        return run([&](unsigned char* o) { return t.mosaicToBgra(src.data(), o, w, h, mode); });
    };
    EXPECT_EQ(viaMode(0),
              run([&](unsigned char* o) { return t.demosaicRggb(src.data(), o, w, h); }));
    EXPECT_EQ(viaMode(1),
              run([&](unsigned char* o) { return t.demosaicGrbg(src.data(), o, w, h); }));
    EXPECT_EQ(viaMode(2),
              run([&](unsigned char* o) { return t.demosaicGbrg(src.data(), o, w, h); }));
    EXPECT_EQ(viaMode(3),
              run([&](unsigned char* o) { return t.demosaicBggr(src.data(), o, w, h); }));
    EXPECT_EQ(viaMode(4), run([&](unsigned char* o) { return t.greyToBgra(src.data(), o, w, h); }));
    EXPECT_EQ(viaMode(5), viaMode(0));
    EXPECT_EQ(viaMode(-1), viaMode(0));
    EXPECT_NE(viaMode(1), viaMode(0));
}

TEST(ImageTransform, WorksThroughTheAbstractInterface) {
    std::unique_ptr<IImageTransform> t = std::make_unique<ImageTransform>();
    const Bytes src = {10, 20, 30, 40};
    Bytes dst(4, 0);
    EXPECT_TRUE(t->mosaicToGrey(src.data(), dst.data(), 2, 2, 4));
    EXPECT_EQ(dst, src);
}

// ---- Pixel repacking ----

TEST(ImageTransform, BgraToBgrDropsTheFourthByte) {
    ImageTransform t;
    const Bytes src = {1, 2, 3, 4, 5, 6, 7, 8};
    Bytes dst(6, kSentinel);
    ASSERT_TRUE(t.bgraToBgr(src.data(), dst.data(), 2, 1));
    EXPECT_EQ(dst, (Bytes{1, 2, 3, 5, 6, 7}));
}

TEST(ImageTransform, BgrToBgraSetsTheFourthByteTo255) {
    ImageTransform t;
    const Bytes src = {1, 2, 3, 5, 6, 7};
    Bytes dst(8, kSentinel);
    ASSERT_TRUE(t.bgrToBgra(src.data(), dst.data(), 1, 2));
    EXPECT_EQ(dst, (Bytes{1, 2, 3, 255, 5, 6, 7, 255}));
}

TEST(ImageTransform, BgrToGreyUsesTheFixedPointWeights) {
    ImageTransform t;
    // (117 * 10 + 601 * 200 + 306 * 50) >> 10 = 136670 >> 10 = 133;
    // (117 * 255 + 601 * 0 + 306 * 0) >> 10 = 29; white stays 255.
    const Bytes src = {10, 200, 50, 255, 0, 0, 255, 255, 255};
    Bytes dst(3, kSentinel);
    ASSERT_TRUE(t.bgrToGrey(src.data(), dst.data(), 3, 1));
    EXPECT_EQ(dst, (Bytes{133, 29, 255}));
}

TEST(ImageTransform, BgraToGreyIgnoresTheFourthByte) {
    ImageTransform t;
    // 37 pixels: 2 groups of 16 through the vector path and 5 through the scalar tail.
    const Bytes src = randomBytes(4 * 37, 4);
    Bytes dst(37, kSentinel), flipped(37, kSentinel);
    ASSERT_TRUE(t.bgraToGrey(src.data(), dst.data(), 37, 1));
    Bytes otherFourth = src;
    for (std::size_t i = 3; i < otherFourth.size(); i += 4) {
        otherFourth[i] = static_cast<unsigned char>(~otherFourth[i]);
    }
    ASSERT_TRUE(t.bgraToGrey(otherFourth.data(), flipped.data(), 37, 1));
    for (std::size_t i = 0; i < 37; ++i) {
        EXPECT_EQ(dst[i], (117 * src[4 * i] + 601 * src[4 * i + 1] + 306 * src[4 * i + 2]) >> 10)
            << i;
    }
    EXPECT_EQ(flipped, dst);
}

TEST(ImageTransform, GreyIntoBgraLeavesTheFourthByte) {
    ImageTransform t;
    const Bytes src = {9, 200};
    Bytes dst(8, kSentinel);
    ASSERT_TRUE(t.greyIntoBgra(src.data(), dst.data(), 2, 1));
    EXPECT_EQ(dst, (Bytes{9, 9, 9, kSentinel, 200, 200, 200, kSentinel}));
}

TEST(ImageTransform, GreyToBgraSetsTheFourthByteTo255) {
    ImageTransform t;
    const Bytes src = {9, 200};
    Bytes dst(8, kSentinel);
    ASSERT_TRUE(t.greyToBgra(src.data(), dst.data(), 1, 2));
    EXPECT_EQ(dst, (Bytes{9, 9, 9, 255, 200, 200, 200, 255}));
}

// ---- Words and bytes ----

TEST(ImageTransform, Raw10ToBytesKeepsBitsTwoToNine) {
    ImageTransform t;
    // 0x3FF -> 255; 0x155 -> (1 * 64 + 0x55 >> 2) = 64 + 21 = 85; 3 -> 0; 0x400 (11 bits)
    // -> (4 * 64) mod 256 = 0; 0xFFFF -> (255 * 64 + 63) mod 256 = 255.
    const Words src = {0x3FF, 0x155, 3, 0x400, 0xFFFF, 0x0104};
    Bytes dst(6, kSentinel);
    ASSERT_TRUE(t.raw10ToBytes(src.data(), dst.data(), 3, 2));
    EXPECT_EQ(dst, (Bytes{255, 85, 0, 0, 255, 65}));
}

TEST(ImageTransform, Raw12ToBytesKeepsBitsFourToEleven) {
    ImageTransform t;
    // 0xFFF -> 255; 0xABC -> (10 * 16 + 0xBC >> 4) = 160 + 11 = 171; 0x1000 -> 0.
    const Words src = {0xFFF, 0xABC, 0x1000, 15};
    Bytes dst(4, kSentinel);
    ASSERT_TRUE(t.raw12ToBytes(src.data(), dst.data(), 4, 1));
    EXPECT_EQ(dst, (Bytes{255, 171, 0, 0}));
}

TEST(ImageTransform, Raw10ToBytePairsKeepsTheWordPositions) {
    ImageTransform t;
    // 0x3FF -> 255, 0; 0x155 -> 85, 0; 0xFC00 -> (252 * 64) mod 256 = 0, 252 >> 2 = 63.
    const Words src = {0x3FF, 0x155, 0xFC00};
    Bytes dst(6, kSentinel);
    ASSERT_TRUE(t.raw10ToBytePairs(src.data(), dst.data(), 3, 1));
    EXPECT_EQ(dst, (Bytes{255, 0, 85, 0, 0, 63}));
}

TEST(ImageTransform, BytesToRaw10ScalesByFour) {
    ImageTransform t;
    // 255 -> low 0xFC, high 3; 64 -> low 0, high 1; 1 -> 4.
    const Bytes src = {255, 64, 1, 0};
    Words dst(4, 0xAAAA);
    ASSERT_TRUE(t.bytesToRaw10(src.data(), dst.data(), 2, 2));
    EXPECT_EQ(dst, (Words{0x3FC, 0x100, 4, 0}));
}

TEST(ImageTransform, Raw10RoundTripThroughBytesIsExactForMultiplesOfFour) {
    ImageTransform t;
    const Words src = {0, 4, 512, 1020};
    Bytes bytes(4);
    Words back(4);
    ASSERT_TRUE(t.raw10ToBytes(src.data(), bytes.data(), 4, 1));
    ASSERT_TRUE(t.bytesToRaw10(bytes.data(), back.data(), 4, 1));
    EXPECT_EQ(back, src);
}

// ---- Composites ----

TEST(ImageTransform, CompositesEqualTheirTwoSteps) {
    ImageTransform t;
    const int w = 34, h = 10;
    const std::size_t n = static_cast<std::size_t>(w) * h;
    const Words raw10 = randomWords(n, 5, 0x3FF);
    const Words raw12 = randomWords(n, 6, 0xFFF);
    const Bytes mosaic = randomBytes(n, 7);
    for (const int mode : {0, 1, 2, 3, 4, 9}) {
        SCOPED_TRACE(mode);
        // mosaicToBgr = mosaicToBgra then bgraToBgr.
        Bytes bgra(4 * n), bgr(3 * n), direct(3 * n, kSentinel);
        ASSERT_TRUE(t.mosaicToBgra(mosaic.data(), bgra.data(), w, h, mode));
        ASSERT_TRUE(t.bgraToBgr(bgra.data(), bgr.data(), w, h));
        ASSERT_TRUE(t.mosaicToBgr(mosaic.data(), direct.data(), w, h, mode));
        EXPECT_EQ(direct, bgr);

        // raw10ToBgra / raw12ToBgra = reduce then mosaicToBgra.
        for (const bool twelve : {false, true}) {
            Bytes bytes(n), expected(4 * n, kSentinel), got(4 * n, kSentinel);
            const Words& raw = twelve ? raw12 : raw10;
            ASSERT_TRUE(twelve ? t.raw12ToBytes(raw.data(), bytes.data(), w, h)
                               : t.raw10ToBytes(raw.data(), bytes.data(), w, h));
            ASSERT_TRUE(t.mosaicToBgra(bytes.data(), expected.data(), w, h, mode));
            ASSERT_TRUE(twelve ? t.raw12ToBgra(raw.data(), got.data(), w, h, mode)
                               : t.raw10ToBgra(raw.data(), got.data(), w, h, mode));
            EXPECT_EQ(got, expected) << twelve;

            Bytes greyExpected(n), greyGot(n, kSentinel);
            ASSERT_TRUE(t.mosaicToGrey(bytes.data(), greyExpected.data(), w, h, mode));
            ASSERT_TRUE(twelve ? t.raw12ToGrey(raw.data(), greyGot.data(), w, h, mode)
                               : t.raw10ToGrey(raw.data(), greyGot.data(), w, h, mode));
            EXPECT_EQ(greyGot, greyExpected) << twelve;
        }

        // raw10ToBgr = raw10ToBytes then mosaicToBgr.
        Bytes bytes(n), expected(3 * n), got(3 * n, kSentinel);
        ASSERT_TRUE(t.raw10ToBytes(raw10.data(), bytes.data(), w, h));
        ASSERT_TRUE(t.mosaicToBgr(bytes.data(), expected.data(), w, h, mode));
        ASSERT_TRUE(t.raw10ToBgr(raw10.data(), got.data(), w, h, mode));
        EXPECT_EQ(got, expected);
    }
}

// ---- Level subtraction ----

TEST(ImageTransform, SubtractLevelTruncatesTowardZeroAndClamps) {
    ImageTransform t;
    // 10 - 2.5 = 7.5 -> 7; 2 - 2.5 = -0.5 -> 0 (truncated, not floored); 1 - 2.5 -> -1 -> 0.
    Bytes s = {10, 2, 1, 255};
    ASSERT_TRUE(t.subtractLevel(s.data(), 2.5, 2, 2, true, false));
    EXPECT_EQ(s, (Bytes{7, 0, 0, 252}));
}

TEST(ImageTransform, SubtractLevelWithoutClampWraps) {
    ImageTransform t;
    // 1 - 2.5 -> -1 -> 255; 0 - 2.5 -> -2 -> 254; 2 - 2.5 -> -0 -> 0.
    Bytes s = {1, 0, 2, 200};
    ASSERT_TRUE(t.subtractLevel(s.data(), 2.5, 4, 1, false, false));
    EXPECT_EQ(s, (Bytes{255, 254, 0, 197}));
    // A negative level adds; past 255 the result wraps with or without the clamp.
    Bytes up = {250, 5};
    ASSERT_TRUE(t.subtractLevel(up.data(), -10.0, 2, 1, true, false));
    EXPECT_EQ(up, (Bytes{4, 15}));
}

TEST(ImageTransform, SubtractLevelOnSixteenBitSamples) {
    ImageTransform t;
    Words s = {1000, 64, 63, 65535};
    ASSERT_TRUE(t.subtractLevel(s.data(), 64.0, 4, 1, true, true));
    EXPECT_EQ(s, (Words{936, 0, 0, 65471}));
    Words w = {63, 0};
    ASSERT_TRUE(t.subtractLevel(w.data(), 64.9, 2, 1, false, true));
    // 63 - 64.9 = -1.9 -> -1 -> 65535; 0 - 64.9 -> -64 -> 65472.
    EXPECT_EQ(w, (Words{65535, 65472}));
    // A level far beyond any integer width still wraps exactly: 2^40 is 0 mod 65536.
    Words big = {7};
    ASSERT_TRUE(t.subtractLevel(big.data(), -1099511627776.0, 1, 1, false, true));
    EXPECT_EQ(big, (Words{7}));
}

TEST(ImageTransform, SubtractLevelTouchesOnlyWidthTimesHeightSamples) {
    ImageTransform t;
    Bytes s = {50, 50, 50, 50, 50, 50};
    ASSERT_TRUE(t.subtractLevel(s.data(), 10.0, 2, 2, true, false));
    EXPECT_EQ(s, (Bytes{40, 40, 40, 40, 50, 50}));
}

TEST(ImageTransform, SubtractLevelRefusesANonFiniteLevel) {
    ImageTransform t;
    Bytes s = {5, 6};
    EXPECT_FALSE(t.subtractLevel(s.data(), std::nan(""), 2, 1, true, false));
    EXPECT_FALSE(t.subtractLevel(s.data(), HUGE_VAL, 2, 1, false, false));
    EXPECT_EQ(s, (Bytes{5, 6}));
}

// ---- Mean level ----

TEST(ImageTransform, MeanLevelOfTheRectangleToTheFarCorner) {
    ImageTransform t;
    // 4 x 3:  1  2  3  4 /  5  6  7  8 /  9 10 11 12. x0 = 1, y0 = 1: 6 7 8 10 11 12.
    const Bytes s = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    EXPECT_DOUBLE_EQ(t.meanLevel(s.data(), 4, 3, 1, 1, false), 54.0 / 6.0);
    EXPECT_DOUBLE_EQ(t.meanLevel(s.data(), 4, 3, 0, 0, false), 78.0 / 12.0);
    const Words w = {1000, 2000, 60000, 65535};
    EXPECT_DOUBLE_EQ(t.meanLevel(w.data(), 2, 2, 0, 1, true), (60000.0 + 65535.0) / 2.0);
}

TEST(ImageTransform, MeanLevelPastTheLastRowDividesZeroAsItStands) {
    ImageTransform t;
    const Bytes s(12, 9);
    // y0 == height: 0 / (3 * 0) is NaN.
    EXPECT_TRUE(std::isnan(t.meanLevel(s.data(), 4, 3, 1, 3, false)));
    // y0 beyond height: 0 / (3 * -2) is a negative zero.
    const double beyond = t.meanLevel(s.data(), 4, 3, 1, 5, false);
    EXPECT_EQ(beyond, 0.0);
    EXPECT_TRUE(std::signbit(beyond));
    // x0 beyond width likewise sums nothing: 0 / (-1 * 3).
    EXPECT_EQ(t.meanLevel(s.data(), 4, 3, 5, 0, false), 0.0);
}

TEST(ImageTransform, MeanLevelRefusesNegativeOriginsAndNull) {
    ImageTransform t;
    const Bytes s(12, 9);
    EXPECT_TRUE(std::isnan(t.meanLevel(s.data(), 4, 3, -1, 0, false)));
    EXPECT_TRUE(std::isnan(t.meanLevel(s.data(), 4, 3, 0, -1, false)));
    EXPECT_TRUE(std::isnan(t.meanLevel(nullptr, 4, 3, 0, 0, false)));
}

// ---- Vertical flip ----

TEST(ImageTransform, FlipVerticalExchangesRowsForOddAndEvenCounts) {
    ImageTransform t;
    Bytes odd = {1, 2, 3, 4, 5, 6};  // three rows of two bytes
    ASSERT_TRUE(t.flipVertical(odd.data(), 2, 3));
    EXPECT_EQ(odd, (Bytes{5, 6, 3, 4, 1, 2}));
    Bytes even = {1, 2, 3, 4, 5, 6, 7, 8};  // four rows of two bytes
    ASSERT_TRUE(t.flipVertical(even.data(), 2, 4));
    EXPECT_EQ(even, (Bytes{7, 8, 5, 6, 3, 4, 1, 2}));
    Bytes one = {1, 2, 3};
    ASSERT_TRUE(t.flipVertical(one.data(), 3, 1));
    EXPECT_EQ(one, (Bytes{1, 2, 3}));
}

TEST(ImageTransform, FlipVerticalOfNoRowsDoesNothing) {
    ImageTransform t;
    Bytes s = {1, 2};
    EXPECT_TRUE(t.flipVertical(s.data(), 2, 0));
    EXPECT_EQ(s, (Bytes{1, 2}));
}

TEST(ImageTransform, FlipVerticalRefusesNullAndNegativeSizes) {
    ImageTransform t;
    Bytes s = {1, 2, 3, 4};
    EXPECT_FALSE(t.flipVertical(nullptr, 2, 2));
    EXPECT_FALSE(t.flipVertical(s.data(), -2, 2));
    EXPECT_FALSE(t.flipVertical(s.data(), 2, -2));
    EXPECT_EQ(s, (Bytes{1, 2, 3, 4}));
}

// ---- Packed 4:2:2 ----

// The conversion formulas, written out for the expected values.
int lumaOf(int b, int g, int r) {
    return ((16425 * g + 8432 * r + 3176 * b) >> 15) + 16;
}
int uOf(int b, int g, int r) {
    return (14345 * b - 9527 * g - 4818 * r) / 32768 + 128;
}
int vOf(int b, int g, int r) {
    return (14345 * r - 12045 * g - 2300 * b) / 32768 + 128;
}
int clampByte(int v) {
    return std::clamp(v, 0, 255);
}
std::array<int, 3> bgrOf(int y, int u, int v) {
    const int c = 1164 * (y - 16), d = u - 128, e = v - 128;
    return {clampByte((c + 2018 * d) / 1000), clampByte((c - 391 * d - 813 * e) / 1000),
            clampByte((c + 1596 * e) / 1000)};
}

TEST(ImageTransform, BgraToYuv422HandComputed) {
    ImageTransform t;
    // White and black: Y = (28033 * 255 >> 15) + 16 = 218 + 16 = 234, U = V = 128 (the
    // weights of each chroma sum to 0); black Y 16.
    const Bytes src = {255, 255, 255, 0, 0, 0, 0, 0};
    Bytes dst(4, kSentinel);
    ASSERT_TRUE(t.bgraToYuv422(src.data(), dst.data(), 2, 1));
    EXPECT_EQ(dst, (Bytes{234, 128, 16, 128}));
    // Pure blue (255, 0, 0) at an even index: U = 14345 * 255 / 32768 + 128 = 111 + 128;
    // pure red at an odd index: V = 111 + 128.
    const Bytes br = {255, 0, 0, 0, 0, 0, 255, 0};
    ASSERT_TRUE(t.bgraToYuv422(br.data(), dst.data(), 2, 1));
    EXPECT_EQ(dst, (Bytes{static_cast<unsigned char>(lumaOf(255, 0, 0)), 239,
                          static_cast<unsigned char>(lumaOf(0, 0, 255)), 239}));
}

TEST(ImageTransform, ChromaParityCountsOverTheWholeImage) {
    ImageTransform t;
    // 3 x 2 of pure blue: pixel 3 (row 1, column 0) has an odd index, so it carries V.
    Bytes src;
    for (int i = 0; i < 6 * 4; ++i) {
        src.push_back(i % 4 == 0 ? 255 : 0);
    }
    Bytes dst(12, kSentinel);
    ASSERT_TRUE(t.bgraToYuv422(src.data(), dst.data(), 3, 2));
    const int u = uOf(255, 0, 0), v = vOf(255, 0, 0);
    EXPECT_EQ(dst[1], u);
    EXPECT_EQ(dst[3], v);
    EXPECT_EQ(dst[5], u);
    EXPECT_EQ(dst[7], v);  // first pixel of the second row
    EXPECT_EQ(dst[9], u);
    EXPECT_EQ(dst[11], v);
}

TEST(ImageTransform, Yuv422RoundTripOfAFewColours) {
    ImageTransform t;
    // Pairs of equal colours, so that the pair's U (from the first pixel) and V (from the
    // second) are that colour's own.
    const std::vector<std::array<int, 3>> colours = {{0, 0, 0},     {255, 255, 255}, {40, 120, 200},
                                                     {200, 30, 90}, {128, 128, 128}, {0, 255, 0}};
    Bytes src;
    for (const auto& c : colours) {
        for (int k = 0; k < 2; ++k) {
            src.insert(src.end(),
                       {static_cast<unsigned char>(c[0]), static_cast<unsigned char>(c[1]),
                        static_cast<unsigned char>(c[2]), 0});
        }
    }
    const int w = static_cast<int>(colours.size()) * 2;
    Bytes yuv(2 * static_cast<std::size_t>(w));
    ASSERT_TRUE(t.bgraToYuv422(src.data(), yuv.data(), w, 1));
    Bytes back(4 * static_cast<std::size_t>(w), kSentinel);
    ASSERT_EQ(t.yuv422ToBgra(yuv.data(), back.data(), w, 1, 0), w / 2);
    for (std::size_t k = 0; k < colours.size(); ++k) {
        const auto& c = colours[k];
        const int y = lumaOf(c[0], c[1], c[2]);
        const auto expected = bgrOf(y, uOf(c[0], c[1], c[2]), vOf(c[0], c[1], c[2]));
        for (int p = 0; p < 2; ++p) {
            const unsigned char* px = &back[4 * (2 * k + p)];
            EXPECT_EQ(px[0], expected[0]) << k;
            EXPECT_EQ(px[1], expected[1]) << k;
            EXPECT_EQ(px[2], expected[2]) << k;
            EXPECT_EQ(px[3], kSentinel) << k;
            // The fixed-point pair comes back within a few levels of the colour.
            for (int ch = 0; ch < 3; ++ch) {
                EXPECT_NEAR(px[ch], c[ch], 6) << k << " channel " << ch;
            }
        }
    }
}

TEST(ImageTransform, Yuv422ByteOrdersReadTheSamePair) {
    ImageTransform t;
    // One pair Y0 = 100, U = 90, Y1 = 180, V = 200, in each order.
    const int y0 = 100, u = 90, y1 = 180, v = 200;
    const std::vector<std::pair<int, Bytes>> orders = {{0, {y0, u, y1, v}}, {1, {y0, v, y1, u}},
                                                       {2, {u, y0, v, y1}}, {3, {v, y0, u, y1}},
                                                       {7, {y0, u, y1, v}}, {-4, {y0, u, y1, v}}};
    const auto first = bgrOf(y0, u, v), second = bgrOf(y1, u, v);
    for (const auto& [code, bytes] : orders) {
        Bytes out(8, kSentinel);
        ASSERT_EQ(t.yuv422ToBgra(bytes.data(), out.data(), 2, 1, code), 1);
        EXPECT_EQ(
            out,
            (Bytes{static_cast<unsigned char>(first[0]), static_cast<unsigned char>(first[1]),
                   static_cast<unsigned char>(first[2]), kSentinel,
                   static_cast<unsigned char>(second[0]), static_cast<unsigned char>(second[1]),
                   static_cast<unsigned char>(second[2]), kSentinel}))
            << "order " << code;
    }
}

TEST(ImageTransform, Yuv422ToBgraClampsAndCountsPairs) {
    ImageTransform t;
    // Y 255, U 255, V 255 overflows red and blue; Y 0, U 0, V 0 underflows.
    const Bytes src = {255, 255, 255, 255, 0, 0, 0, 0};
    Bytes out(16, kSentinel);
    ASSERT_EQ(t.yuv422ToBgra(src.data(), out.data(), 4, 1, 0), 2);
    EXPECT_EQ(out[0], 255);
    EXPECT_EQ(out[2], 255);
    EXPECT_EQ(out[8], 0);
    EXPECT_EQ(out[10], 0);
    // An odd pixel count leaves the last pixel unwritten.
    Bytes three(12, kSentinel);
    EXPECT_EQ(t.yuv422ToBgra(src.data(), three.data(), 3, 1, 0), 1);
    EXPECT_EQ(Bytes(three.begin() + 8, three.end()), Bytes(4, kSentinel));
}

// ---- Refusals and odd sizes ----

TEST(ImageTransform, EveryConversionRefusesNullBuffersAndEmptySizes) {
    ImageTransform t;
    Bytes b(64, 1), out(256, kSentinel);
    Words w(64, 1), wout(64, 0xAAAA);
    for (const auto& [width, height] : {std::pair{0, 4}, {4, 0}, {-4, 4}, {4, -1}}) {
        EXPECT_FALSE(t.mosaicToBgra(b.data(), out.data(), width, height, 0));
        EXPECT_FALSE(t.mosaicToBgr(b.data(), out.data(), width, height, 0));
        EXPECT_FALSE(t.raw10ToBgra(w.data(), out.data(), width, height, 0));
        EXPECT_FALSE(t.raw12ToBgra(w.data(), out.data(), width, height, 0));
        EXPECT_FALSE(t.raw10ToBgr(w.data(), out.data(), width, height, 0));
        EXPECT_FALSE(t.bgraToBgr(b.data(), out.data(), width, height));
        EXPECT_FALSE(t.bgrToBgra(b.data(), out.data(), width, height));
        EXPECT_FALSE(t.raw10ToBytes(w.data(), out.data(), width, height));
        EXPECT_FALSE(t.raw12ToBytes(w.data(), out.data(), width, height));
        EXPECT_FALSE(t.raw10ToBytePairs(w.data(), out.data(), width, height));
        EXPECT_FALSE(t.bytesToRaw10(b.data(), wout.data(), width, height));
        EXPECT_FALSE(t.mosaicToGrey(b.data(), out.data(), width, height, 0));
        EXPECT_FALSE(t.mosaicToGrey(b.data(), out.data(), width, height, 4));
        EXPECT_FALSE(t.raw10ToGrey(w.data(), out.data(), width, height, 0));
        EXPECT_FALSE(t.raw12ToGrey(w.data(), out.data(), width, height, 0));
        EXPECT_FALSE(t.bgrToGrey(b.data(), out.data(), width, height));
        EXPECT_FALSE(t.bgraToGrey(b.data(), out.data(), width, height));
        EXPECT_FALSE(t.greyIntoBgra(b.data(), out.data(), width, height));
        EXPECT_FALSE(t.subtractLevel(b.data(), 1.0, width, height, true, false));
        EXPECT_FALSE(t.bgraToYuv422(b.data(), out.data(), width, height));
        EXPECT_EQ(t.yuv422ToBgra(b.data(), out.data(), width, height, 0), 0);
        EXPECT_FALSE(t.demosaicRggb(b.data(), out.data(), width, height));
        EXPECT_FALSE(t.greyToBgra(b.data(), out.data(), width, height));
    }
    EXPECT_FALSE(t.mosaicToGrey(nullptr, out.data(), 4, 4, 0));
    EXPECT_FALSE(t.mosaicToGrey(b.data(), nullptr, 4, 4, 4));
    EXPECT_FALSE(t.raw10ToGrey(nullptr, out.data(), 4, 4, 0));
    EXPECT_FALSE(t.mosaicToBgr(b.data(), nullptr, 4, 4, 0));
    EXPECT_FALSE(t.bgraToGrey(nullptr, out.data(), 4, 4));
    EXPECT_FALSE(t.subtractLevel(nullptr, 1.0, 4, 4, true, false));
    EXPECT_EQ(t.yuv422ToBgra(nullptr, out.data(), 4, 4, 0), 0);
    EXPECT_EQ(out, Bytes(256, kSentinel));
    EXPECT_EQ(b, Bytes(64, 1));
    EXPECT_EQ(wout, Words(64, 0xAAAA));
}

TEST(ImageTransform, OddSizedFramesStayInsideExactBuffers) {
    // Exact-size heap buffers for every composite with a demosaic: the address sanitizer
    // build reports any access past them.
    ImageTransform t;
    for (const auto& [w, h] :
         {std::pair{1, 1}, {3, 5}, {5, 3}, {7, 7}, {33, 9}, {17, 1}, {1, 17}}) {
        const std::size_t n = static_cast<std::size_t>(w) * h;
        const Bytes mosaic = randomBytes(n, 11);
        const Words raw = randomWords(n, 12, 0x3FF);
        for (const int mode : {0, 1, 2, 3, 4}) {
            Bytes grey(n), bgra(4 * n), bgr(3 * n);
            EXPECT_TRUE(t.mosaicToGrey(mosaic.data(), grey.data(), w, h, mode));
            EXPECT_TRUE(t.mosaicToBgra(mosaic.data(), bgra.data(), w, h, mode));
            EXPECT_TRUE(t.mosaicToBgr(mosaic.data(), bgr.data(), w, h, mode));
            EXPECT_TRUE(t.raw10ToGrey(raw.data(), grey.data(), w, h, mode));
            EXPECT_TRUE(t.raw10ToBgr(raw.data(), bgr.data(), w, h, mode));
        }
    }
}

}  // namespace
