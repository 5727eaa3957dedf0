// Every member's result record, byte for byte, against records kept from an earlier build on
// the same rendered frames: speed work must not move a single bit. The frames are turned,
// shifted and noisy so that ties, rounding and the roads' clamps all show up in the records.
//
// To record the fixtures anew (only when a figure is meant to change), run this test with
// TALONVIREO_WRITE_RECORDS set to a file; it writes one line per member there instead of
// comparing.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "ChartFrames.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;
using render::ChartProject;

struct RecordCase {
    std::string name;
    ChartProject project;
    int bits;
    int width;
    int height;
    // The member's record, as bytes, measured on a frame; empty when the call failed.
    std::function<std::string(cv::Mat&, int, int)> measure;
};

template <class Record>
std::function<std::string(cv::Mat&, int, int)> recordOf(int (*member)(unsigned char*, int, int,
                                                                      const SFRParam&, Record&)) {
    return [member](cv::Mat& raw, int width, int height) {
        SFRParam param{4.0f, 80, 100};
        Record record{};
        if (member(raw.data, width, height, param, record) != 0) {
            return std::string();
        }
        return std::string(reinterpret_cast<const char*>(&record), sizeof(Record));
    };
}

std::string hex(const std::string& bytes) {
    std::string out;
    char two[3];
    for (unsigned char b : bytes) {
        std::snprintf(two, sizeof two, "%02x", b);
        out += two;
    }
    return out;
}

std::vector<RecordCase> recordCases() {
    using P = ChartProject;
    return {
        {"talonvireoSFR_K31R22BX", P::K31R22BX, 10, 4000, 3000,
         recordOf<SFRResult>(&talonvireoSFR)},
        {"talonvireoSFR_K74T16BX", P::K74T16BX, 10, 4000, 3000,
         recordOf<SFRResult_HLX5>(&talonvireoSFR)},
        {"talonvireoSFR_raw14_K31R22BX", P::K31R22BX, 14, 4000, 3000,
         recordOf<SFRResult>(&talonvireoSFR_raw14)},
        {"talonvireoSFR_raw14_K74T16BX", P::K74T16BX, 14, 4000, 3000,
         recordOf<SFRResult_HLX5>(&talonvireoSFR_raw14)},
        {"talonvireoSFR_raw16", P::K74T16BX, 16, 4000, 3000,
         recordOf<SFRResult_HLX5>(&talonvireoSFR_raw16)},
        {"talonvireoSFR_raw16_HLX5_8K", P::K74T16BX, 16, 7680, 4320,
         recordOf<SFRResult_HLX5>(&talonvireoSFR_raw16_HLX5_8K)},
        {"talonvireoSFR_raw10_HLX6C", P::HLX6C, 10, 4000, 3000,
         recordOf<SFRResult_HLX5>(&talonvireoSFR_raw10_HLX6C)},
        {"talonvireoSFR_raw14_HLX6C", P::HLX6C, 14, 4000, 3000,
         recordOf<SFRResult_HLX5>(&talonvireoSFR_raw14_HLX6C)},
        {"talonvireoSFR_raw16_HLX6C", P::HLX6C, 16, 4000, 3000,
         recordOf<SFRResult_HLX5>(&talonvireoSFR_raw16_HLX6C)},
        {"talonvireoSFR_raw16_HLX6C_8K", P::HLX6C, 16, 7680, 4320,
         recordOf<SFRResult_HLX5>(&talonvireoSFR_raw16_HLX6C_8K)},
        {"talonvireoSFR_raw10_RQ8", P::K83P09BQ, 10, 4000, 3000,
         recordOf<SFRResult_HLX5>(&talonvireoSFR_raw10_RQ8)},
        {"talonvireoSFR_raw14_RQ8", P::K83P09BQ, 14, 4000, 3000,
         recordOf<SFRResult_HLX5>(&talonvireoSFR_raw14_RQ8)},
        {"talonvireoSFR_raw16_RQ8", P::K83P09BQ, 16, 4000, 3000,
         recordOf<SFRResult_HLX5>(&talonvireoSFR_raw16_RQ8)},
    };
}

// name -> hex record, from the fixture file.
std::map<std::string, std::string> fixtures() {
    std::map<std::string, std::string> records;
    std::ifstream in(TALONVIREO_RECORD_FIXTURES);
    std::string line;
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        std::string name;
        std::string bytes;
        if (fields >> name >> bytes) {
            records[name] = bytes;
        }
    }
    return records;
}

class MemberRecords : public ::testing::TestWithParam<RecordCase> {};

void PrintTo(const RecordCase& c, std::ostream* os) {
    *os << c.name;
}

TEST_P(MemberRecords, AreByteIdenticalToTheRecordedOnes) {
    const RecordCase& c = GetParam();
    render::ChartTransform placement;
    placement.shiftX = 13.0;
    placement.shiftY = -9.0;
    placement.rotationDeg = 0.6;
    // Noise of about two 8-bit levels: the grey images differ from a clean frame everywhere.
    const double noise = 2.0 * (1 << (c.bits - 8));
    cv::Mat raw = talonvireo::testing::renderRawChart(c.project, c.bits, c.width, c.height,
                                                      placement, 0.9, noise, 7);
    const std::string record = c.measure(raw, c.width, c.height);
    ASSERT_FALSE(record.empty()) << "the member failed on its own chart";
    if (const char* path = std::getenv("TALONVIREO_WRITE_RECORDS")) {
        std::ofstream out(path, std::ios::app);
        out << c.name << ' ' << hex(record) << '\n';
        ASSERT_TRUE(out.good()) << "cannot write " << path;
        return;
    }
    const std::map<std::string, std::string> kept = fixtures();
    const auto it = kept.find(c.name);
    ASSERT_NE(it, kept.end()) << "no recorded record for " << c.name;
    EXPECT_EQ(hex(record), it->second);
}

INSTANTIATE_TEST_SUITE_P(EveryMember, MemberRecords, ::testing::ValuesIn(recordCases()),
                         [](const ::testing::TestParamInfo<RecordCase>& info) {
                             return info.param.name;
                         });

}  // namespace
