// Rendered chart frames for the locator tests: 8-bit grey, light 200 on dark 40.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "render/ChartDesign.h"
#include "render/ChartSquare.h"
#include "render/ChartTransform.h"

namespace talonvireo {
namespace testing {

struct ChartFrame {
    render::ChartProject project = render::ChartProject::HLX6C;
    double sigma = 0.7;
    int width = 4000;
    int height = 3000;
    render::ChartTransform transform;
    double noise = 0.0;  // standard deviation, grey levels
    std::uint32_t seed = 1;
};

inline constexpr int kChartLight = 200;
inline constexpr int kChartDark = 40;

cv::Mat renderGreyChart(const ChartFrame& frame);

// A raw frame of the project's chart as a sensor gives it: Bayer R G mosaic of words with
// `bits` significant bits (ChartExposure's default levels), read noise in sample units.
cv::Mat renderRawChart(render::ChartProject project, int bits, int width = 4000, int height = 3000,
                       const render::ChartTransform& placement = {}, double sigma = 0.8,
                       double readNoise = 0.0, std::uint32_t seed = 1);

// The renderer's chart of a member's chart name ("HLX6C"); throws for a name it does not draw.
render::ChartProject chartProjectNamed(const std::string& name);

// Any set of squares, untransformed, on a width x height frame with the same levels.
cv::Mat renderGreySquares(const std::vector<render::ChartSquare>& squares, int width, int height,
                          double sigma);

// 300 x 300 windows, 230 px apart across and 170 down, of a K31R22BX chart with read noise
// 2, downscaled by half as the corner search sees it; each named by its top-left corner.
struct NamedWindow {
    std::string name;
    cv::Mat image;
};
std::vector<NamedWindow> cornerSearchWindows();

}  // namespace testing
}  // namespace talonvireo
