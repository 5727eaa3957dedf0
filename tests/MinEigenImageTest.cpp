// The corner measure equals OpenCV's cornerMinEigenVal bit for bit, and its largest value is
// the maximum minMaxLoc reports: on chart regions, on noise (whose gradients carry the tiny
// rounding residues that make the order of the sums matter), on blurred shapes, at every
// size from the smallest OpenCV takes upward, widths off the vector length included.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <opencv2/imgproc.hpp>

#include "ChartFrames.h"
#include "HighwayTargets.h"
#include "locate/MinEigenImage.h"

namespace {
using RegularSFR::minEigenImage;
using namespace talonvireo::testing;

void expectSameAsOpenCV(const cv::Mat& image, const std::string& what) {
    cv::Mat expected;
    cv::cornerMinEigenVal(image, expected, 15, 3, cv::BORDER_DEFAULT);
    double expectedMax = 0.0;
    cv::minMaxLoc(expected, nullptr, &expectedMax);
    cv::Mat got;
    const double gotMax = minEigenImage(image, got);
    ASSERT_EQ(got.type(), CV_32FC1) << what;
    ASSERT_EQ(got.size(), expected.size()) << what;
    int differing = 0;
    for (int y = 0; y < got.rows; ++y) {
        differing += std::memcmp(got.ptr(y), expected.ptr(y), got.cols * sizeof(float)) != 0;
    }
    EXPECT_EQ(differing, 0) << what << ": rows that differ";
    EXPECT_EQ(gotMax, expectedMax) << what;
}

cv::Mat shapes(cv::RNG& rng, int w, int h, bool blur) {
    cv::Mat image(h, w, CV_8UC1, cv::Scalar(rng.uniform(0, 256)));
    for (int k = 0; k < 6; ++k) {
        std::vector<cv::Point> quad;
        for (int c = 0; c < 4; ++c) {
            quad.emplace_back(rng.uniform(0, w), rng.uniform(0, h));
        }
        cv::fillConvexPoly(image, quad, cv::Scalar(rng.uniform(0, 256)), cv::LINE_AA);
    }
    if (blur) {
        cv::GaussianBlur(image, image, cv::Size(0, 0), 1.5);
    }
    return image;
}

TEST(MinEigenImage, MatchesOpenCVOnChartRegions) {
    for (const NamedWindow& window : cornerSearchWindows()) {
        expectSameAsOpenCV(window.image, window.name);
    }
}

class MinEigenImageOnTarget : public talonvireo::testing::OnEachHighwayTarget {};

TEST_P(MinEigenImageOnTarget, MatchesOpenCVOnNoiseAndShapesOfManySizes) {
    cv::RNG rng(20261123);
    for (int i = 0; i < 150; ++i) {
        const int w = rng.uniform(8, 340);
        const int h = rng.uniform(8, 340);
        cv::Mat image;
        switch (i % 3) {
            case 0:
                image.create(h, w, CV_8UC1);
                rng.fill(image, cv::RNG::UNIFORM, 0, 256);
                break;
            case 1:
                image = shapes(rng, w, h, false);
                break;
            default:
                image = shapes(rng, w, h, true);
                break;
        }
        expectSameAsOpenCV(image, std::to_string(w) + " x " + std::to_string(h));
    }
}

TALONVIREO_ON_EVERY_HIGHWAY_TARGET(MinEigenImageOnTarget);

TEST(MinEigenImage, MatchesOpenCVAtTheSmallestSizesAndOnAFlatImage) {
    cv::RNG rng(5);
    for (int h = 1; h <= 10; ++h) {
        for (int w = 1; w <= 10; ++w) {
            cv::Mat image(h, w, CV_8UC1);
            rng.fill(image, cv::RNG::UNIFORM, 0, 256);
            expectSameAsOpenCV(image, std::to_string(w) + " x " + std::to_string(h));
        }
    }
    expectSameAsOpenCV(cv::Mat(40, 40, CV_8UC1, cv::Scalar(kChartLight)), "flat");
}

TEST(MinEigenImage, MatchesOpenCVOnARegionOfALargerImage) {
    // A view into a larger image: rows are not contiguous, and the border is the view's own
    // (cornerMinEigenVal on a view reads the pixels round it, as the search never does: it
    // measures copies).
    cv::RNG rng(9);
    const cv::Mat image = shapes(rng, 400, 300, true);
    const cv::Mat view = image(cv::Rect(37, 21, 301, 203));
    cv::Mat expected;
    cv::cornerMinEigenVal(view, expected, 15, 3, cv::BORDER_DEFAULT);
    cv::Mat got;
    minEigenImage(view.clone(), got);
    cv::Mat fromView;
    minEigenImage(view, fromView);
    cv::Mat fromCopy;
    cv::cornerMinEigenVal(view.clone(), fromCopy, 15, 3, cv::BORDER_DEFAULT);
    EXPECT_EQ(cv::norm(got, fromCopy, cv::NORM_INF), 0.0);
    EXPECT_EQ(cv::norm(fromView, expected, cv::NORM_INF), 0.0);
}

}  // namespace
