// The ten layout locators by name, and one locate run of any of them as the project entry
// points drive it: construct, setScale, markSearchSize, locate, prepare, getEdgeCenters.
#pragma once

#include <array>
#include <vector>

#include <opencv2/core.hpp>

#include "locate/ChartModel.h"
#include "render/ChartDesign.h"

namespace talonvireo {
namespace testing {

enum class Layout { Lx17qd, Lx17qd2, Lx, Lx2, LxMap, LxMap2, LxMap8k, LxMap28k, Hlx6c, Hlx6c2 };

struct LayoutInfo {
    Layout layout;
    const char* name;
    render::ChartProject project;  // the chart that carries it
    int layoutIndex;               // first or second of the project's pair
    int rows;
    int edges;
    int cornerSearchSize;
};

const std::array<LayoutInfo, 10>& allLayouts();
const LayoutInfo& layoutInfo(Layout layout);

struct LocateRun {
    bool threw = false;
    int prepareStatus = 0;
    std::vector<cv::Point> centres;
    std::vector<RegularSFR::ChartCorner> corners;
    std::vector<RegularSFR::ChartEdge> edges;
    cv::Mat perspective;
    int cornerSearchSize = 0;
    int markSearchSize = 0;
};

LocateRun runLocate(Layout layout, const cv::Mat& grey, double scale, int markSearchSize);

// locate alone (no prepare): the chart model and mapping the layout hands the base.
LocateRun runLayoutOnly(Layout layout, const cv::Mat& grey, int markSearchSize = 100);

}  // namespace testing
}  // namespace talonvireo
