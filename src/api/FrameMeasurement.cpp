// The thirteen whole-frame measurement members: each one row of choices for the shared body.
#include "talonvireo/FrameMeasurement.h"

#include "api/MeasurementPipeline.h"
#include "api/MemberLocatePairs.h"

namespace talonvireo {

namespace {
using api::GreyRoad;
using api::measureFrame;
using api::RegionRule;
using convert::WordDepth;

constexpr auto& kK31R22BX = api::kK31R22BXPair;
constexpr auto& kK74T16BX = api::kK74T16BXPair;
constexpr auto& kMap8k = api::kMap8kPair;
constexpr auto& kHlx6c = api::kHlx6cPair;
constexpr auto& kHlx6c8k = api::kHlx6c8kPair;
constexpr auto& kK83P09BQ = api::kK83P09BQPair;

int measureRq8(unsigned char* img, int width, int height, const SFRParam& param,
               SFRResult_HLX5& result, WordDepth depth) {
    return measureFrame(depth, GreyRoad::kDemosaic17, kK83P09BQ, RegionRule::kForced90, img, width,
                        height, param, result);
}
}  // namespace

int talonvireoSFR(unsigned char* img, int width, int height, const SFRParam& param,
                  SFRResult& result) {
    return measureFrame(WordDepth::k10, GreyRoad::kImageTransform, kK31R22BX, RegionRule::kRoiSize,
                        img, width, height, param, result);
}

int talonvireoSFR(unsigned char* img, int width, int height, const SFRParam& param,
                  SFRResult_HLX5& result) {
    return measureFrame(WordDepth::k10, GreyRoad::kImageTransform, kK74T16BX, RegionRule::kRoiSize,
                        img, width, height, param, result);
}

int talonvireoSFR_raw14(unsigned char* img, int width, int height, const SFRParam& param,
                        SFRResult& result) {
    return measureFrame(WordDepth::k14, GreyRoad::kImageTransform, kK31R22BX, RegionRule::kRoiSize,
                        img, width, height, param, result);
}

int talonvireoSFR_raw14(unsigned char* img, int width, int height, const SFRParam& param,
                        SFRResult_HLX5& result) {
    return measureFrame(WordDepth::k14, GreyRoad::kImageTransform, kK74T16BX, RegionRule::kRoiSize,
                        img, width, height, param, result);
}

int talonvireoSFR_raw16(unsigned char* img, int width, int height, const SFRParam& param,
                        SFRResult_HLX5& result) {
    return measureFrame(WordDepth::k16, GreyRoad::kImageTransform, kK74T16BX, RegionRule::kRoiSize,
                        img, width, height, param, result);
}

int talonvireoSFR_raw16_HLX5_8K(unsigned char* img, int width, int height, const SFRParam& param,
                                SFRResult_HLX5& result) {
    return measureFrame(WordDepth::k16, GreyRoad::kImageTransform, kMap8k, RegionRule::kRoiSize,
                        img, width, height, param, result);
}

int talonvireoSFR_raw10_HLX6C(unsigned char* img, int width, int height, const SFRParam& param,
                              SFRResult_HLX5& result) {
    return measureFrame(WordDepth::k10, GreyRoad::kDemosaic17, kHlx6c, RegionRule::kFixedSecondSet,
                        img, width, height, param, result);
}

int talonvireoSFR_raw14_HLX6C(unsigned char* img, int width, int height, const SFRParam& param,
                              SFRResult_HLX5& result) {
    return measureFrame(WordDepth::k14, GreyRoad::kDemosaic17, kHlx6c, RegionRule::kFixedSecondSet,
                        img, width, height, param, result);
}

int talonvireoSFR_raw16_HLX6C(unsigned char* img, int width, int height, const SFRParam& param,
                              SFRResult_HLX5& result) {
    return measureFrame(WordDepth::k16, GreyRoad::kDemosaic17, kHlx6c, RegionRule::kFixedSecondSet,
                        img, width, height, param, result);
}

int talonvireoSFR_raw16_HLX6C_8K(unsigned char* img, int width, int height, const SFRParam& param,
                                 SFRResult_HLX5& result) {
    return measureFrame(WordDepth::k16, GreyRoad::kDemosaic17, kHlx6c8k,
                        RegionRule::kFixedSecondSet, img, width, height, param, result);
}

int talonvireoSFR_raw10_RQ8(unsigned char* img, int width, int height, const SFRParam& param,
                            SFRResult_HLX5& result) {
    return measureRq8(img, width, height, param, result, WordDepth::k10);
}

int talonvireoSFR_raw14_RQ8(unsigned char* img, int width, int height, const SFRParam& param,
                            SFRResult_HLX5& result) {
    return measureRq8(img, width, height, param, result, WordDepth::k14);
}

int talonvireoSFR_raw16_RQ8(unsigned char* img, int width, int height, const SFRParam& param,
                            SFRResult_HLX5& result) {
    return measureRq8(img, width, height, param, result, WordDepth::k16);
}

}  // namespace talonvireo
