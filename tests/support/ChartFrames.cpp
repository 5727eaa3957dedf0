#include "ChartFrames.h"

#include <stdexcept>

#include <opencv2/imgproc.hpp>

#include "render/ChartRenderer.h"

namespace talonvireo {
namespace testing {

namespace {
cv::Mat expose(const cv::Mat& coverage, double noise, std::uint32_t seed) {
    render::ChartExposure exposure;
    exposure.light = kChartLight / 255.0;
    exposure.dark = kChartDark / 255.0;
    exposure.readNoise = noise;
    exposure.seed = seed;
    exposure.bits = 8;
    return render::exposeChart(coverage, exposure);
}
}  // namespace

cv::Mat renderGreyChart(const ChartFrame& frame) {
    const render::ChartDesign design = render::designChart(frame.project);
    return expose(render::chartCoverage(design.squares, frame.transform, frame.sigma, frame.width,
                                        frame.height),
                  frame.noise, frame.seed);
}

cv::Mat renderRawChart(render::ChartProject project, int bits, int width, int height,
                       const render::ChartTransform& placement, double sigma, double readNoise,
                       std::uint32_t seed) {
    const render::ChartDesign design = render::designChart(project);
    render::ChartExposure exposure;
    exposure.bayer = true;
    exposure.bits = bits;
    exposure.readNoise = readNoise;
    exposure.seed = seed;
    return render::exposeChart(
        render::chartCoverage(design.squares, placement, sigma, width, height), exposure);
}

cv::Mat renderGreySquares(const std::vector<render::ChartSquare>& squares, int width, int height,
                          double sigma) {
    return expose(render::chartCoverage(squares, {}, sigma, width, height), 0.0, 1);
}

std::vector<NamedWindow> cornerSearchWindows() {
    ChartFrame frame;
    frame.project = render::ChartProject::K31R22BX;
    frame.noise = 2.0;
    cv::Mat half;
    cv::resize(renderGreyChart(frame), half, cv::Size(), 0.5, 0.5, cv::INTER_LINEAR);
    std::vector<NamedWindow> windows;
    for (int y = 0; y + 300 <= half.rows; y += 170) {
        for (int x = 0; x + 300 <= half.cols; x += 230) {
            windows.push_back({"region at " + std::to_string(x) + "," + std::to_string(y),
                               half(cv::Rect(x, y, 300, 300)).clone()});
        }
    }
    return windows;
}

render::ChartProject chartProjectNamed(const std::string& name) {
    render::ChartProject project;
    if (!render::parseProject(name, project)) {
        throw std::invalid_argument("no rendered chart " + name);
    }
    return project;
}

}  // namespace testing
}  // namespace talonvireo
