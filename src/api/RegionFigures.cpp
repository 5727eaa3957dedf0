#include "api/RegionFigures.h"

#include "talonvireo/PixelFormat.h"

namespace talonvireo {
namespace api {

namespace pf = PixelFormat;

CurveFigures curveFigures(const SfrChannelCurve& channel, const std::string& name) {
    CurveFigures c;
    c.channel = name;
    c.sfrQuarterNyquist = channel.sfrAt.at(0);
    c.sfrHalfNyquist = channel.sfrAt.at(1);
    if (channel.sfrAt.size() > 2) {
        c.sfrCustom = channel.sfrAt[2];
    }
    c.mtf50 = channel.mtf50;
    return c;
}

int phaseAfterCut(int phase, int dx, int dy) {
    // Where R sits in the 2 x 2 cell: RG (0, 0), GR (1, 0), GB (0, 1), BG (1, 1).
    const int rx = ((phase == pf::PhaseGR || phase == pf::PhaseBG ? 1 : 0) + dx) & 1;
    const int ry = ((phase == pf::PhaseGB || phase == pf::PhaseBG ? 1 : 0) + dy) & 1;
    return ry == 0 ? (rx == 0 ? pf::PhaseRG : pf::PhaseGR) : (rx == 0 ? pf::PhaseGB : pf::PhaseBG);
}

std::vector<CurveFigures> rawPlaneFigures(const cv::Mat& frame, int layout, int phase,
                                          const cv::Rect& cut, SfrCurveOptions options) {
    options.method = SfrMethod::kPrecise;
    options.perChannelRaw = true;
    const cv::Mat mosaic = frame(cut).clone();
    SfrCurve curve;
    const int status = measureSfrCurve(mosaic.data, mosaic.cols, mosaic.rows,
                                       layout + phaseAfterCut(phase, cut.x, cut.y), options, curve);
    const char* names[4] = {"R", "Gr", "Gb", "B"};
    std::vector<CurveFigures> planes;
    for (int k = 0; k < 4; ++k) {
        CurveFigures f;
        if (status == 0 && k < static_cast<int>(curve.channels.size())) {
            f = curveFigures(curve.channels[static_cast<std::size_t>(k)], names[k]);
        }
        f.channel = names[k];
        f.status = status;
        planes.push_back(f);
    }
    return planes;
}

}  // namespace api
}  // namespace talonvireo
