// Where the whole-frame pipeline cuts its regions, checked against the same grey image
// rebuilt from the frame: an odd roiSize puts the centre roiSize / 2 (truncated) from the
// region's left and top.
#include <gtest/gtest.h>

#include "ChartFrames.h"

#include "convert/Demosaic.h"
#include "convert/RawUnpack.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;

TEST(MeasurementRegion, AnOddRoiSizePutsTheCentreAtHalfTheSideTruncated) {
    cv::Mat raw = talonvireo::testing::renderRawChart(render::ChartProject::HLX6C, 10);
    SFRResult_HLX5 result{};
    ASSERT_EQ(talonvireoSFR_raw10_HLX6C(raw.data, 4000, 3000, SFRParam{4.0f, 81, 100}, result), 0);

    cv::Mat mosaic(3000, 4000, CV_8UC1), grey(3000, 4000, CV_8UC1);
    convert::unpackRaw10(raw.ptr<unsigned short>(), mosaic.data, raw.size());
    convert::demosaicToGrey(mosaic.data, 4000, 3000, 17, grey.data);
    const auto measureAt = [&](int left, int top) {
        cv::Mat region = grey(cv::Rect(left, top, 81, 81)).clone();
        tagSFRResult sfr{};
        sfr.nyquistDivisor = 4.0;
        EXPECT_EQ(TalonCalSFR(region.data, 81, 81, 256, sfr), 0);
        return static_cast<float>(sfr.sfrHalfNyquist[0]);
    };
    for (int i : {0, 7, 25}) {
        const SFREdgeResult& e = result.edges[i];
        EXPECT_EQ(e.sfrHalfNyquist, measureAt(e.x - 40, e.y - 40)) << "entry " << i;
        EXPECT_NE(e.sfrHalfNyquist, measureAt(e.x - 41, e.y - 41)) << "entry " << i;
    }
}

}  // namespace
