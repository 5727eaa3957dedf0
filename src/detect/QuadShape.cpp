#include "detect/QuadShape.h"

#include <algorithm>
#include <cmath>

namespace talonvireo {
namespace detect {

double signedArea2(const std::array<cv::Point2d, 4>& c) {
    double sum = 0.0;
    for (int i = 0; i < 4; ++i) {
        const cv::Point2d& a = c[i];
        const cv::Point2d& b = c[(i + 1) % 4];
        sum += a.x * b.y - b.x * a.y;
    }
    return sum;
}

bool isPlausibleQuad(const std::array<cv::Point2d, 4>& c) {
    const double orientation = signedArea2(c) > 0.0 ? 1.0 : -1.0;
    double shortest = 1e300, longest = 0.0;
    const double maxCos = std::cos((90.0 - kMaxCornerSkewDeg) * CV_PI / 180.0);
    for (int i = 0; i < 4; ++i) {
        const cv::Point2d in = c[i] - c[(i + 3) % 4];
        const cv::Point2d out = c[(i + 1) % 4] - c[i];
        const double lenIn = cv::norm(in), lenOut = cv::norm(out);
        shortest = std::min(shortest, lenOut);
        longest = std::max(longest, lenOut);
        if (!(lenIn > 0.0) || !(lenOut > 0.0)) {
            return false;
        }
        // Convex: every turn the same way.
        if (orientation * (in.x * out.y - in.y * out.x) <= 0.0) {
            return false;
        }
        if (std::abs(in.dot(out)) / (lenIn * lenOut) > maxCos) {
            return false;
        }
    }
    return shortest >= kMinQuadSide && longest <= kMaxQuadAspect * shortest;
}

}  // namespace detect
}  // namespace talonvireo
