// The LX layout pair of project K31R22BX: 56 corners, most edges between two corners of one
// square (the edge centre is their midpoint), the border edges single-corner ring crossings.
//
// The chart may sit anywhere within reach of the corner search: slot 4 finds the two dark
// marks nearest the chart centre and shifts the whole layout by how far their midpoint lies
// from where it belongs.
#pragma once

#include <opencv2/core.hpp>

#include "locate/LayoutLocator.h"
#include "locate/MarkSearchMemo.h"

namespace RegularSFR {

class SFRLocate_LX : public LayoutLocator<600> {
public:
    using LayoutLocator::LayoutLocator;
    void locate() override;

    // Slot 4. Makes the perspective the translation that carries `reference` to the
    // midpoint of the two dark blobs (area above markSearchSize squared) in the central half
    // of the source image whose centres lie nearest it. A default cv::Exception when fewer
    // than two such blobs exist.
    // With a memo, a search of the same reference and size on the same frame is done once.
    virtual void searchMarks(cv::Point2f reference);

    MarkSearchMemo* memo = nullptr;
};

class SFRLocate_LX2 : public SFRLocate_LX {
public:
    using SFRLocate_LX::SFRLocate_LX;
    void locate() override;
};

}  // namespace RegularSFR
