#include "TestRegions.h"

#include "render/RegionEncoding.h"

namespace talonvireo {
namespace testing {

cv::Mat renderGrey8(const render::SlantedEdgeScene& scene) {
    return render::quantise8(render::renderSlantedEdge(scene));
}

cv::Mat widen16(const cv::Mat& grey8) {
    cv::Mat out;
    grey8.convertTo(out, CV_16U, 256.0);
    return out;
}

Measurement measure(const cv::Mat& grey, int format, double divisor) {
    std::vector<unsigned char> bytes = render::encodeRegion(grey, format);
    Measurement m;
    m.result.nyquistDivisor = divisor;
    m.status = TalonCalSFR(bytes.data(), grey.cols, grey.rows, format, m.result);
    return m;
}

Measurement measureScene(const render::SlantedEdgeScene& scene, double divisor) {
    return measure(renderGrey8(scene), PixelFormat::Grey8, divisor);
}

render::SlantedEdgeScene edgeScene(double sigma, double angleDeg) {
    render::SlantedEdgeScene scene;
    scene.sigma = sigma;
    scene.angleDeg = angleDeg;
    return scene;
}

}  // namespace testing
}  // namespace talonvireo
