// Raw 10-, 14- and 16-bit words to bytes.
#include <gtest/gtest.h>

#include <vector>

#include "convert/RawUnpack.h"

namespace {
using namespace talonvireo::convert;

// Converts `samples` as a frame of samples.size() x 1 and returns the bytes.
std::vector<unsigned char> run(const RawConverter& convert,
                               const std::vector<unsigned short>& samples) {
    std::vector<unsigned char> out(samples.size(), 0xEE);
    convert(samples.data(), out.data(), cv::Size(static_cast<int>(samples.size()), 1));
    return out;
}

TEST(RawUnpack, ZeroWidthOrHeightWritesNothing) {
    const std::vector<unsigned short> src(16, 1000);
    for (const RawConverter& convert :
         {RawConverter(unpackRaw10), RawConverter(unpackRaw14), RawConverter(unpackRaw16)}) {
        for (cv::Size size :
             {cv::Size(0, 4), cv::Size(4, 0), cv::Size(0, 0), cv::Size(-4, 4), cv::Size(4, -4)}) {
            std::vector<unsigned char> dst(16, 0xEE);
            convert(src.data(), dst.data(), size);
            EXPECT_EQ(dst, std::vector<unsigned char>(16, 0xEE)) << size;
        }
    }
}

TEST(RawUnpack, Raw10TruncatesTwoBits) {
    EXPECT_EQ(run(unpackRaw10, {0, 3, 4, 1020, 1023}),
              (std::vector<unsigned char>{0, 0, 1, 255, 255}));
}

TEST(RawUnpack, Raw10SaturatesSamplesAboveTenBits) {
    EXPECT_EQ(run(unpackRaw10, {1024, 1025, 4095, 65535}),
              (std::vector<unsigned char>{255, 255, 255, 255}));
}

TEST(RawUnpack, Raw10MatchesShiftForEveryTenBitSample) {
    std::vector<unsigned short> all(1024);
    for (int i = 0; i < 1024; ++i) {
        all[i] = static_cast<unsigned short>(i);
    }
    const std::vector<unsigned char> out = run(unpackRaw10, all);
    for (int i = 0; i < 1024; ++i) {
        ASSERT_EQ(out[i], i >> 2) << i;
    }
}

TEST(RawUnpack, Raw14TruncatesSixBitsWithoutSaturation) {
    EXPECT_EQ(run(unpackRaw14, {63, 64, 16383}), (std::vector<unsigned char>{0, 1, 255}));
    EXPECT_EQ(run(unpackRaw14, {16384, 16448, 65535}), (std::vector<unsigned char>{0, 1, 255}));
}

TEST(RawUnpack, Raw16KeepsTheHighByte) {
    EXPECT_EQ(run(unpackRaw16, {0x12FF, 0x00FF, 0xFFFF, 0x0100}),
              (std::vector<unsigned char>{0x12, 0, 0xFF, 1}));
}

TEST(RawUnpack, ThreeByTwoFrameConvertsSixSamplesInMemoryOrder) {
    const std::vector<unsigned short> src = {0x0100, 0x0200, 0x0300, 0x0400,
                                             0x0500, 0x0600, 0x0700};
    std::vector<unsigned char> dst(8, 0xEE);
    unpackRaw16(src.data(), dst.data(), cv::Size(3, 2));
    EXPECT_EQ(dst, (std::vector<unsigned char>{1, 2, 3, 4, 5, 6, 0xEE, 0xEE}));
}

TEST(RawUnpack, ConverterObjectHoldsEachFunction) {
    const std::vector<unsigned short> src = {0x3FFF};
    EXPECT_EQ(run(RawConverter(unpackRaw10), src)[0], 255);  // saturated
    EXPECT_EQ(run(RawConverter(unpackRaw14), src)[0], 255);
    EXPECT_EQ(run(RawConverter(unpackRaw16), src)[0], 0x3F);
    RawConverter empty;
    unsigned char byte = 0;
    EXPECT_THROW(empty(src.data(), &byte, cv::Size(1, 1)), std::bad_function_call);
}

}  // namespace
