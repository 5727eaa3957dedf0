#include "station/ChannelColour.h"

namespace talonvireo {
namespace station {

cv::Scalar channelColour(const std::string& name) {
    // The two greens of a mosaic sit side by side in one plot: they differ in lightness and
    // lean apart in hue (yellowish, bluish), so neither reads as the other.
    if (name == "R") {
        return cv::Scalar(40, 30, 215);
    }
    if (name == "Gr") {
        return cv::Scalar(20, 200, 90);
    }
    if (name == "Gb") {
        return cv::Scalar(70, 110, 0);
    }
    if (name == "G") {
        return cv::Scalar(0, 150, 0);
    }
    if (name == "B") {
        return cv::Scalar(210, 70, 0);
    }
    return cv::Scalar(40, 40, 40);
}

}  // namespace station
}  // namespace talonvireo
