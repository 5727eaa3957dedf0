// The six exported locate functions on small fuzzed grey frames and ring sizes: status 0 or
// -1, and -1 leaves the caller's result as it was.
#include <cstdint>
#include <cstring>

#include "FuzzInput.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo::fuzz;

template <class Param, class Result>
void run(int (*locate)(unsigned char*, int, int, Param, Result&), unsigned char* img, int width,
         int height, int mark) {
    Result result;
    std::memset(&result, 0x5A, sizeof result);
    Result before;
    std::memcpy(&before, &result, sizeof result);
    const int status = locate(img, width, height, Param{mark}, result);
    contract(status == 0 || status == -1);
    if (status != 0) {
        contract(std::memcmp(&result, &before, sizeof result) == 0);
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const int which = in.take<std::uint8_t>() % 6;
    const int width = foldSize(in.take<std::int16_t>(), 320);
    const int height = foldSize(in.take<std::int16_t>(), 240);
    const int mark = in.take<std::int16_t>();
    const auto flags = in.take<std::uint8_t>();
    const std::size_t pixels =
        width > 0 && height > 0 ? static_cast<std::size_t>(width) * height : 0;
    std::vector<std::uint8_t> frame = in.payload(pixels + 1);
    unsigned char* img = (flags & 1) ? nullptr : frame.data();
    switch (which) {
        case 0:
            run(K31R22BX::SFRLocate_K31R22BX, img, width, height, mark);
            break;
        case 1:
            run(K31R22BX::SFRLocate_K31R22BX_2, img, width, height, mark);
            break;
        case 2:
            run(K74T16BX::SFRLocate_K74T16BX, img, width, height, mark);
            break;
        case 3:
            run(K74T16BX::SFRLocate_K74T16BX_2, img, width, height, mark);
            break;
        case 4:
            run(K83P09BQ::SFRLocate_K83P09BQ, img, width, height, mark);
            break;
        default:
            run(K83P09BQ::SFRLocate_K83P09BQ_2, img, width, height, mark);
            break;
    }
    return 0;
}
