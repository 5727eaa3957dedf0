// The twelve locate functions: six exported under their project's name, six internal.
#include "talonvireo/ProjectLocate.h"

#include "api/InternalLocate.h"
#include "api/LocateEntry.h"
#include "locate/SFRLocate_HLX6C.h"
#include "locate/SFRLocate_LX.h"
#include "locate/SFRLocate_LX_17QD.h"
#include "locate/SFRLocate_LX_MAP.h"
#include "locate/SFRLocate_LX_MAP_8K.h"

namespace {
constexpr double kHalf = 0.5;
constexpr double kQuarter = 0.25;
}  // namespace

namespace K31R22BX {

int SFRLocate_K31R22BX(unsigned char* img, int width, int height, Param param, Result& result) {
    return talonvireo::api::locateEntry<RegularSFR::SFRLocate_LX>(
        img, width, height, param.markSearchSize, kHalf, &talonvireo::api::kK31R22BXOrder, result);
}

int SFRLocate_K31R22BX_2(unsigned char* img, int width, int height, Param param, Result& result) {
    return talonvireo::api::locateEntry<RegularSFR::SFRLocate_LX2>(
        img, width, height, param.markSearchSize, kHalf, &talonvireo::api::kK31R22BX2Order, result);
}

}  // namespace K31R22BX

namespace K74T16BX {

int SFRLocate_K74T16BX(unsigned char* img, int width, int height, Param param, Result& result) {
    return talonvireo::api::locateEntry<RegularSFR::SFRLocate_LX_MAP>(
        img, width, height, param.markSearchSize, kHalf, nullptr, result);
}

int SFRLocate_K74T16BX_2(unsigned char* img, int width, int height, Param param, Result& result) {
    return talonvireo::api::locateEntry<RegularSFR::SFRLocate_LX_MAP2>(
        img, width, height, param.markSearchSize, kHalf, nullptr, result);
}

}  // namespace K74T16BX

namespace K83P09BQ {

int SFRLocate_K83P09BQ(unsigned char* img, int width, int height, Param param, Result& result) {
    return talonvireo::api::locateEntry<RegularSFR::SFRLocate_LX_17QD>(
        img, width, height, param.markSearchSize, kHalf, nullptr, result);
}

int SFRLocate_K83P09BQ_2(unsigned char* img, int width, int height, Param param, Result& result) {
    return talonvireo::api::locateEntry<RegularSFR::SFRLocate_LX_17QD2>(
        img, width, height, param.markSearchSize, kHalf, nullptr, result);
}

}  // namespace K83P09BQ

namespace talonvireo {
namespace api {

int locateMap8k(unsigned char* img, int width, int height, K74T16BX::Param param,
                K74T16BX::Result& result) {
    return locateEntry<RegularSFR::SFRLocate_LX_MAP_8K>(img, width, height, param.markSearchSize,
                                                        kQuarter, nullptr, result);
}

int locateMap8k2(unsigned char* img, int width, int height, K74T16BX::Param param,
                 K74T16BX::Result& result) {
    return locateEntry<RegularSFR::SFRLocate_LX_MAP2_8K>(img, width, height, param.markSearchSize,
                                                         kQuarter, nullptr, result);
}

int locateHlx6c(unsigned char* img, int width, int height, K74T16BX::Param param,
                K74T16BX::Result& result) {
    return locateEntry<RegularSFR::SFRLocate_HLX6C>(img, width, height, param.markSearchSize, kHalf,
                                                    nullptr, result);
}

int locateHlx6c2(unsigned char* img, int width, int height, K74T16BX::Param param,
                 K74T16BX::Result& result) {
    return locateEntry<RegularSFR::SFRLocate_HLX6C_2>(img, width, height, param.markSearchSize,
                                                      kHalf, nullptr, result);
}

int locateHlx6c8k(unsigned char* img, int width, int height, K74T16BX::Param param,
                  K74T16BX::Result& result) {
    return locateEntry<RegularSFR::SFRLocate_HLX6C>(img, width, height, param.markSearchSize,
                                                    kQuarter, nullptr, result);
}

int locateHlx6c8k2(unsigned char* img, int width, int height, K74T16BX::Param param,
                   K74T16BX::Result& result) {
    return locateEntry<RegularSFR::SFRLocate_HLX6C_2>(img, width, height, param.markSearchSize,
                                                      kQuarter, nullptr, result);
}

}  // namespace api
}  // namespace talonvireo
