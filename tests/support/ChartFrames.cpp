#include "ChartFrames.h"

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

}  // namespace testing
}  // namespace talonvireo
