#include "convert/PixelRepack.h"

#include <cstddef>

#include "convert/ByteLanes.h"
#include "convert/ImageExtent.h"

namespace talonvireo {
namespace convert {

bool bgraToBgr(const unsigned char* bgra, unsigned char* bgr, int width, int height) {
    const std::size_t count = runnableCount(bgra, bgr, width, height);
    for (std::size_t i = 0; i < count; ++i) {
        bgr[3 * i] = bgra[4 * i];
        bgr[3 * i + 1] = bgra[4 * i + 1];
        bgr[3 * i + 2] = bgra[4 * i + 2];
    }
    return count != 0;
}

bool bgrToBgra(const unsigned char* bgr, unsigned char* bgra, int width, int height) {
    const std::size_t count = runnableCount(bgr, bgra, width, height);
    for (std::size_t i = 0; i < count; ++i) {
        bgra[4 * i] = bgr[3 * i];
        bgra[4 * i + 1] = bgr[3 * i + 1];
        bgra[4 * i + 2] = bgr[3 * i + 2];
        bgra[4 * i + 3] = 255;
    }
    return count != 0;
}

bool bgrToGrey(const unsigned char* bgr, unsigned char* grey, int width, int height) {
    const std::size_t count = runnableCount(bgr, grey, width, height);
    for (std::size_t i = 0; i < count; ++i) {
        grey[i] =
            static_cast<unsigned char>(fixedPointLuma(bgr[3 * i], bgr[3 * i + 1], bgr[3 * i + 2]));
    }
    return count != 0;
}

#if defined(__SSE2__)
namespace {
// Luma of four pixels (16 bytes) as four 32-bit lanes: the weights multiply blue, green, red
// and 0 in pairs of 16-bit lanes, then the two partial sums of each pixel are added.
inline __m128i lumaOfFour(__m128i pixels) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i weights = _mm_set_epi16(0, 306, 601, 117, 0, 306, 601, 117);
    const __m128i low = _mm_madd_epi16(_mm_unpacklo_epi8(pixels, zero), weights);
    const __m128i high = _mm_madd_epi16(_mm_unpackhi_epi8(pixels, zero), weights);
    const __m128 lowF = _mm_castsi128_ps(low);
    const __m128 highF = _mm_castsi128_ps(high);
    const __m128i even = _mm_castps_si128(_mm_shuffle_ps(lowF, highF, _MM_SHUFFLE(2, 0, 2, 0)));
    const __m128i odd = _mm_castps_si128(_mm_shuffle_ps(lowF, highF, _MM_SHUFFLE(3, 1, 3, 1)));
    return _mm_srli_epi32(_mm_add_epi32(even, odd), 10);
}
}  // namespace
#endif

bool bgraToGrey(const unsigned char* bgra, unsigned char* grey, int width, int height) {
    const std::size_t count = runnableCount(bgra, grey, width, height);
    std::size_t i = 0;
#if defined(__SSE2__)
    for (; i + 16 <= count; i += 16) {
        using lanes::load;
        const unsigned char* in = bgra + 4 * i;
        const __m128i first = _mm_packs_epi32(lumaOfFour(load(in)), lumaOfFour(load(in + 16)));
        const __m128i second =
            _mm_packs_epi32(lumaOfFour(load(in + 32)), lumaOfFour(load(in + 48)));
        lanes::store(grey + i, _mm_packus_epi16(first, second));
    }
#endif
    for (; i < count; ++i) {
        grey[i] = static_cast<unsigned char>(
            fixedPointLuma(bgra[4 * i], bgra[4 * i + 1], bgra[4 * i + 2]));
    }
    return count != 0;
}

namespace {
// Grey spread over blue, green and red; the fourth byte set to `fourth` unless it is
// negative, in which case it is left alone.
bool spreadGrey(const unsigned char* grey, unsigned char* bgra, int width, int height, int fourth) {
    const std::size_t count = runnableCount(grey, bgra, width, height);
    for (std::size_t i = 0; i < count; ++i) {
        bgra[4 * i] = grey[i];
        bgra[4 * i + 1] = grey[i];
        bgra[4 * i + 2] = grey[i];
        if (fourth >= 0) {
            bgra[4 * i + 3] = static_cast<unsigned char>(fourth);
        }
    }
    return count != 0;
}
}  // namespace

bool greyIntoBgra(const unsigned char* grey, unsigned char* bgra, int width, int height) {
    return spreadGrey(grey, bgra, width, height, -1);
}

bool greyToBgra(const unsigned char* grey, unsigned char* bgra, int width, int height) {
    return spreadGrey(grey, bgra, width, height, 255);
}

}  // namespace convert
}  // namespace talonvireo
