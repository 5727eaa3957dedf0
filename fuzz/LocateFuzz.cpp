// The six exported locate functions and locateMemberEdges on small fuzzed grey frames, ring
// sizes and charts: status 0 or -1 (the slot count or -1), and -1 leaves the caller's result
// as it was; every slot of a count holds a centre or NaN, NaN.
#include <cstdint>
#include <cstring>
#include <vector>

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
// One of the six charts (or an unknown one), with a capacity that may fall short.
void runMemberEdges(const unsigned char* img, int width, int height, int mark, int chart,
                    int capacity) {
    std::vector<talonvireo::EdgeCentre> centres(68, talonvireo::EdgeCentre{-3.0f, -3.0f});
    const int count = talonvireo::locateMemberEdges(img, width, height,
                                                    static_cast<talonvireo::MemberChart>(chart),
                                                    mark, centres.data(), capacity);
    contract(count == -1 || count == 52 || count == 68);
    contract(count <= capacity);
    for (int i = 0; i < 68; ++i) {
        const talonvireo::EdgeCentre& c = centres[static_cast<std::size_t>(i)];
        if (i >= count) {
            contract(c.x == -3.0f && c.y == -3.0f);  // nothing written past the count
        } else {
            contract((c.x == c.x) == (c.y == c.y));  // both NaN or neither
        }
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const int which = in.take<std::uint8_t>() % 7;
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
        case 5:
            run(K83P09BQ::SFRLocate_K83P09BQ_2, img, width, height, mark);
            break;
        default:
            runMemberEdges(img, width, height, mark, (flags >> 1) % 8 - 1,
                           (flags & 0x10) ? 52 + (flags >> 5) % 17 : 68);
            break;
    }
    return 0;
}
