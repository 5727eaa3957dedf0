// The locate pair of each chart the whole-frame members measure: both layouts' locators on
// images prepared once per frame, at the working scale of the members of that chart.
#pragma once

#include "api/LocateEntry.h"
#include "api/LocateRecipes.h"
#include "talonvireo/ProjectLocate.h"

namespace talonvireo {
namespace api {

// Two locate functions, each filling `Edges` centres, both searching the frame downscaled by
// `scale`: the pipeline downscales it once for the two.
template <class ParamT, class ResultT, int Edges>
struct LocatePair {
    using Param = ParamT;
    using Result = ResultT;
    using Locate = int (*)(const LocateImages&, Param, Result&);
    Locate first;
    Locate second;
    double scale;
    static constexpr int kEdges = Edges;
};

using K31Pair = LocatePair<K31R22BX::Param, K31R22BX::Result, 34>;
using K74Pair = LocatePair<K74T16BX::Param, K74T16BX::Result, 26>;
using K83Pair = LocatePair<K83P09BQ::Param, K83P09BQ::Result, 26>;

template <class Pair, class First, class Second>
constexpr Pair pairOf() {
    using P = typename Pair::Param;
    using R = typename Pair::Result;
    static_assert(First::kScale == Second::kScale, "one downscaled image serves both");
    return {&First::template onImages<P, R>, &Second::template onImages<P, R>, First::kScale};
}

inline constexpr K31Pair kK31R22BXPair = pairOf<K31Pair, K31R22BXFirst, K31R22BXSecond>();
inline constexpr K74Pair kK74T16BXPair = pairOf<K74Pair, K74T16BXFirst, K74T16BXSecond>();
inline constexpr K74Pair kMap8kPair = pairOf<K74Pair, Map8kFirst, Map8kSecond>();
inline constexpr K74Pair kHlx6cPair = pairOf<K74Pair, Hlx6cFirst, Hlx6cSecond>();
inline constexpr K74Pair kHlx6c8kPair = pairOf<K74Pair, Hlx6c8kFirst, Hlx6c8kSecond>();
inline constexpr K83Pair kK83P09BQPair = pairOf<K83Pair, K83P09BQFirst, K83P09BQSecond>();

}  // namespace api
}  // namespace talonvireo
