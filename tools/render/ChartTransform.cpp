#include "render/ChartTransform.h"

#include <cmath>

#include "render/Pi.h"

namespace talonvireo {
namespace render {

namespace {
constexpr double kCentreX = 2000.0;
constexpr double kCentreY = 1500.0;
}  // namespace

cv::Matx33d ChartTransform::homography() const {
    const double a = rotationDeg * kPi / 180.0;
    const double c = scale * std::cos(a), s = scale * std::sin(a);
    const cv::Matx33d toCentre(1, 0, -kCentreX, 0, 1, -kCentreY, 0, 0, 1);
    const cv::Matx33d perspective(1, 0, 0, 0, 1, 0, perspX, perspY, 1);
    const cv::Matx33d rotateScale(c, -s, 0, s, c, 0, 0, 0, 1);
    const cv::Matx33d back(1, 0, kCentreX + shiftX, 0, 1, kCentreY + shiftY, 0, 0, 1);
    return back * rotateScale * perspective * toCentre;
}

cv::Point2d applyHomography(const cv::Matx33d& h, cv::Point2d p) {
    const double w = h(2, 0) * p.x + h(2, 1) * p.y + h(2, 2);
    return {(h(0, 0) * p.x + h(0, 1) * p.y + h(0, 2)) / w,
            (h(1, 0) * p.x + h(1, 1) * p.y + h(1, 2)) / w};
}

double localScale(const cv::Matx33d& h, cv::Point2d p) {
    constexpr double kStep = 0.5;
    const cv::Point2d o = applyHomography(h, p);
    const cv::Point2d ex = applyHomography(h, p + cv::Point2d(kStep, 0)) - o;
    const cv::Point2d ey = applyHomography(h, p + cv::Point2d(0, kStep)) - o;
    return std::sqrt(std::abs(ex.x * ey.y - ex.y * ey.x)) / kStep;
}

}  // namespace render
}  // namespace talonvireo
