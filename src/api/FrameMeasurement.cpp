// The thirteen whole-frame measurement members: each one row of choices for the shared body.
#include "talonvireo/FrameMeasurement.h"

#include "api/LocateRecipes.h"
#include "api/MeasurementPipeline.h"
#include "talonvireo/ProjectLocate.h"

namespace talonvireo {

namespace {
using api::GreyRoad;
using api::LocatePair;
using api::measureFrame;
using api::RegionRule;
using convert::WordDepth;

using K31Pair = LocatePair<K31R22BX::Param, K31R22BX::Result, 34>;
using K74Pair = LocatePair<K74T16BX::Param, K74T16BX::Result, 26>;
using K83Pair = LocatePair<K83P09BQ::Param, K83P09BQ::Result, 26>;

// Both locators of a member on images prepared once per frame.
template <class Pair, class First, class Second>
constexpr Pair pairOf() {
    using P = typename Pair::Param;
    using R = typename Pair::Result;
    static_assert(First::kScale == Second::kScale, "one downscaled image serves both");
    return {&First::template onImages<P, R>, &Second::template onImages<P, R>, First::kScale};
}

constexpr K31Pair kK31R22BX = pairOf<K31Pair, api::K31R22BXFirst, api::K31R22BXSecond>();
constexpr K74Pair kK74T16BX = pairOf<K74Pair, api::K74T16BXFirst, api::K74T16BXSecond>();
constexpr K74Pair kMap8k = pairOf<K74Pair, api::Map8kFirst, api::Map8kSecond>();
constexpr K74Pair kHlx6c = pairOf<K74Pair, api::Hlx6cFirst, api::Hlx6cSecond>();
constexpr K74Pair kHlx6c8k = pairOf<K74Pair, api::Hlx6c8kFirst, api::Hlx6c8kSecond>();
constexpr K83Pair kK83P09BQ = pairOf<K83Pair, api::K83P09BQFirst, api::K83P09BQSecond>();

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
