#include "station/FieldCurve.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "station/PlotAxes.h"

namespace talonvireo {
namespace station {

namespace {
constexpr int kBins = 10;  // of 10 % image height each

struct Series {
    const char* name;
    cv::Scalar colour;  // Okabe-Ito blue and vermilion: apart for every colour vision
    bool square;
};

double valueOf(const EdgeRow& row, bool mtf50) {
    return mtf50 ? row.mtf50 : row.measured.sfrQuarterNyquist;
}
}  // namespace

cv::Mat plotFieldCurve(const FrameReport& report, bool mtf50) {
    const bool useMtf50 = mtf50 && report.hasMtf50;
    double hi = 0.0;
    for (const EdgeRow& row : report.rows) {
        const double v = valueOf(row, useMtf50);
        if (std::isfinite(v)) {
            hi = std::max(hi, v);
        }
    }
    const double top = useMtf50 ? std::max(0.1, std::ceil(hi / 0.05) * 0.05)
                                : std::max(1.0, std::ceil(hi / 0.2) * 0.2);
    const PlotAxes axes(cv::Size(1000, 560), AxisRange{0.0, 100.0, 10.0, "%.0f"},
                        AxisRange{0.0, top, useMtf50 ? 0.05 : 0.2, useMtf50 ? "%.2f" : "%.1f"}, 70,
                        20, 40, 50);
    cv::Mat img = axes.canvas("image height, % of the half-diagonal");
    const cv::Scalar ink(40, 40, 40);
    plotLabel(img,
              std::string(useMtf50 ? "MTF50 (cycles per pixel)" : "SFR at Nyquist/4") +
                  " against image height   " + report.input + "   " + report.member,
              {10, 22}, ink);
    const Series series[] = {{"tangential", cv::Scalar(178, 114, 0), false},
                             {"sagittal", cv::Scalar(0, 94, 213), true}};
    for (int s = 0; s < 2; ++s) {
        const Series& se = series[s];
        std::vector<double> sum(kBins, 0.0), count(kBins, 0.0);
        for (const EdgeRow& row : report.rows) {
            const double v = valueOf(row, useMtf50);
            if (row.field.orientation != se.name || !std::isfinite(v)) {
                continue;
            }
            const double h = std::clamp(row.field.heightPercent, 0.0, 100.0);
            const cv::Point at = axes.toPixel(h, std::min(v, top));
            if (se.square) {
                cv::rectangle(img, at - cv::Point(4, 4), at + cv::Point(4, 4), se.colour,
                              cv::FILLED);
            } else {
                cv::circle(img, at, 5, se.colour, cv::FILLED, cv::LINE_AA);
            }
            const int bin = std::min(kBins - 1, static_cast<int>(h / (100.0 / kBins)));
            sum[bin] += v;
            count[bin] += 1.0;
        }
        cv::Point previous(-1, -1);
        for (int b = 0; b < kBins; ++b) {
            if (count[b] == 0.0) {
                continue;
            }
            const cv::Point at =
                axes.toPixel((b + 0.5) * 100.0 / kBins, std::min(sum[b] / count[b], top));
            if (previous.x >= 0) {
                cv::line(img, previous, at, se.colour, 2, cv::LINE_AA);
            }
            previous = at;
        }
        // Legend, top right.
        const cv::Point key(760, 60 + 22 * s);
        if (se.square) {
            cv::rectangle(img, key - cv::Point(4, 4), key + cv::Point(4, 4), se.colour, cv::FILLED);
        } else {
            cv::circle(img, key, 5, se.colour, cv::FILLED, cv::LINE_AA);
        }
        plotLabel(img, se.name, key + cv::Point(12, 5), ink);
    }
    plotLabel(img, "lines: mean per 10 % of height", cv::Point(752, 60 + 22 * 2 + 5), ink);
    return img;
}

}  // namespace station
}  // namespace talonvireo
