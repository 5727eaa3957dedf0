// TalonCalSFRS on fuzzed images, region counts and regions. Status 0 or -1 only; regions
// after the one that failed keep their records untouched.
#include <cstdint>
#include <cstring>
#include <vector>

#include "FuzzInput.h"
#include "sfr/RegionPreparation.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo::fuzz;
constexpr int kFormats[] = {0x100, 0x200, 0x400, 0x011, 0x021, 0x999};
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const int width = foldSize(in.take<std::int16_t>(), 128);
    const int height = foldSize(in.take<std::int16_t>(), 128);
    const int pick = in.take<std::uint8_t>() % static_cast<int>(std::size(kFormats));
    const int count = in.take<std::int8_t>() % 9;
    const auto flags = in.take<std::uint8_t>();
    std::vector<tagEdgeRoi> rois(count > 0 ? static_cast<std::size_t>(count) : 1);
    for (tagEdgeRoi& r : rois) {
        r.x = in.take<std::int16_t>();
        r.y = in.take<std::int16_t>();
        r.width = in.take<std::int16_t>();
        r.height = in.take<std::int16_t>();
        if (flags & 4) {  // now and then the extremes, for the bounds arithmetic
            r.x = INT32_MAX - (r.x & 0x7FFF);
            r.width = INT32_MAX;
        }
    }
    const std::size_t pixels =
        width > 0 && height > 0 ? static_cast<std::size_t>(width) * height : 0;
    const int bytes = talonvireo::sfr::bytesPerPixel(kFormats[pick]);
    std::vector<std::uint8_t> image = in.payload(pixels * (bytes > 0 ? bytes : 6) + 1);

    std::vector<tagSFRResult> results(rois.size());
    std::memset(results.data(), 0x5A, results.size() * sizeof(tagSFRResult));
    const std::vector<tagSFRResult> before = results;
    const int status =
        TalonCalSFRS((flags & 1) ? nullptr : image.data(), width, height, kFormats[pick], count,
                     (flags & 2) ? nullptr : rois.data(), results.data());
    contract(status == 0 || status == -1);
    // Records are written in order and the first failure ends the call: once one record is
    // untouched, every later one is too.
    bool untouchedSeen = false;
    for (std::size_t i = 0; i < results.size(); ++i) {
        const bool untouched = std::memcmp(&results[i], &before[i], sizeof(tagSFRResult)) == 0;
        contract(!(untouchedSeen && !untouched));
        untouchedSeen = untouchedSeen || untouched;
    }
    return 0;
}
