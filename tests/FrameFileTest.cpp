// Raw frame files as the command line reads them: byte layouts written out by hand.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "CliError.h"
#include "FrameFile.h"

#include <opencv2/imgcodecs.hpp>

namespace {
using namespace talonvireo::cli;

std::string writeBytes(const std::string& name, const std::vector<unsigned char>& bytes) {
    const std::string path = ::testing::TempDir() + name;
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<long>(bytes.size()));
    return path;
}

ExitStatus statusOf(const std::string& path, int w, int h, Packing p) {
    try {
        readRawFrame(path, w, h, p);
    } catch (const CliError& e) {
        return e.status();
    }
    return kExitOk;
}

TEST(FrameFile, WordsAreLittleEndian) {
    const std::string path = writeBytes("words.raw", {0x34, 0x12, 0xFF, 0x03, 0x00, 0x80, 1, 0});
    const cv::Mat f = readRawFrame(path, 2, 2, Packing::Words16);
    EXPECT_EQ(f.at<unsigned short>(0, 0), 0x1234);
    EXPECT_EQ(f.at<unsigned short>(0, 1), 0x03FF);
    EXPECT_EQ(f.at<unsigned short>(1, 0), 0x8000);
    EXPECT_EQ(f.at<unsigned short>(1, 1), 1);
}

TEST(FrameFile, MipiRaw10PacksFourSamplesInFiveBytes) {
    // Samples 0x3FF, 0x001, 0x2AA, 0x155: high bytes 0xFF 0x00 0xAA 0x55, then the low bit
    // pairs 11, 01, 10, 01 from the lowest pair up: 0b01'10'01'11 = 0x67.
    const std::string path = writeBytes("mipi.raw", {0xFF, 0x00, 0xAA, 0x55, 0x67});
    const cv::Mat f = readRawFrame(path, 4, 1, Packing::Mipi10);
    EXPECT_EQ(f.at<unsigned short>(0, 0), 0x3FF);
    EXPECT_EQ(f.at<unsigned short>(0, 1), 0x001);
    EXPECT_EQ(f.at<unsigned short>(0, 2), 0x2AA);
    EXPECT_EQ(f.at<unsigned short>(0, 3), 0x155);
}

TEST(FrameFile, AFileOfTheWrongSizeIsRefused) {
    const std::string path = writeBytes("short.raw", std::vector<unsigned char>(7, 0));
    EXPECT_EQ(statusOf(path, 2, 2, Packing::Words16), kExitWrongFileSize);
    EXPECT_EQ(statusOf(path, 4, 1, Packing::Mipi10), kExitWrongFileSize);
    EXPECT_EQ(statusOf(path, 0, 2, Packing::Words16), kExitBadArguments);
    EXPECT_EQ(statusOf(path + ".missing", 2, 2, Packing::Words16), kExitUnreadableFile);
}

TEST(FrameFile, SixteenBitImagesAreReadAsTheyAre) {
    cv::Mat words(3, 5, CV_16UC1);
    for (int i = 0; i < 15; ++i)
        words.at<unsigned short>(i / 5, i % 5) = static_cast<unsigned short>(i * 4000);
    for (const char* ext : {".png", ".pgm", ".tiff"}) {
        const std::string path = ::testing::TempDir() + "frame" + ext;
        ASSERT_TRUE(cv::imwrite(path, words)) << ext;
        const cv::Mat back = readFrame(path, 5, 3, Packing::Words16);
        EXPECT_EQ(cv::norm(back, words, cv::NORM_INF), 0.0) << ext;
        EXPECT_THROW(readFrame(path, 6, 3, Packing::Words16), CliError) << ext;
    }
}

ExitStatus statusOfImage(const std::string& path) {
    try {
        readImage(path);
    } catch (const CliError& e) {
        return e.status();
    }
    return kExitOk;
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
        } catch (const CliError& e) {
            EXPECT_EQ(e.status(), kExitUnreadableFile) << name;
            EXPECT_NE(std::string(e.what()).find("unsupported image type"), std::string::npos);
        }
    }
    EXPECT_FALSE(isImagePath("frame.raw"));
    EXPECT_FALSE(isImagePath("frame.BIN"));
    EXPECT_FALSE(isImagePath("dir.d/frame"));  // no extension: raw samples
}

TEST(FrameFile, ADirectoryIsReportedAsOne) {
    const std::string dir = ::testing::TempDir();
    EXPECT_EQ(statusOfImage(dir), kExitUnreadableFile);
    EXPECT_EQ(statusOf(dir, 2, 2, Packing::Words16), kExitUnreadableFile);
    try {
        readRawFrame(dir, 2, 2, Packing::Words16);
    } catch (const CliError& e) {
        EXPECT_NE(std::string(e.what()).find("is a directory"), std::string::npos);
    }
}

}  // namespace
