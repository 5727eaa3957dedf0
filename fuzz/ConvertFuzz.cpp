// The raw converters, the Malvar demosaic and the toolbox's mosaic-to-grey operation on
// fuzzed sizes, codes and samples. A refused demosaic writes nothing.
#include <cstdint>
#include <cstring>
#include <exception>
#include <vector>

#include <opencv2/core.hpp>

#include "FuzzInput.h"
#include "convert/Demosaic.h"
#include "convert/ImageTransform.h"
#include "convert/RawUnpack.h"

namespace {
using namespace talonvireo;
using namespace talonvireo::fuzz;
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const int op = in.take<std::uint8_t>() % 6;
    const int width = foldSize(in.take<std::int16_t>(), 200);
    const int height = foldSize(in.take<std::int16_t>(), 200);
    const int format = in.take<std::uint16_t>() & 0xFFF;
    const int mode = in.take<std::uint8_t>() % 8;
    const std::size_t pixels =
        width > 0 && height > 0 ? static_cast<std::size_t>(width) * height : 0;
    std::vector<std::uint8_t> src = in.payload(2 * pixels + 2);  // enough for 16-bit samples
    std::vector<std::uint8_t> dst(6 * pixels + 2, 0xA5);         // enough for 16-bit RGB
    const std::vector<std::uint8_t> untouched = dst;
    const auto* words = reinterpret_cast<const unsigned short*>(src.data());

    if (op <= 2 && pixels > 0) {
        const convert::RawConverter unpack[] = {convert::unpackRaw10, convert::unpackRaw14,
                                                convert::unpackRaw16};
        unpack[op](words, dst.data(), cv::Size(width, height));
        contract(dst[pixels] == 0xA5);  // nothing past the frame
        return 0;
    }
    try {
        if (op == 3 || op == 4) {
            const int status =
                op == 3 ? convert::demosaicToGrey(src.data(), width, height, format, dst.data())
                        : convert::demosaicBordered(src.data(), width, height, format, dst.data());
            contract(status == 0 || status == -1);
            if (status != 0) {
                contract(dst == untouched);
            }
            return 0;
        }
        libs::TalonUtil::ImageTransform transform;
        transform.mosaicToGrey(src.data(), dst.data(), width, height, mode);
        contract(dst[pixels] == 0xA5 || pixels == 0);
    } catch (const cv::Exception&) {
        // A phase field other than 1, 2, 4, 8 is refused by OpenCV, by design.
    }
    return 0;
}
