// The map layout pair of project K74T16BX.
//
// 13 chart points, each the single corner of two edges whose centres lie where a ring round
// the corner leaves its dark mark; the second class of the pair differs only in its table.
#pragma once

#include "locate/LayoutLocator.h"

namespace RegularSFR {

class SFRLocate_LX_MAP : public LayoutLocator<600> {
public:
    using LayoutLocator::LayoutLocator;
    void locate() override;
};

class SFRLocate_LX_MAP2 : public SFRLocate_LX_MAP {
public:
    using SFRLocate_LX_MAP::SFRLocate_LX_MAP;
    void locate() override;
};

}  // namespace RegularSFR
