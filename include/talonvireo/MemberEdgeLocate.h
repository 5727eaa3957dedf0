// Where the whole-frame members find the chart's edges, without measuring them: every record
// slot's edge centre, for callers who want to see why a frame failed (which edge was not found,
// which region leaves the frame) or to measure the regions themselves through TalonCalSFRS.
#pragma once

#include "talonvireo/Export.h"

namespace talonvireo {

/// The charts the whole-frame members locate, each at the working scale its members search at.
enum class MemberChart {
    kK31R22BX = 0,    ///< talonvireoSFR, _raw14 with SFRResult: 68 edges, half scale
    kK74T16BX = 1,    ///< talonvireoSFR, _raw14, _raw16 with SFRResult_HLX5: 52, half scale
    kK74T16BX8K = 2,  ///< talonvireoSFR_raw16_HLX5_8K: 52, quarter scale
    kHLX6C = 3,       ///< talonvireoSFR_raw10/14/16_HLX6C: 52, half scale
    kHLX6C8K = 4,     ///< talonvireoSFR_raw16_HLX6C_8K: 52, quarter scale
    kK83P09BQ = 5,    ///< talonvireoSFR_raw10/14/16_RQ8: 52, half scale
};

/// One located edge centre in full-frame pixels.
struct EdgeCentre {
    float x;
    float y;
};

/// Locates `chart` in `grey` (height rows of width bytes, packed: the grey frame a member
/// measures, as rawFrameToGrey makes it) with both of its layouts, exactly as the members do,
/// and writes every edge centre in record-slot order: 68 for K31R22BX, 52 for the others. A
/// member's record entry i holds centre i truncated toward zero. A slot whose edge was not found
/// reads NaN, NaN (every slot of a layout whose search failed); a centre may lie anywhere, also
/// outside the frame, when the chart was mistaken.
///
/// Returns the number of slots written, or -1 (writing nothing) for a null buffer, a size of 0
/// or less or over 2^31 - 1 pixels, an unknown chart, a markSearchSize outside 1 .. width / 2,
/// a `capacity` (entries of `centres`) below the chart's count, or an internal failure before
/// the search. Never throws.
TALONVIREO_API int locateMemberEdges(const unsigned char* grey, int width, int height,
                                     MemberChart chart, int markSearchSize, EdgeCentre* centres,
                                     int capacity);

}  // namespace talonvireo
