// Which layout locator, at which working scale and through which reordering table, stands
// behind each locate function: one list for the locate functions callers see and for the
// members, which run the same locators on images prepared once per frame.
#pragma once

#include "api/LocateEntry.h"
#include "api/LocateOrder.h"
#include "locate/SFRLocate_HLX6C.h"
#include "locate/SFRLocate_LX.h"
#include "locate/SFRLocate_LX_17QD.h"
#include "locate/SFRLocate_LX_MAP.h"
#include "locate/SFRLocate_LX_MAP_8K.h"

namespace talonvireo {
namespace api {

// A locator searched at 1 / Divisor of the frame's size.
template <class Locator, int Divisor, const LocateOrder* Order = nullptr>
struct LocateRecipe {
    static constexpr double kScale = 1.0 / Divisor;

    template <class Param, class Result>
    static int onFrame(unsigned char* img, int width, int height, Param param, Result& result) {
        return locateEntry<Locator>(img, width, height, param.markSearchSize, kScale, Order,
                                    result);
    }

    template <class Param, class Result>
    static int onImages(const LocateImages& images, Param param, Result& result) {
        return locatePrepared<Locator>(images, param.markSearchSize, kScale, Order, result);
    }
};

using K31R22BXFirst = LocateRecipe<RegularSFR::SFRLocate_LX, 2, &kK31R22BXOrder>;
using K31R22BXSecond = LocateRecipe<RegularSFR::SFRLocate_LX2, 2, &kK31R22BX2Order>;
using K74T16BXFirst = LocateRecipe<RegularSFR::SFRLocate_LX_MAP, 2>;
using K74T16BXSecond = LocateRecipe<RegularSFR::SFRLocate_LX_MAP2, 2>;
using K83P09BQFirst = LocateRecipe<RegularSFR::SFRLocate_LX_17QD, 2>;
using K83P09BQSecond = LocateRecipe<RegularSFR::SFRLocate_LX_17QD2, 2>;
using Map8kFirst = LocateRecipe<RegularSFR::SFRLocate_LX_MAP_8K, 4>;
using Map8kSecond = LocateRecipe<RegularSFR::SFRLocate_LX_MAP2_8K, 4>;
using Hlx6cFirst = LocateRecipe<RegularSFR::SFRLocate_HLX6C, 2>;
using Hlx6cSecond = LocateRecipe<RegularSFR::SFRLocate_HLX6C_2, 2>;
using Hlx6c8kFirst = LocateRecipe<RegularSFR::SFRLocate_HLX6C, 4>;
using Hlx6c8kSecond = LocateRecipe<RegularSFR::SFRLocate_HLX6C_2, 4>;

}  // namespace api
}  // namespace talonvireo
