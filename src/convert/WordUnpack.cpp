// Compiled once per instruction set Highway targets; the best one the processor has is
// picked at the first call.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convert/WordUnpack.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "convert/WordUnpack.h"

HWY_BEFORE_NAMESPACE();
namespace talonvireo {
namespace convert {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

template <WordDepth kDepth, class D16>
HWY_INLINE hn::Vec<D16> byteLanes(D16 d16, hn::Vec<D16> words) {
    if constexpr (kDepth == WordDepth::k10) {
        return hn::ShiftRight<2>(hn::Min(words, hn::Set(d16, 1023)));
    } else if constexpr (kDepth == WordDepth::k14) {
        return hn::And(hn::ShiftRight<6>(words), hn::Set(d16, 0xFF));
    } else {
        return hn::ShiftRight<8>(words);
    }
}

template <WordDepth kDepth>
void unpackRun(const std::uint16_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
               std::size_t count) {
    const hn::ScalableTag<std::uint16_t> d16;
    const hn::Rebind<std::int16_t, decltype(d16)> di16;
    const hn::Rebind<std::uint8_t, decltype(d16)> d8;
    const std::size_t n = hn::Lanes(d16);
    std::size_t k = 0;
    for (; k + n <= count; k += n) {
        const auto bytes = byteLanes<kDepth>(d16, hn::LoadU(d16, src + k));
        hn::StoreU(hn::DemoteTo(d8, hn::BitCast(di16, bytes)), d8, dst + k);
    }
    for (; k < count; ++k) {
        dst[k] = wordToByte(src[k], kDepth);
    }
}

void UnpackWords(const std::uint16_t* src, std::uint8_t* dst, std::size_t count, WordDepth depth) {
    switch (depth) {
        case WordDepth::k10:
            unpackRun<WordDepth::k10>(src, dst, count);
            break;
        case WordDepth::k14:
            unpackRun<WordDepth::k14>(src, dst, count);
            break;
        default:
            unpackRun<WordDepth::k16>(src, dst, count);
            break;
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace convert
}  // namespace talonvireo
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace talonvireo {
namespace convert {

HWY_EXPORT(UnpackWords);

void unpackWords(const std::uint16_t* src, std::uint8_t* dst, std::size_t count, WordDepth depth) {
    HWY_DYNAMIC_DISPATCH(UnpackWords)(src, dst, count, depth);
}

}  // namespace convert
}  // namespace talonvireo
#endif
