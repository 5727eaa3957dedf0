// TalonCalSFR and measureSfrCurve (classic or precise, per raw plane or not) on fuzzed sizes,
// formats and pixels. They must agree on the status (the precise method may also find no
// spectrum in a tiny region; the raw planes may refuse an edge too near the grid, or a
// layout that is not a mosaic); a failed TalonCalSFR leaves every
// figure 0 and the divisor as it was; a failed measureSfrCurve leaves the curve alone.
#include <cstdint>
#include <cstring>

#include "FuzzInput.h"
#include "sfr/RegionPreparation.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo::fuzz;

constexpr int kFormats[] = {0x100, 0x200, 0x400, 0x800, 0x011, 0x012,
                            0x014, 0x018, 0x021, 0x042, 0x084};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const int width = foldSize(in.take<std::int16_t>(), 160);
    const int height = foldSize(in.take<std::int16_t>(), 160);
    const auto selector = in.take<std::uint16_t>();
    const int format = selector < 0x8000 ? kFormats[selector % std::size(kFormats)]
                                         : static_cast<int>(selector & 0xFFF);
    const auto flags = in.take<std::uint8_t>();
    const double divisor = (in.take<std::uint8_t>() - 64) / 8.0;
    const std::size_t pixels =
        width > 0 && height > 0 ? static_cast<std::size_t>(width) * height : 0;
    // An unknown layout gets a buffer large enough for any (6 bytes, 16-bit BGR).
    const int bytes = talonvireo::sfr::bytesPerPixel(format);
    std::vector<std::uint8_t> image = in.payload(pixels * (bytes > 0 ? bytes : 6) + 1);
    unsigned char* buffer = (flags & 1) ? nullptr : image.data();

    tagSFRResult result;
    std::memset(&result, 0x5A, sizeof result);
    result.nyquistDivisor = divisor;
    const int status = TalonCalSFR(buffer, width, height, format, result);
    contract(status >= -4 && status <= 0);
    contract(std::memcmp(&result.nyquistDivisor, &divisor, sizeof divisor) == 0);
    if (status != 0) {
        tagSFRResult cleared{};
        cleared.nyquistDivisor = divisor;
        contract(std::memcmp(&result, &cleared, sizeof result) == 0);
    }

    talonvireo::SfrCurveOptions options;
    options.frequencies = {0.125, divisor, -1.0};
    options.normalFrequencyAxis = (flags & 2) != 0;
    options.method =
        (flags & 4) != 0 ? talonvireo::SfrMethod::kPrecise : talonvireo::SfrMethod::kClassic;
    options.perChannelRaw = (flags & 8) != 0;
    talonvireo::SfrCurve curve;
    curve.channels.resize(7);
    const int curveStatus =
        talonvireo::measureSfrCurve(buffer, width, height, format, options, curve);
    const bool precise = options.method == talonvireo::SfrMethod::kPrecise;
    if (!options.perChannelRaw) {
        // Both methods refuse the same regions; only a region too small to give the precise
        // one a line spread may be refused by it alone, as having no spectrum.
        contract(curveStatus == status || (precise && status == 0 && curveStatus == -2));
    } else {
        const int layout = format & 0xFF0;
        const bool mosaic =
            layout == 0x010 || layout == 0x020 || layout == 0x040 || layout == 0x080;
        const bool usable = mosaic && precise;
        contract(usable ? (curveStatus == status ||
                           (status == 0 && (curveStatus == -4 || curveStatus == -2)))
                        : curveStatus == -1);
    }
    contract(curveStatus != 0 || curve.channels.size() == (options.perChannelRaw ? 4u : 1u) ||
             curve.channels.size() == 3u);
    contract(curveStatus == 0 || curve.channels.size() == 7);
    return 0;
}
