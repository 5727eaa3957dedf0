// Raw frame files as the command line reads them: byte layouts written out by hand.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "station/Failure.h"
#include "station/FrameFile.h"

#include <opencv2/imgcodecs.hpp>

namespace {
using namespace talonvireo::station;

std::string writeBytes(const std::string& name, const std::vector<unsigned char>& bytes) {
    const std::string path = ::testing::TempDir() + name;
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<long>(bytes.size()));
    return path;
}

Cause statusOf(const std::string& path, int w, int h, Packing p) {
    try {
        readRawFrame(path, {w, h, p});
    } catch (const Failure& e) {
        return e.cause();
    }
    return Cause::None;
}

TEST(FrameFile, WordsAreLittleEndian) {
    const std::string path = writeBytes("words.raw", {0x34, 0x12, 0xFF, 0x03, 0x00, 0x80, 1, 0});
    const cv::Mat f = readRawFrame(path, {2, 2, Packing::Words16});
    EXPECT_EQ(f.at<unsigned short>(0, 0), 0x1234);
    EXPECT_EQ(f.at<unsigned short>(0, 1), 0x03FF);
    EXPECT_EQ(f.at<unsigned short>(1, 0), 0x8000);
    EXPECT_EQ(f.at<unsigned short>(1, 1), 1);
}

// Words after a header are read straight into the frame; a file one byte short or long is
// still refused with its size, not read.
TEST(FrameFile, WordsAfterAHeaderReadAsTheyLieAndAWrongSizeIsRefused) {
    const std::string path =
        writeBytes("words-header.raw", {9, 9, 9, 0x34, 0x12, 0xFF, 0x03, 0x00, 0x80, 1, 0});
    RawLayout layout{2, 2, Packing::Words16, 0, 3};
    const cv::Mat f = readRawFrame(path, layout);
    EXPECT_EQ(f.at<unsigned short>(0, 0), 0x1234);
    EXPECT_EQ(f.at<unsigned short>(1, 1), 1);
    layout.offset = 2;
    EXPECT_THROW(
        {
            try {
                readRawFrame(path, layout);
            } catch (const Failure& e) {
                EXPECT_EQ(e.cause(), Cause::WrongFileSize);
                throw;
            }
        },
        Failure);
}

TEST(FrameFile, MipiRaw10PacksFourSamplesInFiveBytes) {
    // Samples 0x3FF, 0x001, 0x2AA, 0x155: high bytes 0xFF 0x00 0xAA 0x55, then the low bit
    // pairs 11, 01, 10, 01 from the lowest pair up: 0b01'10'01'11 = 0x67.
    const std::string path = writeBytes("mipi.raw", {0xFF, 0x00, 0xAA, 0x55, 0x67});
    const cv::Mat f = readRawFrame(path, {4, 1, Packing::Mipi10});
    EXPECT_EQ(f.at<unsigned short>(0, 0), 0x3FF);
    EXPECT_EQ(f.at<unsigned short>(0, 1), 0x001);
    EXPECT_EQ(f.at<unsigned short>(0, 2), 0x2AA);
    EXPECT_EQ(f.at<unsigned short>(0, 3), 0x155);
}

TEST(FrameFile, MipiRaw12PacksTwoSamplesInThreeBytes) {
    // Samples 0xABC and 0x123: high bytes 0xAB 0x12, then the low nibbles 0xC (sample 0, low)
    // and 0x3 (sample 1, high): 0x3C.
    const std::string path = writeBytes("mipi12.raw", {0xAB, 0x12, 0x3C, 0xFF, 0x00, 0x0F});
    const cv::Mat f = readRawFrame(path, {2, 2, Packing::Mipi12});
    EXPECT_EQ(f.at<unsigned short>(0, 0), 0xABC);
    EXPECT_EQ(f.at<unsigned short>(0, 1), 0x123);
    EXPECT_EQ(f.at<unsigned short>(1, 0), 0xFFF);
    EXPECT_EQ(f.at<unsigned short>(1, 1), 0x000);
}

TEST(FrameFile, Raw8HoldsOneBytePerSample) {
    const std::string path = writeBytes("raw8.raw", {0, 1, 254, 255});
    const cv::Mat f = readRawFrame(path, {2, 2, Packing::Raw8});
    EXPECT_EQ(f.at<unsigned short>(0, 0), 0);
    EXPECT_EQ(f.at<unsigned short>(0, 1), 1);
    EXPECT_EQ(f.at<unsigned short>(1, 0), 254);
    EXPECT_EQ(f.at<unsigned short>(1, 1), 255);
}

TEST(FrameFile, StrideSkipsPaddingAndOffsetSkipsAHeader) {
    // Three header bytes, then two lines of two words padded to 6 bytes each.
    const std::vector<unsigned char> bytes = {9, 9, 9, 1, 0, 2, 0, 7, 7, 3, 0, 4, 0, 7, 7};
    const cv::Mat f = readRawFrame(writeBytes("padded.raw", bytes), {2, 2, Packing::Words16, 6, 3});
    EXPECT_EQ(f.at<unsigned short>(0, 0), 1);
    EXPECT_EQ(f.at<unsigned short>(0, 1), 2);
    EXPECT_EQ(f.at<unsigned short>(1, 0), 3);
    EXPECT_EQ(f.at<unsigned short>(1, 1), 4);
    // The last line's padding may be left out.
    const std::vector<unsigned char> cut(bytes.begin(), bytes.end() - 2);
    const cv::Mat g =
        readRawFrame(writeBytes("padded-cut.raw", cut), {2, 2, Packing::Words16, 6, 3});
    EXPECT_EQ(g.at<unsigned short>(1, 1), 4);
    // Padded RAW10 lines each start on their own byte.
    const std::vector<unsigned char> mipi = {0xFF, 0x00, 0xAA, 0x55, 0x67, 0,
                                             0x01, 0x02, 0x03, 0x04, 0x00, 0};
    const cv::Mat m = readRawFrame(writeBytes("padded10.raw", mipi), {4, 2, Packing::Mipi10, 6, 0});
    EXPECT_EQ(m.at<unsigned short>(0, 3), 0x155);
    EXPECT_EQ(m.at<unsigned short>(1, 0), 0x004);
    EXPECT_EQ(m.at<unsigned short>(1, 3), 0x010);
}

TEST(FrameFile, AStrideShorterThanALineIsRefused) {
    const std::string path = writeBytes("stride.raw", std::vector<unsigned char>(12, 0));
    try {
        readRawFrame(path, {4, 2, Packing::Words16, 6, 0});
        FAIL() << "a 6-byte stride for 8-byte lines was taken";
    } catch (const Failure& e) {
        EXPECT_EQ(e.cause(), Cause::BadInput);
        EXPECT_NE(std::string(e.what()).find("shorter than a line"), std::string::npos) << e.what();
    }
}

TEST(FrameFile, APaddedFileOfTheWrongSizeNamesItsLayout) {
    const std::string path = writeBytes("padded-bad.raw", std::vector<unsigned char>(20, 0));
    try {
        readRawFrame(path, {2, 2, Packing::Mipi12, 8, 2});
        FAIL() << "20 bytes taken for 2 + 2 x 8";
    } catch (const Failure& e) {
        EXPECT_EQ(e.cause(), Cause::WrongFileSize);
        EXPECT_NE(std::string(e.what()).find("not 18 (2 x 2, RAW12, 3 bytes per 2 samples, lines 8 "
                                             "bytes apart, after 2 header bytes)"),
                  std::string::npos)
            << e.what();
    }
}

TEST(FrameFile, AFileOfTheWrongSizeIsRefused) {
    const std::string path = writeBytes("short.raw", std::vector<unsigned char>(7, 0));
    EXPECT_EQ(statusOf(path, 2, 2, Packing::Words16), Cause::WrongFileSize);
    EXPECT_EQ(statusOf(path, 4, 1, Packing::Mipi10), Cause::WrongFileSize);
    EXPECT_EQ(statusOf(path, 0, 2, Packing::Words16), Cause::BadInput);
    EXPECT_EQ(statusOf(path + ".missing", 2, 2, Packing::Words16), Cause::UnreadableFile);
}

TEST(FrameFile, SixteenBitImagesAreReadAsTheyAre) {
    cv::Mat words(3, 5, CV_16UC1);
    for (int i = 0; i < 15; ++i)
        words.at<unsigned short>(i / 5, i % 5) = static_cast<unsigned short>(i * 4000);
    for (const char* ext : {".png", ".pgm", ".tiff"}) {
        const std::string path = ::testing::TempDir() + "frame" + ext;
        ASSERT_TRUE(cv::imwrite(path, words)) << ext;
        const cv::Mat back = readFrame(path, {5, 3, Packing::Words16});
        EXPECT_EQ(cv::norm(back, words, cv::NORM_INF), 0.0) << ext;
        EXPECT_THROW(readFrame(path, {6, 3, Packing::Words16}), Failure) << ext;
    }
}

Cause statusOfImage(const std::string& path) {
    try {
        readImage(path);
    } catch (const Failure& e) {
        return e.cause();
    }
    return Cause::None;
}

TEST(FrameFile, JpegAndBmpAreDecodedByOpenCv) {
    cv::Mat bgr(8, 6, CV_8UC3, cv::Scalar(10, 120, 230));
    for (const char* ext : {".jpg", ".bmp", ".JPEG"}) {
        const std::string path = ::testing::TempDir() + "picture" + ext;
        ASSERT_TRUE(cv::imwrite(path, bgr)) << ext;
        ASSERT_TRUE(isImagePath(path)) << ext;
        const cv::Mat back = readImage(path);
        EXPECT_EQ(back.type(), CV_8UC3) << ext;
        EXPECT_EQ(back.size(), bgr.size()) << ext;
    }
}

TEST(FrameFile, AnRgbaPngLosesItsAlphaChannel) {
    cv::Mat bgra(4, 4, CV_8UC4, cv::Scalar(10, 20, 30, 0));
    const std::string path = ::testing::TempDir() + "alpha.png";
    ASSERT_TRUE(cv::imwrite(path, bgra));
    const cv::Mat back = readImage(path);
    ASSERT_EQ(back.type(), CV_8UC3);
    EXPECT_EQ(back.at<cv::Vec3b>(0, 0), cv::Vec3b(10, 20, 30));
}

TEST(FrameFile, UnknownExtensionsAreRefusedNotReadAsRaw) {
    for (const char* name : {"frame.xyz", "frame.gif", "dir.d/frame.RAW2"}) {
        try {
            isImagePath(name);
            ADD_FAILURE() << name << " was taken";
        } catch (const Failure& e) {
            EXPECT_EQ(e.cause(), Cause::UnreadableFile) << name;
            EXPECT_NE(std::string(e.what()).find("unsupported image type"), std::string::npos);
        }
    }
    EXPECT_FALSE(isImagePath("frame.raw"));
    EXPECT_FALSE(isImagePath("frame.BIN"));
    EXPECT_FALSE(isImagePath("dir.d/frame"));  // no extension: raw samples
}

TEST(FrameFile, ADirectoryIsReportedAsOne) {
    const std::string dir = ::testing::TempDir();
    EXPECT_EQ(statusOfImage(dir), Cause::UnreadableFile);
    EXPECT_EQ(statusOf(dir, 2, 2, Packing::Words16), Cause::UnreadableFile);
    try {
        readRawFrame(dir, {2, 2, Packing::Words16});
    } catch (const Failure& e) {
        EXPECT_NE(std::string(e.what()).find("is a directory"), std::string::npos);
    }
}

}  // namespace
