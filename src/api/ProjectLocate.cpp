// The twelve locate functions: six exported under their project's name, six internal.
#include "talonvireo/ProjectLocate.h"

#include "api/InternalLocate.h"
#include "api/LocateRecipes.h"

namespace K31R22BX {

int SFRLocate_K31R22BX(unsigned char* img, int width, int height, Param param, Result& result) {
    return talonvireo::api::K31R22BXFirst::onFrame(img, width, height, param, result);
}

int SFRLocate_K31R22BX_2(unsigned char* img, int width, int height, Param param, Result& result) {
    return talonvireo::api::K31R22BXSecond::onFrame(img, width, height, param, result);
}

}  // namespace K31R22BX

namespace K74T16BX {

int SFRLocate_K74T16BX(unsigned char* img, int width, int height, Param param, Result& result) {
    return talonvireo::api::K74T16BXFirst::onFrame(img, width, height, param, result);
}

int SFRLocate_K74T16BX_2(unsigned char* img, int width, int height, Param param, Result& result) {
    return talonvireo::api::K74T16BXSecond::onFrame(img, width, height, param, result);
}

}  // namespace K74T16BX

namespace K83P09BQ {

int SFRLocate_K83P09BQ(unsigned char* img, int width, int height, Param param, Result& result) {
    return talonvireo::api::K83P09BQFirst::onFrame(img, width, height, param, result);
}

int SFRLocate_K83P09BQ_2(unsigned char* img, int width, int height, Param param, Result& result) {
    return talonvireo::api::K83P09BQSecond::onFrame(img, width, height, param, result);
}

}  // namespace K83P09BQ

namespace talonvireo {
namespace api {

int locateMap8k(unsigned char* img, int width, int height, K74T16BX::Param param,
                K74T16BX::Result& result) {
    return Map8kFirst::onFrame(img, width, height, param, result);
}

int locateMap8k2(unsigned char* img, int width, int height, K74T16BX::Param param,
                 K74T16BX::Result& result) {
    return Map8kSecond::onFrame(img, width, height, param, result);
}

int locateHlx6c(unsigned char* img, int width, int height, K74T16BX::Param param,
                K74T16BX::Result& result) {
    return Hlx6cFirst::onFrame(img, width, height, param, result);
}

int locateHlx6c2(unsigned char* img, int width, int height, K74T16BX::Param param,
                 K74T16BX::Result& result) {
    return Hlx6cSecond::onFrame(img, width, height, param, result);
}

int locateHlx6c8k(unsigned char* img, int width, int height, K74T16BX::Param param,
                  K74T16BX::Result& result) {
    return Hlx6c8kFirst::onFrame(img, width, height, param, result);
}

int locateHlx6c8k2(unsigned char* img, int width, int height, K74T16BX::Param param,
                   K74T16BX::Result& result) {
    return Hlx6c8kSecond::onFrame(img, width, height, param, result);
}

}  // namespace api
}  // namespace talonvireo
