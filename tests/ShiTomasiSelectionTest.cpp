// The corner selection on a precomputed eigenvalue image gives exactly what OpenCV's
// goodFeaturesToTrack gives on the image: the same corners in the same order.
#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "ChartFrames.h"
#include "locate/ShiTomasiSelection.h"

namespace {
using RegularSFR::selectShiTomasiCorners;
using namespace talonvireo::testing;

constexpr double kQuality = static_cast<double>(0.05f);

void expectSameAsOpenCV(const cv::Mat& image, int maxCorners, double minDistance,
                        const std::string& what) {
    std::vector<cv::Point2f> expected;
    cv::goodFeaturesToTrack(image, expected, maxCorners, kQuality, minDistance, cv::noArray(), 15,
                            false, 0.04);
    cv::Mat eig;
    cv::cornerMinEigenVal(image, eig, 15, 3);
    double maxEig = 0.0;
    cv::minMaxLoc(eig, nullptr, &maxEig);
    const std::vector<cv::Point2f> got =
        selectShiTomasiCorners(eig, maxEig, maxCorners, kQuality, minDistance);
    EXPECT_EQ(got, expected) << what << ", max " << maxCorners << ", distance " << minDistance;
}

TEST(ShiTomasiSelection, MatchesOpenCVOnChartRegions) {
    for (const NamedWindow& window : cornerSearchWindows()) {
        expectSameAsOpenCV(window.image, 32, 12.5, window.name);
    }
}

TEST(ShiTomasiSelection, MatchesOpenCVOnNoiseAtEveryDistanceRule) {
    cv::Mat noise(64, 80, CV_8UC1);
    cv::RNG rng(11);
    rng.fill(noise, cv::RNG::UNIFORM, 0, 256);
    for (const double distance : {0.0, 0.5, 1.0, 2.5, 3.0, 3.25, 12.5}) {
        for (const int maxCorners : {0, 5, 32}) {
            expectSameAsOpenCV(noise, maxCorners, distance, "noise");
        }
    }
}

TEST(ShiTomasiSelection, MatchesOpenCVOnTiesFlatAndTinyImages) {
    // Two identical squares: equal strengths, ordered by position.
    cv::Mat twins(140, 220, CV_8UC1, cv::Scalar(kChartLight));
    twins(cv::Rect(40, 50, 50, 50)).setTo(kChartDark);
    twins(cv::Rect(130, 50, 50, 50)).setTo(kChartDark);
    expectSameAsOpenCV(twins, 32, 12.5, "twins");
    expectSameAsOpenCV(twins, 3, 1.0, "twins");
    expectSameAsOpenCV(cv::Mat(50, 50, CV_8UC1, cv::Scalar(90)), 32, 3.0, "flat");
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(2, 2), cv::Size(3, 3), cv::Size(4, 7)}) {
        cv::Mat tiny(size, CV_8UC1);
        cv::RNG rng(size.area());
        rng.fill(tiny, cv::RNG::UNIFORM, 0, 256);
        expectSameAsOpenCV(tiny, 32, 3.0, "tiny");
    }
    EXPECT_TRUE(selectShiTomasiCorners(cv::Mat(), 0.0, 32, kQuality, 3.0).empty());
}

}  // namespace
