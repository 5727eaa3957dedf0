#include "accuracy/AccuracyPlot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <opencv2/imgproc.hpp>

#include "station/PlotAxes.h"

namespace talonvireo {
namespace accuracy {

namespace {
constexpr double kLowest = -3.0;
constexpr double kHighest = 6.0;

// Okabe and Ito's palette (BGR): told apart with any colour vision.
cv::Scalar methodColour(const std::string& method) {
    if (method == "classic") {
        return cv::Scalar(0, 159, 230);  // orange
    }
    if (method == "normal-axis") {
        return cv::Scalar(233, 180, 86);  // sky blue
    }
    return cv::Scalar(115, 158, 0);  // bluish green
}

station::PlotAxes panelAxes() {
    return station::PlotAxes(cv::Size(440, 380), station::AxisRange{0.0, 45.0, 5.0, "%.0f"},
                             station::AxisRange{kLowest, kHighest, 1.0, "%.0f"}, 50, 15, 40, 45);
}

cv::Mat drawPanel(const AccuracyPanel& panel) {
    const station::PlotAxes axes = panelAxes();
    cv::Mat img = axes.canvas("edge angle, degrees");
    const cv::Scalar ink(40, 40, 40);
    cv::line(img, axes.toPixel(0.0, 0.0), axes.toPixel(45.0, 0.0), cv::Scalar(120, 120, 120), 1,
             cv::LINE_AA);
    station::plotLabel(img, panel.title, cv::Point(55, 18), ink);
    station::plotLabel(img, "MTF50 error, %", cv::Point(55, 34), cv::Scalar(110, 110, 110));
    for (const AccuracySeries& s : panel.series) {
        const cv::Scalar colour = methodColour(s.method);
        const int thickness = s.method == "precise" ? 2 : 1;
        for (std::size_t k = 1; k < s.angle.size(); ++k) {
            const double a = s.error[k - 1], b = s.error[k];
            if (!std::isfinite(a) || !std::isfinite(b)) {
                continue;
            }
            cv::line(img, axes.toPixel(s.angle[k - 1], std::clamp(a, kLowest, kHighest)),
                     axes.toPixel(s.angle[k], std::clamp(b, kLowest, kHighest)), colour, thickness,
                     cv::LINE_AA);
        }
    }
    // Where a method leaves the scale, its extreme in its own colour.
    int line = 0;
    for (const AccuracySeries& s : panel.series) {
        double worst = 0.0;
        for (double e : s.error) {
            if (std::isfinite(e) && std::fabs(e) > std::fabs(worst)) {
                worst = e;
            }
        }
        if (worst > kHighest || worst < kLowest) {
            char text[64];
            std::snprintf(text, sizeof text, "%s reaches %+.1f %%", s.method.c_str(), worst);
            // On a white ground, so that the curves beneath do not cross the text.
            const cv::Point at(60, 60 + 16 * line++);
            int base = 0;
            const cv::Size size = cv::getTextSize(text, cv::FONT_HERSHEY_SIMPLEX, 0.45, 1, &base);
            cv::rectangle(img, at + cv::Point(-3, -size.height - 3),
                          at + cv::Point(size.width + 3, base + 1), cv::Scalar(255, 255, 255),
                          cv::FILLED);
            station::plotLabel(img, text, at, methodColour(s.method));
        }
    }
    return img;
}
}  // namespace

cv::Mat plotAccuracy(const std::vector<AccuracyPanel>& panels, const std::string& caption) {
    std::vector<cv::Mat> drawn;
    for (const AccuracyPanel& p : panels) {
        drawn.push_back(drawPanel(p));
    }
    cv::Mat row;
    cv::hconcat(drawn, row);
    cv::Mat out(row.rows + 40, row.cols, CV_8UC3, cv::Scalar(255, 255, 255));
    row.copyTo(out(cv::Rect(0, 0, row.cols, row.rows)));
    const cv::Scalar ink(40, 40, 40);
    int x = 55;
    for (const char* method : {"classic", "normal-axis", "precise"}) {
        const cv::Scalar colour = methodColour(method);
        cv::line(out, cv::Point(x, row.rows + 12), cv::Point(x + 30, row.rows + 12), colour,
                 std::string(method) == "precise" ? 2 : 1, cv::LINE_AA);
        station::plotLabel(out, method, cv::Point(x + 36, row.rows + 16), ink);
        x += 150;
    }
    station::plotLabel(out, caption, cv::Point(x + 10, row.rows + 16), cv::Scalar(110, 110, 110));
    return out;
}

}  // namespace accuracy
}  // namespace talonvireo
