// Measures a slanted edge drawn here, through the installed headers and library only.
#include <talonvireo/talonVireoSFR.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

int main() {
    // 100 x 100, 5 degrees, blurred by a Gaussian of 1 px: levels 40 -> 200.
    const int n = 100;
    std::vector<unsigned char> pixels(n * n);
    const double slope = std::tan(5.0 * 3.14159265358979 / 180.0);
    for (int r = 0; r < n; ++r) {
        for (int c = 0; c < n; ++c) {
            const double d = (c - 49.5 - slope * (r - 49.5)) * std::cos(std::atan(slope));
            const double v = 40.0 + 160.0 * 0.5 * std::erfc(-d / std::sqrt(2.0));
            pixels[r * n + c] = static_cast<unsigned char>(std::lround(v));
        }
    }
    tagSFRResult figures{};
    const int status = TalonCalSFR(pixels.data(), n, n, talonvireo::PixelFormat::Grey8, figures);
    talonvireo::SfrCurve curve;
    const int curveStatus =
        talonvireo::measureSfrCurve(pixels.data(), n, n, talonvireo::PixelFormat::Grey8, {}, curve);
    std::printf("status %d, SFR at Nyquist/4 %.4f, MTF50 %.4f; curve status %d, %zu entries\n",
                status, figures.sfrQuarterNyquist[0], figures.mtf50[0], curveStatus,
                curve.channels.empty() ? 0 : curve.channels[0].sfr.size());
    // A raw frame held as 16-bit words goes in as it is (a blank frame: no chart found).
    const std::vector<std::uint16_t> raw16(640 * 480, 0);
    const talonvireo::SFRParam param{4.0f, 40, 100};
    talonvireo::SFRResult_HLX5 record{};
    const int frameStatus =
        talonvireo::talonvireoSFR_raw10_HLX6C(raw16.data(), 640, 480, param, record);
    std::printf("blank 640 x 480 frame: status %d\n", frameStatus);
    return status == 0 && curveStatus == 0 && figures.sfrQuarterNyquist[0] > 0.5 &&
                   frameStatus == -2
               ? 0
               : 1;
}
