// The thirteen whole-frame measurement members: each applies its row of the member table.
#include "talonvireo/FrameMeasurement.h"

#include <cstdint>
#include <cstring>
#include <exception>
#include <vector>

#include "api/MemberPass.h"

namespace talonvireo {

namespace {
// Rows of the member table, in its order.
enum Row {
    kFull10,
    kHlx5At10,
    kFull14,
    kHlx5At14,
    kRaw16,
    kRaw16Map8k,
    kHlx6c10,
    kHlx6c14,
    kHlx6c16,
    kHlx6c16At8k,
    kRq8At10,
    kRq8At14,
    kRq8At16,
};

constexpr int kForcedRegion = 90;

// 0, or -1 (input, parameters, any exception), -2 (not located, region off the left or top),
// -3 (a region not measured). `result` is written once, at the end, and only on success.
template <class Record>
int measureWithRow(Row row, unsigned char* img, int width, int height, const SFRParam& param,
                   Record& result) {
    const MemberInfo& member = memberTable().rows[row];
    try {
        if (member.regionRule == RegionRule::kForced90) {
            // The caller's record changes, const or not: these members have always told
            // the caller the region size they used this way.
            const_cast<SFRParam&>(param).roiSize = kForcedRegion;
        }
        if (img == nullptr || static_cast<std::int64_t>(width) * height == 0) {
            return -1;
        }
        const cv::Mat raw(height, width, CV_16UC1, img);  // borrowed; negative sizes throw
        std::vector<SFREdgeResult> entries;
        const int status = api::runMember(member, raw, param, entries);
        if (status != 0) {
            return status;
        }
        static_assert(sizeof(SFREdgeResult) * 68 == sizeof(SFRResult), "68 entries");
        static_assert(sizeof(SFREdgeResult) * 52 == sizeof(SFRResult_HLX5), "52 entries");
        if (entries.size() * sizeof(SFREdgeResult) != sizeof(Record)) {
            return -1;
        }
        std::memcpy(&result, entries.data(), sizeof(Record));
        return 0;
    } catch (const std::exception&) {
        return -1;
    }
}
}  // namespace

int talonvireoSFR(unsigned char* img, int width, int height, const SFRParam& param,
                  SFRResult& result) {
    return measureWithRow(kFull10, img, width, height, param, result);
}

int talonvireoSFR(unsigned char* img, int width, int height, const SFRParam& param,
                  SFRResult_HLX5& result) {
    return measureWithRow(kHlx5At10, img, width, height, param, result);
}

int talonvireoSFR_raw14(unsigned char* img, int width, int height, const SFRParam& param,
                        SFRResult& result) {
    return measureWithRow(kFull14, img, width, height, param, result);
}

int talonvireoSFR_raw14(unsigned char* img, int width, int height, const SFRParam& param,
                        SFRResult_HLX5& result) {
    return measureWithRow(kHlx5At14, img, width, height, param, result);
}

int talonvireoSFR_raw16(unsigned char* img, int width, int height, const SFRParam& param,
                        SFRResult_HLX5& result) {
    return measureWithRow(kRaw16, img, width, height, param, result);
}

int talonvireoSFR_raw16_HLX5_8K(unsigned char* img, int width, int height, const SFRParam& param,
                                SFRResult_HLX5& result) {
    return measureWithRow(kRaw16Map8k, img, width, height, param, result);
}

int talonvireoSFR_raw10_HLX6C(unsigned char* img, int width, int height, const SFRParam& param,
                              SFRResult_HLX5& result) {
    return measureWithRow(kHlx6c10, img, width, height, param, result);
}

int talonvireoSFR_raw14_HLX6C(unsigned char* img, int width, int height, const SFRParam& param,
                              SFRResult_HLX5& result) {
    return measureWithRow(kHlx6c14, img, width, height, param, result);
}

int talonvireoSFR_raw16_HLX6C(unsigned char* img, int width, int height, const SFRParam& param,
                              SFRResult_HLX5& result) {
    return measureWithRow(kHlx6c16, img, width, height, param, result);
}

int talonvireoSFR_raw16_HLX6C_8K(unsigned char* img, int width, int height, const SFRParam& param,
                                 SFRResult_HLX5& result) {
    return measureWithRow(kHlx6c16At8k, img, width, height, param, result);
}

int talonvireoSFR_raw10_RQ8(unsigned char* img, int width, int height, const SFRParam& param,
                            SFRResult_HLX5& result) {
    return measureWithRow(kRq8At10, img, width, height, param, result);
}

int talonvireoSFR_raw14_RQ8(unsigned char* img, int width, int height, const SFRParam& param,
                            SFRResult_HLX5& result) {
    return measureWithRow(kRq8At14, img, width, height, param, result);
}

int talonvireoSFR_raw16_RQ8(unsigned char* img, int width, int height, const SFRParam& param,
                            SFRResult_HLX5& result) {
    return measureWithRow(kRq8At16, img, width, height, param, result);
}

}  // namespace talonvireo
