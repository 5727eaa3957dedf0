// Verdicts that a clipped, patched, dim or misplaced frame cannot fool: each case a rendered
// frame written to a file and graded as a line grades it.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

#include "ChartFrames.h"
#include "render/ChartRenderer.h"
#include "station/DngWriter.h"
#include "station/Failure.h"
#include "station/FrameGrading.h"
#include "station/Members.h"

namespace {
using namespace talonvireo;
using station::Cause;

const std::string kLimits = TALONVIREO_LIMITS_DIR;

class Verdict : public ::testing::Test {
protected:
    void SetUp() override {
        dir_ = std::filesystem::temp_directory_path() /
               ("talonvireo-verdict-" + std::to_string(::getpid()) + "-" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(dir_);
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    // A 10-bit HLX6C frame, light side at `light` of full scale (above 1 it clips).
    static cv::Mat frame(double light, const render::ChartTransform& placement = {}) {
        const render::ChartDesign design = render::designChart(render::ChartProject::HLX6C);
        render::ChartExposure exposure;
        exposure.bayer = true;
        exposure.bits = 10;
        exposure.readNoise = 1.5;
        exposure.light = light;
        exposure.dark = 0.12 * light / 0.8;
        return render::exposeChart(
            render::chartCoverage(design.squares, placement, 0.9, 4000, 3000), exposure);
    }

    std::string write(const cv::Mat& raw, const std::string& name) const {
        const std::string path = (dir_ / name).string();
        std::ofstream out(path, std::ios::binary);
        out.write(reinterpret_cast<const char*>(raw.data),
                  static_cast<std::streamsize>(raw.total() * raw.elemSize()));
        return path;
    }

    static station::FrameOptions graded() {
        station::FrameOptions options;
        options.layout.width = 4000;
        options.layout.height = 3000;
        options.limits = station::readLimits(kLimits + "/lenient.toml");
        return options;
    }

    static const station::Member& hlx6c() {
        static const std::vector<station::Member> members = station::allMembers();
        return *station::findMember(members, "talonvireoSFR_raw10_HLX6C");
    }

    static bool mentions(const std::vector<std::string>& warnings, const std::string& text) {
        for (const std::string& w : warnings) {
            if (w.find(text) != std::string::npos) {
                return true;
            }
        }
        return false;
    }

    std::filesystem::path dir_;
};

TEST_F(Verdict, AWellExposedFramePassesUnflaggedAndWithoutAWarning) {
    const station::GradedFrame g =
        station::gradeFrameFile(hlx6c(), write(frame(0.8), "ok.raw"), graded());
    EXPECT_EQ(g.report.failures(), 0);
    EXPECT_TRUE(g.report.warnings.empty());
    EXPECT_EQ(g.report.clippedShare, 0.0);
}

// Before: the frame read SFR 0.8 and passed with exit 0 and no word of the clipping.
TEST_F(Verdict, AnOverExposedFrameFailsAsClippedAndSaysSo) {
    const station::GradedFrame g =
        station::gradeFrameFile(hlx6c(), write(frame(2.0), "bright.raw"), graded());
    EXPECT_EQ(g.report.failures(), 52);
    for (const station::EdgeRow& row : g.report.rows) {
        EXPECT_EQ(row.failedLimit, "clipped") << row.index;
        EXPECT_GT(row.clippedShare, 0.2) << row.index;
    }
    EXPECT_TRUE(mentions(g.report.warnings, "clipped")) << g.report.warnings.size();
    EXPECT_GT(g.report.clippedShare, 0.2);
}

TEST_F(Verdict, ClippingMayBeAcceptedButIsStillWarned) {
    station::FrameOptions options = graded();
    options.acceptClipped = true;
    const station::GradedFrame g =
        station::gradeFrameFile(hlx6c(), write(frame(1.3), "bright.raw"), options);
    EXPECT_EQ(g.report.failures(), 0);
    EXPECT_TRUE(mentions(g.report.warnings, "accepted as asked"));
}

// Before: a DNG declaring white level 255 with samples up to 818 was measured without a word.
TEST_F(Verdict, ADngWithSamplesAboveItsWhiteLevelIsWarnedAndClippedThere) {
    const std::string path = (dir_ / "low-white.dng").string();
    station::writeDng(path, frame(0.8), 10, "RGGB", 255);
    const station::GradedFrame g = station::gradeFrameFile(hlx6c(), path, graded());
    EXPECT_TRUE(mentions(g.report.warnings, "above the file's declared white level 255"));
    EXPECT_EQ(g.report.whiteLevel, 255);
    EXPECT_GT(g.report.failures(), 0) << "every light sample sits above 255";
}

// Before: the patched edge was "located" on the patch's border and read SFR 1.06, exit 0.
TEST_F(Verdict, APatchedEdgeFailsAGradedFrame) {
    cv::Mat raw = frame(0.8);
    raw(cv::Rect(2468, 1368, 200, 200)).setTo(cv::Scalar(470));
    const station::GradedFrame g =
        station::gradeFrameFile(hlx6c(), write(raw, "patched.raw"), graded());
    ASSERT_GT(g.report.failures(), 0);
    const station::EdgeRow& row = g.report.rows[5];
    EXPECT_FALSE(g.report.passes(row));
    EXPECT_EQ(row.failedLimit, "off the design");
    EXPECT_TRUE(mentions(g.report.warnings, "off the chart design"));
}

// Before: refused as "does not look like the HLX6C chart", blaming the chart.
TEST_F(Verdict, TheRightChartShiftedIsMisplacedNotAnotherChart) {
    render::ChartTransform shifted;
    shifted.shiftX = -180.0;
    shifted.shiftY = 100.0;
    try {
        station::gradeFrameFile(hlx6c(), write(frame(0.8, shifted), "shifted.raw"), graded());
        ADD_FAILURE() << "a misplaced chart was graded";
    } catch (const station::Failure& e) {
        EXPECT_EQ(e.cause(), Cause::Misplaced) << e.what();
        EXPECT_NE(std::string(e.what()).find("HLX6C chart is in view"), std::string::npos)
            << e.what();
    }
}

// Before: the warning went to stderr and the failure's records lost it.
TEST_F(Verdict, ADimFramesWarningTravelsWithItsFailure) {
    const cv::Mat dim(3000, 4000, CV_16UC1, cv::Scalar(20));
    try {
        station::gradeFrameFile(hlx6c(), write(dim, "dim.raw"), graded());
        ADD_FAILURE() << "a blank frame was graded";
    } catch (const station::Failure& e) {
        EXPECT_EQ(e.cause(), Cause::NotLocated);
        EXPECT_TRUE(mentions(e.warnings(), "below 1/16 of 10-bit full scale"));
    }
}

}  // namespace
