#include "station/FieldPosition.h"

#include <cmath>

namespace talonvireo {
namespace station {

namespace {
constexpr double kPi = 3.141592653589793;
constexpr double kCentrePercent = 1.0;
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

void describeField(FrameReport& report) {
    for (EdgeRow& row : report.rows) {
        row.field = row.state == EdgeState::kNotLocated
                        ? FieldPosition{}  // no centre, no place in the field
                        : fieldPosition(row.measured.x, row.measured.y, report.width, report.height,
                                        row.normalDeg);
    }
}

}  // namespace station
}  // namespace talonvireo
