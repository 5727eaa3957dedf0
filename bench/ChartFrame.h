// The raw frame the whole-frame benchmarks measure: a project's chart as a Bayer R G mosaic
// of words with `bits` significant bits, blur sigma 0.8, read noise of two 8-bit levels.
#pragma once

#include <opencv2/core.hpp>

#include "render/ChartDesign.h"
#include "render/ChartRenderer.h"

namespace talonvireo {
namespace bench {

inline cv::Mat rawChart(render::ChartProject project, int bits, int width, int height) {
    const render::ChartDesign design = render::designChart(project);
    render::ChartExposure exposure;
    exposure.bayer = true;
    exposure.bits = bits;
    exposure.readNoise = 2.0 * (1 << (bits - 8));
    return render::exposeChart(render::chartCoverage(design.squares, {}, 0.8, width, height),
                               exposure);
}

}  // namespace bench
}  // namespace talonvireo
