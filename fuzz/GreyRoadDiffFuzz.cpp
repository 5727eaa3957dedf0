// Differential harness: the same fuzzed words through the fast roads to grey (on an
// instruction set the input picks) and through their plain per-pixel renditions. Any sample
// that differs, and any write past the frame, is a finding.
#include <cstdint>
#include <cstring>
#include <vector>

#include <hwy/targets.h>
#include <opencv2/core.hpp>

#include "FuzzInput.h"
#include "OracleRoads.h"
#include "convert/EdgeDirectedDemosaic.h"
#include "convert/GreyRoads.h"

namespace {
using namespace talonvireo;
using namespace talonvireo::fuzz;

constexpr int kBits[] = {10, 14, 16};
constexpr convert::WordDepth kDepths[] = {convert::WordDepth::k10, convert::WordDepth::k14,
                                          convert::WordDepth::k16};
constexpr convert::MosaicPhase kPhases[] = {convert::kPhaseRggb, convert::kPhaseGrbg,
                                            convert::kPhaseGbrg, convert::kPhaseBggr};
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const int choice = in.take<std::uint8_t>();
    const bool malvar = (choice & 1) != 0;
    const int depth = (choice >> 1) % 3;
    const int phase = (choice >> 3) & 3;
    const int targetPick = in.take<std::uint8_t>();
    const int width = 1 + (in.take<std::uint8_t>() % 160);
    const int height = 1 + (in.take<std::uint8_t>() % 72);
    const std::size_t pixels = static_cast<std::size_t>(width) * height;
    const std::vector<std::uint8_t> bytes = in.payload(2 * pixels);
    cv::Mat words(height, width, CV_16UC1);
    std::memcpy(words.data, bytes.data(), 2 * pixels);

    const std::vector<std::int64_t> targets = hwy::SupportedAndGeneratedTargets();
    hwy::SetSupportedTargetsForTest(targets[targetPick % targets.size()]);
    std::vector<std::uint8_t> fast(pixels + 64, 0xA5);
    const bool done =
        malvar ? convert::malvarRoadToGrey(words.ptr<std::uint16_t>(), width, height,
                                           kDepths[depth], phase, fast.data())
               : convert::edgeDirectedRoadToGrey(words.ptr<std::uint16_t>(), width, height,
                                                 kDepths[depth], kPhases[phase], fast.data());
    hwy::SetSupportedTargetsForTest(0);
    contract(done);
    for (std::size_t i = pixels; i < fast.size(); ++i) {
        contract(fast[i] == 0xA5);
    }
    const cv::Mat plain =
        malvar ? testing::oracleMalvarGrey(words, kBits[depth], phase)
               : testing::oracleEdgeDirectedGrey(words, kBits[depth], kPhases[phase].rowShift,
                                                 kPhases[phase].colShift);
    contract(std::memcmp(plain.data, fast.data(), pixels) == 0);
    return 0;
}
