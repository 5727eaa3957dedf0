// The map layout pair for 8K frames: the same tables with a corner search twice as wide,
// which the quarter working scale of 8K frames brings back to 300 work-image pixels.
//
// 13 chart points, each the single corner of two edges whose centres lie where a ring round
// the corner leaves its dark mark; the second class of the pair differs only in its table.
#pragma once

#include "locate/LayoutLocator.h"

namespace RegularSFR {

class SFRLocate_LX_MAP_8K : public LayoutLocator<1200> {
public:
    using LayoutLocator::LayoutLocator;
    void locate() override;
};

class SFRLocate_LX_MAP2_8K : public SFRLocate_LX_MAP_8K {
public:
    using SFRLocate_LX_MAP_8K::SFRLocate_LX_MAP_8K;
    void locate() override;
};

}  // namespace RegularSFR
