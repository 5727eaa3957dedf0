// The locate functions without an exported name, for the 8K and HLX6C members: same
// signature and body as the project ones (the K74T16BX records, which all projects share in
// layout), other layouts and scales.
#pragma once

#include "talonvireo/ProjectLocate.h"

namespace talonvireo {
namespace api {

// SFRLocate_LX_MAP_8K / SFRLocate_LX_MAP2_8K at quarter scale.
int locateMap8k(unsigned char* img, int width, int height, K74T16BX::Param param,
                K74T16BX::Result& result);
int locateMap8k2(unsigned char* img, int width, int height, K74T16BX::Param param,
                 K74T16BX::Result& result);
// SFRLocate_HLX6C / SFRLocate_HLX6C_2 at half scale.
int locateHlx6c(unsigned char* img, int width, int height, K74T16BX::Param param,
                K74T16BX::Result& result);
int locateHlx6c2(unsigned char* img, int width, int height, K74T16BX::Param param,
                 K74T16BX::Result& result);
// The same HLX6C layouts at quarter scale, for 8K frames.
int locateHlx6c8k(unsigned char* img, int width, int height, K74T16BX::Param param,
                  K74T16BX::Result& result);
int locateHlx6c8k2(unsigned char* img, int width, int height, K74T16BX::Param param,
                   K74T16BX::Result& result);

}  // namespace api
}  // namespace talonvireo
