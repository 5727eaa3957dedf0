// The accuracy plot: each method's MTF50 error against the edge angle, one panel per blur.
#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace accuracy {

struct AccuracySeries {
    std::string method;         // "classic", "normal-axis" or "precise"
    std::vector<double> angle;  // degrees
    std::vector<double> error;  // MTF50 error, percent (NaN: refused)
};

struct AccuracyPanel {
    std::string title;  // the blur, "f/8 0.537um"
    std::vector<AccuracySeries> series;
};

// Panels side by side, errors from -3 % to +6 % (beyond: drawn at the edge, with the method's
// extreme written in the panel), a colour-blind-safe colour per method and a legend.
cv::Mat plotAccuracy(const std::vector<AccuracyPanel>& panels, const std::string& caption);

}  // namespace accuracy
}  // namespace talonvireo
