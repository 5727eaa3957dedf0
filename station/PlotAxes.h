// A plot's axes: data to pixels, a light grid with labelled ticks, and the axis titles.
// Shared by every chart the tool draws.
#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace station {

struct AxisRange {
    double from = 0.0;
    double to = 1.0;
    double tick = 0.1;  // grid and label step
    const char* format = "%.1f";
};

class PlotAxes {
public:
    // The plotting area inside `size`, with these margins (left, right, top, bottom).
    PlotAxes(cv::Size size, AxisRange x, AxisRange y, int left = 60, int right = 20, int top = 20,
             int bottom = 50);

    cv::Point toPixel(double x, double y) const;
    // A white canvas with the grid, the tick labels and the x-axis title drawn.
    cv::Mat canvas(const std::string& xTitle) const;
    const AxisRange& x() const { return x_; }
    const AxisRange& y() const { return y_; }

private:
    cv::Size size_;
    AxisRange x_, y_;
    int left_, right_, top_, bottom_;
};

// The round step (1, 2 or 5 times a power of ten) that divides `span` into at most `most`
// steps: the tick of every axis the station draws.
double roundStep(double span, int most);

// Small anti-aliased text.
void plotLabel(cv::Mat& img, const std::string& text, cv::Point at, const cv::Scalar& colour);

// A 2 px dashed line from a to b: a dash every `period` pixels, `duty` of it drawn.
void dashedLine(cv::Mat& img, cv::Point a, cv::Point b, const cv::Scalar& colour, double period,
                double duty);

}  // namespace station
}  // namespace talonvireo
