// Whole-frame measurement: one raw frame of a slanted-edge chart in, every edge's centre and
// SFR out.
//
// Every member takes `img`, width x height 16-bit samples (rows packed, passed through a
// byte pointer) of a Bayer mosaic; the name tells how many bits are significant (no depth:
// 10). The frame is reduced to 8 bits, demosaiced to grey, the project's chart is located
// twice (its two layouts) and a square region round every edge centre is measured.
//
// Returns 0 when every edge was measured and `result` filled; -1 for a null image, a width x
// height of 0, a parameter failing validation (SFRParam) or any internal failure; -2 when the
// chart was not located or an edge region leaves the frame at the left or top; -3 when an
// edge region could not be measured. `result` is written only on success, in one block.
// Never throws; calls on different frames may run at once.
#pragma once

#include <cstdint>

#include "talonvireo/Export.h"
#include "talonvireo/MeasurementRecords.h"

namespace talonvireo {

// K31R22BX chart (68 edges) and K74T16BX chart (52 edges), 10-bit samples.
TALONVIREO_API int talonvireoSFR(unsigned char* img, int width, int height, const SFRParam& param,
                                 SFRResult& result);
TALONVIREO_API int talonvireoSFR(unsigned char* img, int width, int height, const SFRParam& param,
                                 SFRResult_HLX5& result);

// The same with 14-bit samples.
TALONVIREO_API int talonvireoSFR_raw14(unsigned char* img, int width, int height,
                                       const SFRParam& param, SFRResult& result);
TALONVIREO_API int talonvireoSFR_raw14(unsigned char* img, int width, int height,
                                       const SFRParam& param, SFRResult_HLX5& result);

// K74T16BX chart, 16-bit samples; and on 8K frames (quarter working scale).
TALONVIREO_API int talonvireoSFR_raw16(unsigned char* img, int width, int height,
                                       const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw16_HLX5_8K(unsigned char* img, int width, int height,
                                               const SFRParam& param, SFRResult_HLX5& result);

// HLX6C chart. The second layout's 26 regions are always 90 x 90, whatever roiSize says.
TALONVIREO_API int talonvireoSFR_raw10_HLX6C(unsigned char* img, int width, int height,
                                             const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw14_HLX6C(unsigned char* img, int width, int height,
                                             const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw16_HLX6C(unsigned char* img, int width, int height,
                                             const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw16_HLX6C_8K(unsigned char* img, int width, int height,
                                                const SFRParam& param, SFRResult_HLX5& result);

// K83P09BQ chart. Every region is 90 x 90: these members write 90 into the caller's
// param.roiSize before anything else (it stays 90, also after a failing call) and require
// 90 <= markSearchSize <= width / 2.
TALONVIREO_API int talonvireoSFR_raw10_RQ8(unsigned char* img, int width, int height,
                                           const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw14_RQ8(unsigned char* img, int width, int height,
                                           const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw16_RQ8(unsigned char* img, int width, int height,
                                           const SFRParam& param, SFRResult_HLX5& result);

// Every member once more for a frame held as 16-bit words: the same call, the same results,
// through a read-only pointer of the samples' own type (the members never write the frame).
TALONVIREO_API int talonvireoSFR(const std::uint16_t* raw, int width, int height,
                                 const SFRParam& param, SFRResult& result);
TALONVIREO_API int talonvireoSFR(const std::uint16_t* raw, int width, int height,
                                 const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw14(const std::uint16_t* raw, int width, int height,
                                       const SFRParam& param, SFRResult& result);
TALONVIREO_API int talonvireoSFR_raw14(const std::uint16_t* raw, int width, int height,
                                       const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw16(const std::uint16_t* raw, int width, int height,
                                       const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw16_HLX5_8K(const std::uint16_t* raw, int width, int height,
                                               const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw10_HLX6C(const std::uint16_t* raw, int width, int height,
                                             const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw14_HLX6C(const std::uint16_t* raw, int width, int height,
                                             const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw16_HLX6C(const std::uint16_t* raw, int width, int height,
                                             const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw16_HLX6C_8K(const std::uint16_t* raw, int width, int height,
                                                const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw10_RQ8(const std::uint16_t* raw, int width, int height,
                                           const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw14_RQ8(const std::uint16_t* raw, int width, int height,
                                           const SFRParam& param, SFRResult_HLX5& result);
TALONVIREO_API int talonvireoSFR_raw16_RQ8(const std::uint16_t* raw, int width, int height,
                                           const SFRParam& param, SFRResult_HLX5& result);

}  // namespace talonvireo
