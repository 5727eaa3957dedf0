// Project locate functions: find one chart layout in an 8-bit grey frame and return the
// centres of its edges in full-frame pixels.
//
// Each takes `img` (height rows of width bytes, packed), the frame size, a Param and a Result
// to fill. Returns 0 when the call ran (also when the chart was not found: the Result is then
// left as it was, so clear it first) and -1 for a null image, a width x height of 0 or any
// internal exception. The functions write one centre per located edge and nothing else; the
// Result has room for the largest layout (34 edges).
#pragma once

#include <cstdint>

#include "talonvireo/Export.h"

namespace K31R22BX {

struct Param {
    std::int32_t markSearchSize;  ///< chart mark length scale, pixels
};
static_assert(sizeof(Param) == 4, "Param is one int32");

struct Centre {
    float x;
    float y;
};

struct Result {
    Centre centres[34];
};
static_assert(sizeof(Result) == 34 * 8, "Result is 34 float pairs");

/// Layout SFRLocate_LX at half scale: 34 edge centres, placed in fixed slots by a reordering table.
TALONVIREO_API int SFRLocate_K31R22BX(unsigned char* img, int width, int height, Param param,
                                      Result& result);
/// Layout SFRLocate_LX2 at half scale: 34 edge centres, placed in fixed slots by a reordering
/// table.
TALONVIREO_API int SFRLocate_K31R22BX_2(unsigned char* img, int width, int height, Param param,
                                        Result& result);

}  // namespace K31R22BX

namespace K74T16BX {

struct Param {
    std::int32_t markSearchSize;  ///< chart mark length scale, pixels
};
static_assert(sizeof(Param) == 4, "Param is one int32");

struct Centre {
    float x;
    float y;
};

struct Result {
    Centre centres[34];
};
static_assert(sizeof(Result) == 34 * 8, "Result is 34 float pairs");

/// Layout SFRLocate_LX_MAP at half scale: 26 edge centres in the layout's order.
TALONVIREO_API int SFRLocate_K74T16BX(unsigned char* img, int width, int height, Param param,
                                      Result& result);
/// Layout SFRLocate_LX_MAP2 at half scale: 26 edge centres in the layout's order.
TALONVIREO_API int SFRLocate_K74T16BX_2(unsigned char* img, int width, int height, Param param,
                                        Result& result);

}  // namespace K74T16BX

namespace K83P09BQ {

struct Param {
    std::int32_t markSearchSize;  ///< chart mark length scale, pixels
};
static_assert(sizeof(Param) == 4, "Param is one int32");

struct Centre {
    float x;
    float y;
};

struct Result {
    Centre centres[34];
};
static_assert(sizeof(Result) == 34 * 8, "Result is 34 float pairs");

/// Layout SFRLocate_LX_17QD at half scale: 26 edge centres in the layout's order.
TALONVIREO_API int SFRLocate_K83P09BQ(unsigned char* img, int width, int height, Param param,
                                      Result& result);
/// Layout SFRLocate_LX_17QD2 at half scale: 26 edge centres in the layout's order.
TALONVIREO_API int SFRLocate_K83P09BQ_2(unsigned char* img, int width, int height, Param param,
                                        Result& result);

}  // namespace K83P09BQ
