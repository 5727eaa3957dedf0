// Turning caller buffers into matrices, by pixel-format code.
#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "TestRegions.h"
#include "sfr/RegionPreparation.h"
#include "talonvireo/PixelFormat.h"

namespace {
using talonvireo::sfr::bytesPerPixel;
using talonvireo::sfr::prepareRegion;
namespace pf = talonvireo::PixelFormat;

std::vector<unsigned char> ramp(size_t n) {
    std::vector<unsigned char> v;
    v.reserve(n);
    for (size_t i = 0; i < n; ++i) {
        v.push_back(static_cast<unsigned char>((i * 37 + i / 7) & 0xFF));
    }
    return v;
}

TEST(RegionPreparation, Format0x011GivesGreyEightBitOfSameSize) {
    std::vector<unsigned char> buf = ramp(20 * 16);
    cv::Mat out;
    prepareRegion(buf.data(), 20, 16, 0x011, out);
    ASSERT_FALSE(out.empty());
    EXPECT_EQ(out.type(), CV_8UC1);
    EXPECT_EQ(out.cols, 20);
    EXPECT_EQ(out.rows, 16);
    EXPECT_NE(out.data, buf.data());  // a new matrix, no longer the caller's buffer
}

TEST(RegionPreparation, Format0x010WithPhaseZeroGivesEmpty) {
    std::vector<unsigned char> buf = ramp(20 * 16);
    cv::Mat out;
    prepareRegion(buf.data(), 20, 16, 0x010, out);
    EXPECT_TRUE(out.empty());
}

TEST(RegionPreparation, Format0x100SharesTheCallersBuffer) {
    std::vector<unsigned char> buf = ramp(12 * 10);
    cv::Mat out;
    prepareRegion(buf.data(), 12, 10, 0x100, out);
    ASSERT_FALSE(out.empty());
    EXPECT_EQ(out.data, buf.data());
    buf[5 * 12 + 7] = 201;
    EXPECT_EQ(out.at<unsigned char>(5, 7), 201);
}

TEST(RegionPreparation, Format0x030IsUnknownAlthoughEachBitIsAMosaicLayout) {
    std::vector<unsigned char> buf = ramp(20 * 16 * 2);
    cv::Mat out;
    prepareRegion(buf.data(), 20, 16, 0x030 | pf::PhaseRG, out);
    EXPECT_TRUE(out.empty());
}

TEST(RegionPreparation, Formats0x021And0x041And0x081GiveIdenticalResults) {
    std::vector<unsigned char> buf = ramp(24 * 18 * 2);
    cv::Mat a;
    cv::Mat b;
    cv::Mat c;
    prepareRegion(buf.data(), 24, 18, 0x021, a);
    prepareRegion(buf.data(), 24, 18, 0x041, b);
    prepareRegion(buf.data(), 24, 18, 0x081, c);
    ASSERT_EQ(a.type(), CV_16UC1);
    EXPECT_EQ(cv::norm(a, b, cv::NORM_INF), 0.0);
    EXPECT_EQ(cv::norm(a, c, cv::NORM_INF), 0.0);
}

TEST(RegionPreparation, EveryLayoutGivesItsMatrixType) {
    struct Case {
        int format;
        int type;
        int bytes;
    };
    const Case cases[] = {{0x011, CV_8UC1, 1},  {0x021, CV_16UC1, 2}, {0x041, CV_16UC1, 2},
                          {0x081, CV_16UC1, 2}, {0x100, CV_8UC1, 1},  {0x200, CV_16UC1, 2},
                          {0x400, CV_8UC3, 3},  {0x800, CV_16UC3, 6}};
    for (const Case& k : cases) {
        std::vector<unsigned char> buf = ramp(16 * 12 * 6);
        cv::Mat out;
        prepareRegion(buf.data(), 16, 12, k.format, out);
        ASSERT_FALSE(out.empty()) << std::hex << k.format;
        EXPECT_EQ(out.type(), k.type) << std::hex << k.format;
        EXPECT_EQ(out.size(), cv::Size(16, 12));
        EXPECT_EQ(bytesPerPixel(k.format), k.bytes);
        if ((k.format & 0x0F0) == 0) {
            EXPECT_EQ(out.data, buf.data()) << "non-mosaic layouts are wrapped, not copied";
        }
    }
}

TEST(RegionPreparation, EachBayerPhaseUsesItsOwnConversion) {
    std::vector<unsigned char> buf = ramp(20 * 14);
    const cv::Mat wrapped(14, 20, CV_8UC1, buf.data());
    for (int phase : {pf::PhaseRG, pf::PhaseGR, pf::PhaseGB, pf::PhaseBG}) {
        cv::Mat out;
        prepareRegion(buf.data(), 20, 14, pf::Bayer8 | phase, out);
        cv::Mat expected;
        cv::cvtColor(wrapped, expected, talonvireo::testing::expectedBayerToGreyCode(phase));
        ASSERT_FALSE(out.empty());
        EXPECT_EQ(cv::norm(out, expected, cv::NORM_INF), 0.0) << "phase " << phase;
    }
}

TEST(RegionPreparation, UnknownCodesAndBadPhasesGiveEmpty) {
    std::vector<unsigned char> buf = ramp(16 * 16 * 6);
    for (int format :
         {0x000, 0x001, 0x00F, 0x013, 0x01F, 0x110, 0x300, 0xC00, 0x1000, -1, 0x7FFFFFFF}) {
        cv::Mat out;
        prepareRegion(buf.data(), 16, 16, format, out);
        EXPECT_TRUE(out.empty()) << std::hex << format;
    }
}

TEST(RegionPreparation, BitsOutsideBothFieldsAreIgnored) {
    std::vector<unsigned char> buf = ramp(16 * 16);
    cv::Mat out;
    prepareRegion(buf.data(), 16, 16, 0x2100, out);  // layout field 0x100
    EXPECT_EQ(out.data, buf.data());
    prepareRegion(buf.data(), 16, 16, 0x7000 | 0x011, out);  // 8-bit mosaic, phase RG
    EXPECT_EQ(out.type(), CV_8UC1);
    EXPECT_NE(out.data, buf.data());
}

TEST(RegionPreparation, NullBufferBadSizesAndOverflowGiveEmpty) {
    std::vector<unsigned char> buf = ramp(64);
    cv::Mat out;
    prepareRegion(nullptr, 8, 8, pf::Grey8, out);
    EXPECT_TRUE(out.empty());
    for (auto size :
         {std::pair<int, int>{0, 8}, {8, 0}, {-1, 8}, {8, -5}, {70000, 70000}, {INT32_MAX, 2}}) {
        prepareRegion(buf.data(), size.first, size.second, pf::Grey8, out);
        EXPECT_TRUE(out.empty()) << size.first << " x " << size.second;
    }
}

TEST(RegionPreparation, TinyMosaicsConvertWithoutReadingOutside) {
    for (int w = 1; w <= 4; ++w) {
        for (int h = 1; h <= 4; ++h) {
            std::vector<unsigned char> buf = ramp(static_cast<size_t>(w * h));
            cv::Mat out;
            prepareRegion(buf.data(), w, h, pf::Bayer8 | pf::PhaseGB, out);
            ASSERT_FALSE(out.empty());
            EXPECT_EQ(out.size(), cv::Size(w, h));
        }
    }
}

}  // namespace
