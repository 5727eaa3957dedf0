// The curve plot: each channel in the colour its name calls for, and a legend naming them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "station/ChannelColour.h"
#include "station/CurvePlot.h"

namespace {
using namespace talonvireo;
using namespace talonvireo::station;

// Channel ink as red, green, blue.
struct Rgb {
    double r, g, b;
};
Rgb rgb(const cv::Scalar& bgr) {
    return {bgr[2], bgr[1], bgr[0]};
}

TEST(ChannelColour, EachNameGetsItsOwnColour) {
    const Rgb red = rgb(channelColour("R"));
    EXPECT_GT(red.r, 150);
    EXPECT_LT(red.g, 80);
    EXPECT_LT(red.b, 80);
    const Rgb blue = rgb(channelColour("B"));
    EXPECT_GT(blue.b, 150);
    EXPECT_LT(blue.r, 80);
    EXPECT_LT(blue.g, 100);
    for (const char* name : {"G", "Gr", "Gb"}) {
        const Rgb green = rgb(channelColour(name));
        EXPECT_GT(green.g, green.r + 20) << name;
        EXPECT_GT(green.g, green.b + 20) << name;
    }
    // The mosaic's two greens are told apart at a glance.
    const Rgb gr = rgb(channelColour("Gr"));
    const Rgb gb = rgb(channelColour("Gb"));
    EXPECT_GT(std::abs(gr.r - gb.r) + std::abs(gr.g - gb.g) + std::abs(gr.b - gb.b), 120);
    const Rgb grey = rgb(channelColour("grey"));
    EXPECT_LT(grey.r + grey.g + grey.b, 200);
    EXPECT_LT(std::abs(grey.r - grey.g) + std::abs(grey.g - grey.b), 20);
}

// A straight curve from 1 at 0 falling by `slope` per cycle per pixel, down to 0.
SfrChannelCurve line(const std::string& name, double slope) {
    SfrChannelCurve ch;
    ch.name = name;
    for (int k = 0; k <= 64; ++k) {
        const double f = k / 128.0;
        ch.frequency.push_back(f);
        ch.sfr.push_back(std::max(0.0, 1.0 - slope * f));
    }
    ch.mtf50 = 0.5 / slope;
    return ch;
}

// Pixels of `img` within `area` whose colour is `bgr` within `tolerance` per component.
int pixelsOf(const cv::Mat& img, const cv::Rect& area, const cv::Scalar& bgr, int tolerance) {
    int count = 0;
    for (int y = area.y; y < area.y + area.height; ++y) {
        for (int x = area.x; x < area.x + area.width; ++x) {
            const cv::Vec3b p = img.at<cv::Vec3b>(y, x);
            if (std::abs(p[0] - bgr[0]) <= tolerance && std::abs(p[1] - bgr[1]) <= tolerance &&
                std::abs(p[2] - bgr[2]) <= tolerance) {
                ++count;
            }
        }
    }
    return count;
}

TEST(CurvePlot, DrawsEveryRawPlaneInItsOwnColourWithALegend) {
    // The planes in the order a per-channel-raw measurement gives them.
    SfrCurve curve;
    curve.channels = {line("R", 1.0), line("Gr", 1.5), line("Gb", 1.8), line("B", 2.0)};
    const cv::Mat plot = plotCurve(curve);
    ASSERT_EQ(plot.type(), CV_8UC3);
    ASSERT_EQ(plot.size(), cv::Size(800, 500));
    // Plot area: x 60 .. 780 for 0 .. 0.5 cycles per pixel, y 450 .. 20 for 0 .. 1.2. At 0.3
    // cycles per pixel R reads 0.7, Gr 0.55, Gb 0.46 and B 0.4, at least 22 px apart.
    const int x = 60 + static_cast<int>(0.3 / 0.5 * 720);
    const auto near = [&](double sfr) {
        return cv::Rect(x - 2, 20 + static_cast<int>((1.2 - sfr) / 1.2 * 430) - 6, 5, 13);
    };
    EXPECT_GT(pixelsOf(plot, near(0.7), channelColour("R"), 10), 3);
    EXPECT_EQ(pixelsOf(plot, near(0.7), channelColour("B"), 60), 0);
    EXPECT_GT(pixelsOf(plot, near(0.55), channelColour("Gr"), 10), 3);
    EXPECT_GT(pixelsOf(plot, near(0.46), channelColour("Gb"), 10), 3);
    EXPECT_GT(pixelsOf(plot, near(0.4), channelColour("B"), 10), 3);
    EXPECT_EQ(pixelsOf(plot, near(0.4), channelColour("R"), 60), 0);

    // The legend, top right: a swatch of every channel's exact ink (the curves are far below),
    // one under the other in the channels' order, each beside dark text.
    const cv::Rect legend(560, 20, 220, 130);
    int lastRow = 0;
    for (const char* name : {"R", "Gr", "Gb", "B"}) {
        const cv::Scalar ink = channelColour(name);
        EXPECT_GE(pixelsOf(plot, legend, ink, 0), 20) << name;
        int row = -1;
        for (int y = legend.y; y < legend.y + legend.height && row < 0; ++y) {
            if (pixelsOf(plot, cv::Rect(legend.x, y, legend.width, 1), ink, 0) > 0) {
                row = y;
            }
        }
        EXPECT_GT(row, lastRow) << name;
        lastRow = row;
    }
    EXPECT_GT(pixelsOf(plot, legend, cv::Scalar(40, 40, 40), 40), 30);  // the names
}

TEST(CurvePlot, NamesTheGreyChannelInItsLegend) {
    SfrCurve curve;
    curve.channels = {line("grey", 1.2)};
    const cv::Mat plot = plotCurve(curve);
    EXPECT_GE(pixelsOf(plot, cv::Rect(560, 20, 220, 130), channelColour("grey"), 0), 20);
}

}  // namespace
