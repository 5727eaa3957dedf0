// Exported locate stage of the members: the same pair, scale and images as a measurement,
// stopping before the regions are cut.
#include "talonvireo/MemberEdgeLocate.h"

#include <cstdint>
#include <exception>

#include <opencv2/core.hpp>

#include "api/ChartLocate.h"

namespace talonvireo {

int locateMemberEdges(const unsigned char* grey, int width, int height, MemberChart chart,
                      int markSearchSize, EdgeCentre* centres, int capacity) {
    try {
        if (grey == nullptr || centres == nullptr || width <= 0 || height <= 0 ||
            static_cast<std::int64_t>(width) * height > INT32_MAX || markSearchSize < 1 ||
            markSearchSize > width / 2) {
            return -1;
        }
        // Borrowed and only read: the locators never write the frame.
        const cv::Mat image(height, width, CV_8UC1, const_cast<unsigned char*>(grey));
        int layoutStatus[2];
        return api::locateChart(image, chart, markSearchSize, false, centres, capacity,
                                layoutStatus);
    } catch (const std::exception&) {
        return -1;
    }
}

}  // namespace talonvireo
