// SSE2 helpers on sixteen unsigned byte lanes, for the integer image conversions. SSE2 is
// part of every x86-64 processor; other targets take the scalar paths.
#pragma once

#if defined(__SSE2__)
#include <emmintrin.h>

namespace talonvireo {
namespace convert {
namespace lanes {

inline __m128i load(const unsigned char* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

inline void store(unsigned char* p, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}

// (a + b) >> 1 per lane: the rounding-up average minus the bit it rounded up.
inline __m128i averageDown(__m128i a, __m128i b) {
    return _mm_sub_epi8(_mm_avg_epu8(a, b), _mm_and_si128(_mm_xor_si128(a, b), _mm_set1_epi8(1)));
}

inline __m128i absoluteDifference(__m128i a, __m128i b) {
    return _mm_or_si128(_mm_subs_epu8(a, b), _mm_subs_epu8(b, a));
}

// All ones where a <= b (unsigned), else zero.
inline __m128i lessOrEqual(__m128i a, __m128i b) {
    return _mm_cmpeq_epi8(_mm_max_epu8(a, b), b);
}

// a where mask is set, else b.
inline __m128i select(__m128i mask, __m128i a, __m128i b) {
    return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b));
}

// Interleaves four planes of 16 samples into 16 four-byte pixels, four pixels a vector.
struct Pixels16 {
    __m128i quarter[4];
};

inline Pixels16 interleave4(__m128i p0, __m128i p1, __m128i p2, __m128i p3) {
    const __m128i lo01 = _mm_unpacklo_epi8(p0, p1);
    const __m128i hi01 = _mm_unpackhi_epi8(p0, p1);
    const __m128i lo23 = _mm_unpacklo_epi8(p2, p3);
    const __m128i hi23 = _mm_unpackhi_epi8(p2, p3);
    return {{_mm_unpacklo_epi16(lo01, lo23), _mm_unpackhi_epi16(lo01, lo23),
             _mm_unpacklo_epi16(hi01, hi23), _mm_unpackhi_epi16(hi01, hi23)}};
}

}  // namespace lanes
}  // namespace convert
}  // namespace talonvireo
#endif
