// Pixel pitch parsing and the sensor units beside cycles per pixel.
#include <gtest/gtest.h>

#include "station/Failure.h"
#include "station/PixelPitch.h"

namespace {
using namespace talonvireo::station;

TEST(PixelPitch, ReadsMicrometresAndMillimetres) {
    EXPECT_DOUBLE_EQ(parsePixelPitch("1.12um"), 1.12);
    EXPECT_DOUBLE_EQ(parsePixelPitch("1.12\u00b5m"), 1.12);
    EXPECT_DOUBLE_EQ(parsePixelPitch("0.0014mm"), 1.4);
}

TEST(PixelPitch, ReadsTheGreekMuAndTheMicroSignAlike) {
    EXPECT_DOUBLE_EQ(parsePixelPitch("1.12\u03bcm"), 1.12);  // Greek small mu
    EXPECT_DOUBLE_EQ(parsePixelPitch("1.12\u00b5m"), 1.12);  // micro sign
}

TEST(PixelPitch, ReadsNanometres) {
    EXPECT_DOUBLE_EQ(parsePixelPitch("1120nm"), 1.12);
    EXPECT_DOUBLE_EQ(parsePixelPitch("800nm"), 0.8);
}

TEST(PixelPitch, RefusesAMissingUnitAndAnAbsurdPitch) {
    for (const char* bad : {"1.12", "1.12 um", "1.12nm", "um", "", "0.01um", "500um", "nanum"}) {
        EXPECT_THROW(parsePixelPitch(bad), Failure) << bad;
    }
}

TEST(PixelPitch, ConvertsCyclesPerPixel) {
    // Nyquist of a 1.12 um pitch: 446.4 lp/mm; on a 3000-row picture 3000 LW/PH.
    EXPECT_NEAR(linePairsPerMm(0.5, 1.12), 446.4286, 1e-4);
    EXPECT_DOUBLE_EQ(lineWidthsPerHeight(0.5, 3000), 3000.0);
}

}  // namespace
