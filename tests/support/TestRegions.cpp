#include "TestRegions.h"

#include <stdexcept>

#include <opencv2/imgproc.hpp>

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

int expectedBayerToGreyCode(int phase) {
    switch (phase) {
        case PixelFormat::PhaseRG:
            return cv::COLOR_BayerRG2GRAY;
        case PixelFormat::PhaseGR:
            return cv::COLOR_BayerGR2GRAY;
        case PixelFormat::PhaseGB:
            return cv::COLOR_BayerGB2GRAY;
        case PixelFormat::PhaseBG:
            return cv::COLOR_BayerBG2GRAY;
        default:
            throw std::invalid_argument("not a Bayer phase");
    }
}

render::SlantedEdgeScene edgeScene(double sigma, double angleDeg) {
    render::SlantedEdgeScene scene;
    scene.sigma = sigma;
    scene.angleDeg = angleDeg;
    return scene;
}

}  // namespace testing
}  // namespace talonvireo
