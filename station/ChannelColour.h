// The colour a plot draws a measured channel in, chosen by the channel's name so that a red
// plane is drawn red wherever it sits in the curve's channel list.
#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace station {

// BGR ink for a channel name: "R" red, "Gr" a light leaf green, "Gb" a dark teal green, "G"
// green, "B" blue; "grey" and any other name near-black.
cv::Scalar channelColour(const std::string& name);

}  // namespace station
}  // namespace talonvireo
