#include "station/PlotAxes.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <opencv2/imgproc.hpp>

namespace talonvireo {
namespace station {

PlotAxes::PlotAxes(cv::Size size, AxisRange x, AxisRange y, int left, int right, int top,
                   int bottom)
    : size_(size), x_(x), y_(y), left_(left), right_(right), top_(top), bottom_(bottom) {}

cv::Point PlotAxes::toPixel(double x, double y) const {
    const double px = left_ + (x - x_.from) / (x_.to - x_.from) * (size_.width - left_ - right_);
    const double py = size_.height - bottom_ -
                      (y - y_.from) / (y_.to - y_.from) * (size_.height - top_ - bottom_);
    return {static_cast<int>(std::lround(px)), static_cast<int>(std::lround(py))};
}

cv::Mat PlotAxes::canvas(const std::string& xTitle) const {
    cv::Mat img(size_, CV_8UC3, cv::Scalar(255, 255, 255));
    const cv::Scalar grid(220, 220, 220), ink(40, 40, 40);
    char text[32];
    const int xTicks = static_cast<int>(std::lround((x_.to - x_.from) / x_.tick));
    for (int i = 0; i <= xTicks; ++i) {
        const double v = x_.from + i * x_.tick;
        cv::line(img, toPixel(v, y_.from), toPixel(v, y_.to), grid);
        std::snprintf(text, sizeof text, x_.format, v);
        plotLabel(img, text, toPixel(v, y_.from) + cv::Point(-10, 20), ink);
    }
    const int yTicks = static_cast<int>(std::lround((y_.to - y_.from) / y_.tick));
    for (int i = 0; i <= yTicks; ++i) {
        const double v = y_.from + i * y_.tick;
        cv::line(img, toPixel(x_.from, v), toPixel(x_.to, v), grid);
        std::snprintf(text, sizeof text, y_.format, v);
        plotLabel(img, text, toPixel(x_.from, v) + cv::Point(-40, 5), ink);
    }
    plotLabel(img, xTitle, cv::Point(size_.width / 2 - 100, size_.height - 10), ink);
    return img;
}

double roundStep(double span, int most) {
    const double raw = std::max(span, 1e-9) / most;
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    for (const double m : {1.0, 2.0, 5.0}) {
        if (m * power >= raw) {
            return m * power;
        }
    }
    return 10.0 * power;
}

void plotLabel(cv::Mat& img, const std::string& text, cv::Point at, const cv::Scalar& colour) {
    cv::putText(img, text, at, cv::FONT_HERSHEY_SIMPLEX, 0.45, colour, 1, cv::LINE_AA);
}

void dashedLine(cv::Mat& img, cv::Point a, cv::Point b, const cv::Scalar& colour, double period,
                double duty) {
    const double length = std::hypot(b.x - a.x, b.y - a.y);
    const int dashes = std::max(1, static_cast<int>(length / period));
    for (int i = 0; i < dashes; ++i) {
        const double t0 = static_cast<double>(i) / dashes;
        const double t1 = t0 + duty / dashes;
        cv::line(img, a + (b - a) * t0, a + (b - a) * t1, colour, 2);
    }
}

}  // namespace station
}  // namespace talonvireo
