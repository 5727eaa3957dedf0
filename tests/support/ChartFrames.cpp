#include "ChartFrames.h"

#include "render/ChartRenderer.h"

namespace talonvireo {
namespace testing {

cv::Mat renderGreyChart(const ChartFrame& frame) {
    const render::ChartDesign design = render::designChart(frame.project);
    const cv::Mat coverage = render::chartCoverage(design.squares, frame.transform, frame.sigma,
                                                   frame.width, frame.height);
    render::ChartExposure exposure;
    exposure.light = kChartLight / 255.0;
    exposure.dark = kChartDark / 255.0;
    exposure.readNoise = frame.noise;
    exposure.seed = frame.seed;
    exposure.bits = 8;
    return render::exposeChart(coverage, exposure);
}

}  // namespace testing
}  // namespace talonvireo
