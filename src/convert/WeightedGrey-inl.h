// Per-target helper of the fused roads: the luminance of N pixels, each channel a byte held
// in a 16-bit lane, as (R wr + G wg + B wb + round) >> shift in 32-bit lanes, stored as
// bytes. Included once per Highway target by the roads' own per-target passes.
#if defined(TALONVIREO_CONVERT_WEIGHTED_GREY_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef TALONVIREO_CONVERT_WEIGHTED_GREY_INL_H_
#undef TALONVIREO_CONVERT_WEIGHTED_GREY_INL_H_
#else
#define TALONVIREO_CONVERT_WEIGHTED_GREY_INL_H_
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace talonvireo {
namespace convert {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D16 = hn::ScalableTag<std::int16_t>;
using V16 = hn::Vec<D16>;

// The integer weights of one luminance rule.
template <int kRed, int kGreen, int kBlue, int kRound, int kShift>
struct GreyWeights {};

#if HWY_TARGET == HWY_SCALAR
// One lane: nothing to halve.
template <int kRed, int kGreen, int kBlue, int kRound, int kShift>
HWY_INLINE void storeFullGrey(GreyWeights<kRed, kGreen, kBlue, kRound, kShift>, D16, V16 r, V16 g,
                              V16 b, std::uint8_t* out) {
    out[0] = static_cast<std::uint8_t>(
        (kRed * hn::GetLane(r) + kGreen * hn::GetLane(g) + kBlue * hn::GetLane(b) + kRound) >>
        kShift);
}
#else
template <int kRed, int kGreen, int kBlue, int kRound, int kShift>
HWY_INLINE void storeFullGrey(GreyWeights<kRed, kGreen, kBlue, kRound, kShift>, D16 d, V16 r, V16 g,
                              V16 b, std::uint8_t* out) {
    const hn::Half<D16> dh;
    const hn::Repartition<std::int32_t, D16> d32;
    const hn::Rebind<std::uint8_t, decltype(d32)> d8;
    using Half = hn::Vec<decltype(dh)>;
    const auto grey = [&](Half rh, Half gh, Half bh) {
        const auto sum = hn::Add(
            hn::Add(hn::Mul(hn::PromoteTo(d32, rh), hn::Set(d32, kRed)),
                    hn::Mul(hn::PromoteTo(d32, gh), hn::Set(d32, kGreen))),
            hn::Add(hn::Mul(hn::PromoteTo(d32, bh), hn::Set(d32, kBlue)), hn::Set(d32, kRound)));
        return hn::DemoteTo(d8, hn::ShiftRight<kShift>(sum));
    };
    hn::StoreU(grey(hn::LowerHalf(dh, r), hn::LowerHalf(dh, g), hn::LowerHalf(dh, b)), d8, out);
    hn::StoreU(grey(hn::UpperHalf(dh, r), hn::UpperHalf(dh, g), hn::UpperHalf(dh, b)), d8,
               out + hn::Lanes(d) / 2);
}
#endif

// The first `count` of the N pixels to out[0 .. count - 1]; nothing past them is written.
template <class Weights>
HWY_INLINE void storeGrey(Weights weights, D16 d, V16 r, V16 g, V16 b, std::uint8_t* out,
                          std::size_t count) {
    if (count >= hn::Lanes(d)) {
        storeFullGrey(weights, d, r, g, b, out);
        return;
    }
    HWY_ALIGN std::uint8_t tail[2 * HWY_MAX_BYTES];
    storeFullGrey(weights, d, r, g, b, tail);
    std::memcpy(out, tail, count);
}

}  // namespace HWY_NAMESPACE
}  // namespace convert
}  // namespace talonvireo
HWY_AFTER_NAMESPACE();

#endif
