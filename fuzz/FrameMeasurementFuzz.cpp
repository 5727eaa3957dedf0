// The thirteen whole-frame members on small fuzzed raw frames and parameters. Status 0, -1,
// -2 or -3; on failure the caller's record is byte for byte what it was; the RQ8 members
// leave roiSize at 90 whatever happened. The frame report of the same member row gives the
// member's own status, and its figures where the member measured.
#include <cstdint>
#include <cstring>

#include "FuzzInput.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;
using namespace talonvireo::fuzz;

template <class Record>
using Member = int (*)(unsigned char*, int, int, const SFRParam&, Record&);

thread_local int tRow = 0;  // the member table's row of the member under test

template <class Record>
void run(Member<Record> member, unsigned char* img, int width, int height, SFRParam param,
         bool rq8) {
    const SFRParam asked = param;
    Record result;
    std::memset(&result, 0x5A, sizeof result);
    Record before;
    std::memcpy(&before, &result, sizeof result);
    const int status = member(img, width, height, param, result);
    contract(status >= -3 && status <= 0);
    if (status != 0) {
        contract(std::memcmp(&result, &before, sizeof result) == 0);
    }
    contract(!rq8 || param.roiSize == 90);

    MemberFrameReport report;
    const int reported =
        measureMemberFrame(memberTable().rows[tRow], reinterpret_cast<const std::uint16_t*>(img),
                           width, height, asked, {}, report);
    contract(reported == 0 || reported == -1);
    contract(reported == -1 || report.memberStatus == status);
    if (reported == 0 && status == 0) {
        const SFREdgeResult* entries = reinterpret_cast<const SFREdgeResult*>(&result);
        for (std::size_t i = 0; i < report.slots.size(); ++i) {
            contract(report.slots[i].x == entries[i].x && report.slots[i].y == entries[i].y);
            contract(std::memcmp(&report.slots[i].sfrQuarterNyquist, &entries[i].sfrQuarterNyquist,
                                 sizeof(float)) == 0);
        }
    }

    // A tracker given the same frame twice: located once, then the member's record again from
    // the regions alone.
    MemberTracker tracker(memberTable().rows[tRow], asked);
    for (int frame = 0; frame < 2; ++frame) {
        MemberFrameReport tracked;
        const int t =
            tracker.measure(reinterpret_cast<const std::uint16_t*>(img), width, height, tracked);
        contract(t == reported);
        if (t == 0 && status == 0 && reported == 0) {
            contract(tracked.memberStatus == 0 && tracked.slots.size() == report.slots.size());
            for (std::size_t i = 0; i < tracked.slots.size(); ++i) {
                contract(tracked.slots[i].x == report.slots[i].x &&
                         tracked.slots[i].y == report.slots[i].y);
                contract(std::memcmp(&tracked.slots[i].sfrQuarterNyquist,
                                     &report.slots[i].sfrQuarterNyquist, sizeof(float)) == 0);
            }
        }
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const int which = in.take<std::uint8_t>() % 13;
    tRow = which;  // the switch below follows the member table's order
    const int width = foldSize(in.take<std::int16_t>(), 320);
    const int height = foldSize(in.take<std::int16_t>(), 240);
    SFRParam param;
    param.freqDivisor = in.take<float>();
    param.roiSize = in.take<std::int16_t>();
    param.markSearchSize = in.take<std::int16_t>();
    const auto flags = in.take<std::uint8_t>();
    const std::size_t pixels =
        width > 0 && height > 0 ? static_cast<std::size_t>(width) * height : 0;
    std::vector<std::uint8_t> words = in.payload(2 * pixels + 2);
    unsigned char* img = (flags & 1) ? nullptr : words.data();

    const Member<SFRResult> full10 = talonvireoSFR;
    const Member<SFRResult_HLX5> hlx10 = talonvireoSFR;
    const Member<SFRResult> full14 = talonvireoSFR_raw14;
    const Member<SFRResult_HLX5> hlx14 = talonvireoSFR_raw14;
    switch (which) {
        case 0:
            return run(full10, img, width, height, param, false), 0;
        case 1:
            return run(hlx10, img, width, height, param, false), 0;
        case 2:
            return run(full14, img, width, height, param, false), 0;
        case 3:
            return run(hlx14, img, width, height, param, false), 0;
        case 4:
            return run<SFRResult_HLX5>(talonvireoSFR_raw16, img, width, height, param, false), 0;
        case 5:
            return run<SFRResult_HLX5>(talonvireoSFR_raw16_HLX5_8K, img, width, height, param,
                                       false),
                   0;
        case 6:
            return run<SFRResult_HLX5>(talonvireoSFR_raw10_HLX6C, img, width, height, param, false),
                   0;
        case 7:
            return run<SFRResult_HLX5>(talonvireoSFR_raw14_HLX6C, img, width, height, param, false),
                   0;
        case 8:
            return run<SFRResult_HLX5>(talonvireoSFR_raw16_HLX6C, img, width, height, param, false),
                   0;
        case 9:
            return run<SFRResult_HLX5>(talonvireoSFR_raw16_HLX6C_8K, img, width, height, param,
                                       false),
                   0;
        case 10:
            return run<SFRResult_HLX5>(talonvireoSFR_raw10_RQ8, img, width, height, param, true), 0;
        case 11:
            return run<SFRResult_HLX5>(talonvireoSFR_raw14_RQ8, img, width, height, param, true), 0;
        default:
            return run<SFRResult_HLX5>(talonvireoSFR_raw16_RQ8, img, width, height, param, true), 0;
    }
}
