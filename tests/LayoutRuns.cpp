#include "LayoutRuns.h"

#include <stdexcept>

#include "locate/SFRLocate_HLX6C.h"
#include "locate/SFRLocate_LX.h"
#include "locate/SFRLocate_LX_17QD.h"
#include "locate/SFRLocate_LX_MAP.h"
#include "locate/SFRLocate_LX_MAP_8K.h"

namespace talonvireo {
namespace testing {

namespace {
using render::ChartProject;

template <class Locator>
LocateRun run(const cv::Mat& grey, double scale, int markSearchSize, bool prepare) {
    LocateRun out;
    try {
        Locator locator(grey);
        locator.setScale(scale);
        locator.markSearchSize = markSearchSize;
        locator.locate();
        if (prepare) {
            out.prepareStatus = locator.prepare();
            out.centres = locator.getEdgeCenters();
        }
        out.corners = locator.corners;
        out.edges = locator.edges;
        out.perspective = locator.perspective.clone();
        out.cornerSearchSize = locator.cornerSearchSize;
        out.markSearchSize = locator.markSearchSize;
    } catch (const cv::Exception&) {
        out.threw = true;
    }
    return out;
}

LocateRun dispatch(Layout layout, const cv::Mat& grey, double scale, int mark, bool prepare) {
    using namespace RegularSFR;
    switch (layout) {
        case Layout::Lx17qd:
            return run<SFRLocate_LX_17QD>(grey, scale, mark, prepare);
        case Layout::Lx17qd2:
            return run<SFRLocate_LX_17QD2>(grey, scale, mark, prepare);
        case Layout::Lx:
            return run<SFRLocate_LX>(grey, scale, mark, prepare);
        case Layout::Lx2:
            return run<SFRLocate_LX2>(grey, scale, mark, prepare);
        case Layout::LxMap:
            return run<SFRLocate_LX_MAP>(grey, scale, mark, prepare);
        case Layout::LxMap2:
            return run<SFRLocate_LX_MAP2>(grey, scale, mark, prepare);
        case Layout::LxMap8k:
            return run<SFRLocate_LX_MAP_8K>(grey, scale, mark, prepare);
        case Layout::LxMap28k:
            return run<SFRLocate_LX_MAP2_8K>(grey, scale, mark, prepare);
        case Layout::Hlx6c:
            return run<SFRLocate_HLX6C>(grey, scale, mark, prepare);
        case Layout::Hlx6c2:
            return run<SFRLocate_HLX6C_2>(grey, scale, mark, prepare);
    }
    throw std::invalid_argument("unknown layout");
}
}  // namespace

const std::array<LayoutInfo, 10>& allLayouts() {
    static const std::array<LayoutInfo, 10> layouts = {{
        {Layout::Lx17qd, "SFRLocate_LX_17QD", ChartProject::K83P09BQ, 0, 26, 26, 600},
        {Layout::Lx17qd2, "SFRLocate_LX_17QD2", ChartProject::K83P09BQ, 1, 26, 26, 600},
        {Layout::Lx, "SFRLocate_LX", ChartProject::K31R22BX, 0, 56, 34, 600},
        {Layout::Lx2, "SFRLocate_LX2", ChartProject::K31R22BX, 1, 56, 34, 600},
        {Layout::LxMap, "SFRLocate_LX_MAP", ChartProject::K74T16BX, 0, 26, 26, 600},
        {Layout::LxMap2, "SFRLocate_LX_MAP2", ChartProject::K74T16BX, 1, 26, 26, 600},
        {Layout::LxMap8k, "SFRLocate_LX_MAP_8K", ChartProject::K74T16BX, 0, 26, 26, 1200},
        {Layout::LxMap28k, "SFRLocate_LX_MAP2_8K", ChartProject::K74T16BX, 1, 26, 26, 1200},
        {Layout::Hlx6c, "SFRLocate_HLX6C", ChartProject::HLX6C, 0, 26, 26, 600},
        {Layout::Hlx6c2, "SFRLocate_HLX6C_2", ChartProject::HLX6C, 1, 26, 26, 600},
    }};
    return layouts;
}

const LayoutInfo& layoutInfo(Layout layout) {
    return allLayouts()[static_cast<std::size_t>(layout)];
}

LocateRun runLocate(Layout layout, const cv::Mat& grey, double scale, int markSearchSize) {
    return dispatch(layout, grey, scale, markSearchSize, true);
}

LocateRun runLayoutOnly(Layout layout, const cv::Mat& grey, int markSearchSize) {
    return dispatch(layout, grey, 1.0, markSearchSize, false);
}

}  // namespace testing
}  // namespace talonvireo
