#include "station/FieldPosition.h"

#include <cmath>

#include <opencv2/imgproc.hpp>

namespace talonvireo {
namespace station {

namespace {
constexpr double kPi = 3.141592653589793;
constexpr double kCentrePercent = 1.0;

// Direction of the strongest gradient in a region (degrees, image axes, 0 .. 180): the
// structure tensor's leading eigenvector.
double normalDirection(const cv::Mat& region) {
    cv::Mat gx, gy;
    cv::Sobel(region, gx, CV_64F, 1, 0);
    cv::Sobel(region, gy, CV_64F, 0, 1);
    const double jxx = gx.dot(gx), jyy = gy.dot(gy), jxy = gx.dot(gy);
    return 0.5 * std::atan2(2.0 * jxy, jxx - jyy) * 180.0 / kPi;
}
}  // namespace

FieldPosition fieldPosition(double x, double y, int width, int height, double normalDeg) {
    FieldPosition f;
    const double dx = x - (width - 1) * 0.5, dy = y - (height - 1) * 0.5;
    const double halfDiagonal = 0.5 * std::hypot(width, height);
    f.heightPercent = 100.0 * std::hypot(dx, dy) / halfDiagonal;
    f.azimuthDeg = std::atan2(-dy, dx) * 180.0 / kPi;  // y grows downwards in the image
    if (f.azimuthDeg < 0.0) {
        f.azimuthDeg += 360.0;
    }
    if (f.heightPercent < kCentrePercent || !std::isfinite(normalDeg)) {
        f.orientation = "none";
        return f;
    }
    // Angle between the normal and the radius, folded to 0 .. 90 degrees.
    const double radial = std::atan2(dy, dx) * 180.0 / kPi;
    double between = std::fmod(std::fabs(normalDeg - radial), 180.0);
    if (between > 90.0) {
        between = 180.0 - between;
    }
    f.orientation = between < 45.0 ? "tangential" : "sagittal";
    return f;
}

void describeField(FrameReport& report, const cv::Mat& grey) {
    const cv::Rect frame(0, 0, grey.cols, grey.rows);
    for (EdgeRow& row : report.rows) {
        const cv::Rect cut = row.region();
        const double normal =
            (cut & frame) == cut && row.side >= 3 ? normalDirection(grey(cut)) : std::nan("");
        row.field =
            fieldPosition(row.measured.x, row.measured.y, report.width, report.height, normal);
    }
}

}  // namespace station
}  // namespace talonvireo
