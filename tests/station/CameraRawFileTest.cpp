// Camera raw files through LibRaw: the mosaic, its CFA phase and depth from the metadata, and
// the refusals a member needs.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include <opencv2/core.hpp>

#include "station/CameraRawFile.h"
#include "station/DngWriter.h"
#include "station/Failure.h"
#include "talonvireo/PixelFormat.h"

namespace {
using namespace talonvireo::station;

cv::Mat randomMosaic(int bits) {
    cv::Mat m(48, 64, CV_16UC1);
    cv::RNG rng(7);
    rng.fill(m, cv::RNG::UNIFORM, 0, 1 << bits);
    return m;
}

std::string tempPath(const std::string& name) {
    return ::testing::TempDir() + name;
}

Cause statusOf(const std::function<void()>& call, std::string* message = nullptr) {
    try {
        call();
    } catch (const Failure& e) {
        if (message != nullptr) {
            *message = e.what();
        }
        return e.cause();
    }
    return Cause::None;
}

TEST(CameraRawFile, ADngGivesBackItsMosaicPatternAndDepth) {
    const cv::Mat mosaic = randomMosaic(10);
    const std::string path = tempPath("round.dng");
    writeDng(path, mosaic, 10);
    const CameraRaw raw = readCameraRaw(path);
    ASSERT_EQ(raw.mosaic.size(), mosaic.size());
    EXPECT_EQ(cv::countNonZero(raw.mosaic != mosaic), 0);
    EXPECT_EQ(raw.bits, 10);
    EXPECT_EQ(raw.pattern, "RGGB");
    EXPECT_NO_THROW(checkCameraRawFits(raw, path, 10, "member"));
}

TEST(CameraRawFile, EveryCfaPhaseIsReadFromTheMetadata) {
    for (const std::string pattern : {"GRBG", "GBRG", "BGGR"}) {
        const std::string path = tempPath("phase-" + pattern + ".dng");
        writeDng(path, randomMosaic(12), 12, pattern);
        const CameraRaw raw = readCameraRaw(path);
        EXPECT_EQ(raw.pattern, pattern);
        EXPECT_EQ(raw.bits, 12);
    }
}

TEST(CameraRawFile, AMosaicPhaseTheMemberCannotTakeIsRefusedNamingBoth) {
    const std::string path = tempPath("grbg.dng");
    writeDng(path, randomMosaic(10), 10, "GRBG");
    const CameraRaw raw = readCameraRaw(path);
    std::string message;
    EXPECT_EQ(
        statusOf([&] { checkCameraRawFits(raw, path, 10, "talonvireoSFR_raw10_HLX6C"); }, &message),
        Cause::BadInput);
    EXPECT_NE(message.find("is a GRBG mosaic; talonvireoSFR_raw10_HLX6C takes RGGB"),
              std::string::npos)
        << message;
}

TEST(CameraRawFile, SamplesDeeperThanTheMemberAreRefused) {
    const std::string path = tempPath("deep.dng");
    writeDng(path, randomMosaic(12), 12);
    const CameraRaw raw = readCameraRaw(path);
    std::string message;
    EXPECT_EQ(statusOf([&] { checkCameraRawFits(raw, path, 10, "m10"); }, &message),
              Cause::SampleDepth);
    EXPECT_NE(message.find("holds 12-bit samples; m10 takes 10"), std::string::npos) << message;
}

TEST(CameraRawFile, AFileThatIsNotCameraRawIsUnreadable) {
    const std::string path = tempPath("garbage.dng");
    std::ofstream(path, std::ios::binary) << std::string(4096, 'x');
    std::string message;
    EXPECT_EQ(statusOf([&] { readCameraRaw(path); }, &message), Cause::UnreadableFile);
    EXPECT_NE(message.find("as camera raw"), std::string::npos) << message;
    EXPECT_EQ(statusOf([&] { readCameraRaw(tempPath("missing.dng")); }), Cause::UnreadableFile);
    const std::string folder = tempPath("folder.dng");
    std::filesystem::create_directories(folder);
    EXPECT_EQ(statusOf([&] { readCameraRaw(folder); }, &message), Cause::UnreadableFile);
    EXPECT_NE(message.find("is a directory"), std::string::npos) << message;
}

TEST(CameraRawFile, TheWriterRefusesWhatADngCannotHold) {
    EXPECT_EQ(statusOf([&] { writeDng(tempPath("x.dng"), randomMosaic(10), 10, "RGBG"); }),
              Cause::BadInput);
    EXPECT_EQ(statusOf([&] { writeDng(tempPath("x.dng"), cv::Mat(4, 4, CV_8UC1), 8); }),
              Cause::BadInput);
}

TEST(CameraRawFile, CameraRawIsKnownByItsExtensionInAnyCase) {
    EXPECT_TRUE(isCameraRawPath("a/b/frame.dng"));
    EXPECT_TRUE(isCameraRawPath("FRAME.NEF"));
    EXPECT_TRUE(isCameraRawPath("x.Cr2"));
    EXPECT_FALSE(isCameraRawPath("frame.raw"));
    EXPECT_FALSE(isCameraRawPath("frame.png"));
    EXPECT_FALSE(isCameraRawPath("dng"));
}

TEST(CameraRawFile, EachBayerPatternNamesItsRegionPhase) {
    EXPECT_EQ(bayerPhaseOf("RGGB"), talonvireo::PixelFormat::PhaseRG);
    EXPECT_EQ(bayerPhaseOf("GRBG"), talonvireo::PixelFormat::PhaseGR);
    EXPECT_EQ(bayerPhaseOf("GBRG"), talonvireo::PixelFormat::PhaseGB);
    EXPECT_EQ(bayerPhaseOf("BGGR"), talonvireo::PixelFormat::PhaseBG);
    EXPECT_EQ(bayerPhaseOf("RGBG"), 0);
    EXPECT_EQ(bayerPhaseOf(""), 0);
}

}  // namespace
