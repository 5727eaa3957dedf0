// The HLX6C layout pair, at half scale for 4000 x 3000 frames and quarter scale for 8K.
//
// 13 chart points, each the single corner of two edges whose centres lie where a ring round
// the corner leaves its dark mark; the second class of the pair differs only in its table.
#pragma once

#include "locate/LayoutLocator.h"

namespace RegularSFR {

class SFRLocate_HLX6C : public LayoutLocator<600> {
public:
    using LayoutLocator::LayoutLocator;
    void locate() override;
};

class SFRLocate_HLX6C_2 : public SFRLocate_HLX6C {
public:
    using SFRLocate_HLX6C::SFRLocate_HLX6C;
    void locate() override;
};

}  // namespace RegularSFR
