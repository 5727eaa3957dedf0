// The 17QD layout pair of project K83P09BQ.
//
// 13 chart points, each the single corner of two edges whose centres lie where a ring round
// the corner leaves its dark mark; the second class of the pair differs only in its table.
#pragma once

#include "locate/LayoutLocator.h"

namespace RegularSFR {

class SFRLocate_LX_17QD : public LayoutLocator<600> {
public:
    using LayoutLocator::LayoutLocator;
    void locate() override;
};

class SFRLocate_LX_17QD2 : public SFRLocate_LX_17QD {
public:
    using SFRLocate_LX_17QD::SFRLocate_LX_17QD;
    void locate() override;
};

}  // namespace RegularSFR
