// The Malvar-He-Cutler demosaic and its grey reduction.
#include <gtest/gtest.h>
#include <omp.h>

#include <array>
#include <climits>
#include <cstdint>
#include <random>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "TestRegions.h"
#include "convert/Demosaic.h"

namespace {
using namespace talonvireo::convert;

// Colour of each mosaic site: 0 red, 1 green, 2 blue, for the four phases by their field.
int siteColour(int phase, int row, int col) {
    const char* cell = phase == 1 ? "RGGB" : phase == 2 ? "GRBG" : phase == 4 ? "GBRG" : "BGGR";
    const char c = cell[(row % 2) * 2 + col % 2];
    return c == 'R' ? 0 : c == 'G' ? 1 : 2;
}

// The kernels again, transcribed independently, row by row.
const int kGreen[5][5] = {
    {0, 0, -2, 0, 0}, {0, 0, 4, 0, 0}, {-2, 4, 8, 4, -2}, {0, 0, 4, 0, 0}, {0, 0, -2, 0, 0}};
const int kRow[5][5] = {
    {0, 0, 1, 0, 0}, {0, -2, 0, -2, 0}, {-2, 8, 10, 8, -2}, {0, -2, 0, -2, 0}, {0, 0, 1, 0, 0}};
const int kCol[5][5] = {
    {0, 0, -2, 0, 0}, {0, -2, 8, -2, 0}, {1, 0, 10, 0, 1}, {0, -2, 8, -2, 0}, {0, 0, -2, 0, 0}};
const int kDiag[5][5] = {
    {0, 0, -3, 0, 0}, {0, 4, 0, 4, 0}, {-3, 0, 12, 0, -3}, {0, 4, 0, 4, 0}, {0, 0, -3, 0, 0}};

// Reflect-101 index (mirror without repeating the edge), for any length.
int mirror(int i, int n) {
    if (n == 1) {
        return 0;
    }
    while (i < 0 || i >= n) {
        i = i < 0 ? -i : 2 * (n - 1) - i;
    }
    return i;
}

// Expected RGB of one pixel, straight from the per-site table. `rawSums`, when given,
// receives each channel's kernel sum before clamping (INT_MAX for the native channel).
std::array<int, 3> expectedPixel(const std::vector<int>& m, int w, int h, int phase, int row,
                                 int col, int maxValue, std::array<int, 3>* rawSums = nullptr) {
    std::array<int, 3> sums = {INT_MAX, INT_MAX, INT_MAX};
    const auto apply = [&](int channel, const int(*k)[5]) {
        int sum = 0;
        for (int i = 0; i < 5; ++i) {
            for (int j = 0; j < 5; ++j) {
                sum += k[i][j] * m[mirror(row - 2 + i, h) * w + mirror(col - 2 + j, w)];
            }
        }
        sums[channel] = sum;
        return sum <= 0 ? 0 : std::min(sum / 16, maxValue);
    };
    const int native = m[row * w + col];
    const int colour = siteColour(phase, row, col);
    std::array<int, 3> rgb{};
    if (colour == 0) {
        rgb = {native, apply(1, kGreen), apply(2, kDiag)};
    } else if (colour == 2) {
        rgb = {apply(0, kDiag), apply(1, kGreen), native};
    } else if (siteColour(phase, row, col ^ 1) == 0) {  // green in a red row
        rgb = {apply(0, kRow), native, apply(2, kCol)};
    } else {
        rgb = {apply(0, kCol), native, apply(2, kRow)};
    }
    if (rawSums != nullptr) {
        *rawSums = sums;
    }
    return rgb;
}

template <typename T>
std::vector<T> demosaic(const std::vector<int>& m, int w, int h, int format,
                        int* status = nullptr) {
    std::vector<T> in(m.begin(), m.end());
    std::vector<T> rgb(static_cast<size_t>(3 * w * h), 0);
    const int s = demosaicBordered(in.data(), w, h, format, rgb.data());
    if (status != nullptr) {
        *status = s;
    }
    return rgb;
}

template <typename T>
void expectMatchesTable(const std::vector<int>& m, int w, int h, int format, int maxValue) {
    int status = -1;
    const std::vector<T> rgb = demosaic<T>(m, w, h, format, &status);
    ASSERT_EQ(status, 0);
    for (int r = 0; r < h; ++r) {
        for (int c = 0; c < w; ++c) {
            const std::array<int, 3> e = expectedPixel(m, w, h, format & 0xF, r, c, maxValue);
            for (int ch = 0; ch < 3; ++ch) {
                ASSERT_EQ(rgb[3 * (r * w + c) + ch], e[ch])
                    << std::hex << format << std::dec << " at " << r << "," << c << " ch " << ch;
            }
        }
    }
}

std::vector<int> randomMosaic(int w, int h, int maxValue, unsigned seed) {
    std::mt19937 rng(seed);
    std::vector<int> m(static_cast<size_t>(w * h));
    for (int& v : m) {
        v = static_cast<int>(rng() % (maxValue + 1));
    }
    return m;
}

TEST(Demosaic, FlatMosaicGivesTheSameValueInEveryChannelAndInGrey) {
    for (int phase : {1, 2, 4, 8}) {
        const std::vector<int> flat8(12 * 10, 77);
        const std::vector<std::uint8_t> rgb8 = demosaic<std::uint8_t>(flat8, 12, 10, 0x010 | phase);
        EXPECT_EQ(rgb8, std::vector<std::uint8_t>(rgb8.size(), 77));
        std::vector<std::uint8_t> in8(flat8.begin(), flat8.end());
        std::vector<std::uint8_t> grey8(flat8.size(), 0);
        ASSERT_EQ(demosaicToGrey(in8.data(), 12, 10, 0x010 | phase, grey8.data()), 0);
        EXPECT_EQ(grey8, std::vector<std::uint8_t>(grey8.size(), 77));

        const std::vector<int> flat16(12 * 10, 40000);
        const auto rgb16 = demosaic<std::uint16_t>(flat16, 12, 10, 0x020 | phase);
        EXPECT_EQ(rgb16, std::vector<std::uint16_t>(rgb16.size(), 40000));
        std::vector<std::uint16_t> in16(flat16.begin(), flat16.end());
        std::vector<std::uint16_t> grey16(flat16.size(), 0);
        ASSERT_EQ(demosaicToGrey(in16.data(), 12, 10, 0x020 | phase, grey16.data()), 0);
        EXPECT_EQ(grey16, std::vector<std::uint16_t>(grey16.size(), 40000));
    }
}

TEST(Demosaic, NativeSampleAtEvenRowEvenColumnIsRedForRGAndBlueForBG) {
    const std::vector<int> m = randomMosaic(8, 8, 255, 1);
    const auto rg = demosaic<std::uint8_t>(m, 8, 8, 0x011);
    const auto bg = demosaic<std::uint8_t>(m, 8, 8, 0x018);
    for (int r = 0; r < 8; r += 2) {
        for (int c = 0; c < 8; c += 2) {
            EXPECT_EQ(rg[3 * (r * 8 + c) + 0], m[r * 8 + c]);
            EXPECT_EQ(bg[3 * (r * 8 + c) + 2], m[r * 8 + c]);
        }
    }
}

TEST(Demosaic, SixteenBitLayouts0x021And0x041ClampAt65535And0x081And0x031AreRefused) {
    // Bright greens around a dark red site push its diagonal blue sum past the maximum.
    std::vector<int> m(9 * 9, 65535);
    m[4 * 9 + 4] = 0;
    for (int format : {0x021, 0x041}) {
        int status = -1;
        const auto rgb = demosaic<std::uint16_t>(m, 9, 9, format, &status);
        ASSERT_EQ(status, 0);
        expectMatchesTable<std::uint16_t>(m, 9, 9, format, 65535);
        int clamped = 0;
        for (std::uint16_t v : rgb) {
            clamped += v == 65535;
        }
        EXPECT_GT(clamped, 0);
    }
    std::vector<std::uint16_t> in(81, 100);
    std::vector<std::uint16_t> out(81 * 3, 7);
    EXPECT_EQ(demosaicBordered(in.data(), 9, 9, 0x081, out.data()), -1);
    EXPECT_EQ(demosaicBordered(in.data(), 9, 9, 0x031, out.data()), -1);
    EXPECT_EQ(demosaicToGrey(in.data(), 9, 9, 0x081, out.data()), -1);
    EXPECT_EQ(out, std::vector<std::uint16_t>(81 * 3, 7)) << "nothing written";
}

TEST(Demosaic, PhaseThreeThrowsAndPhaseZeroReturnsMinusOne) {
    std::vector<std::uint8_t> in(64, 10);
    std::vector<std::uint8_t> out(64 * 3, 0);
    EXPECT_THROW(demosaicBordered(in.data(), 8, 8, 0x013, out.data()), cv::Exception);
    EXPECT_THROW(demosaicToGrey(in.data(), 8, 8, 0x013, out.data()), cv::Exception);
    EXPECT_EQ(demosaicBordered(in.data(), 8, 8, 0x010, out.data()), -1);
    EXPECT_EQ(demosaicToGrey(in.data(), 8, 8, 0x010, out.data()), -1);
}

TEST(Demosaic, SingleRowOrSingleColumnStaysInsideTheBorderedCopy) {
    for (auto wh : {std::pair<int, int>{1, 1}, {1, 7}, {7, 1}, {2, 2}, {2, 5}, {5, 2}, {3, 3}}) {
        for (int format : {0x011, 0x012, 0x014, 0x018}) {
            expectMatchesTable<std::uint8_t>(randomMosaic(wh.first, wh.second, 255, 3), wh.first,
                                             wh.second, format, 255);
        }
    }
}

TEST(Demosaic, SharpEdgeClampsNegativeSumsToZeroNotWrapped) {
    std::vector<int> m(10 * 10, 0);
    for (int r = 0; r < 10; ++r) {
        for (int c = 5; c < 10; ++c) {
            m[r * 10 + c] = 255;
        }
    }
    const auto rgb = demosaic<std::uint8_t>(m, 10, 10, 0x011);
    int negative = 0;
    for (int r = 0; r < 10; ++r) {
        for (int c = 0; c < 10; ++c) {
            std::array<int, 3> sums{};
            expectedPixel(m, 10, 10, 1, r, c, 255, &sums);
            for (int ch = 0; ch < 3; ++ch) {
                if (sums[ch] < 0) {
                    ++negative;
                    // An overshoot below 0 reads 0, never a wrapped 256 - something.
                    EXPECT_EQ(rgb[3 * (r * 10 + c) + ch], 0) << r << "," << c << " ch " << ch;
                }
            }
        }
    }
    EXPECT_GT(negative, 0) << "the edge drives some kernel sums below zero";
    expectMatchesTable<std::uint8_t>(m, 10, 10, 0x011, 255);
}

TEST(Demosaic, ImpulseGivesTheHandComputedKernelWeights) {
    // Phase R G, impulse 160 at the red site (4, 4) of a 9 x 9 mosaic.
    std::vector<int> m(81, 0);
    m[4 * 9 + 4] = 160;
    const auto rgb = demosaic<std::uint8_t>(m, 9, 9, 0x011);
    const auto at = [&](int r, int c, int ch) {
        return static_cast<int>(rgb[3 * (r * 9 + c) + ch]);
    };
    EXPECT_EQ(at(4, 4, 0), 160);            // native red
    EXPECT_EQ(at(4, 4, 1), 8 * 160 / 16);   // green at red: centre weight 8
    EXPECT_EQ(at(4, 4, 2), 12 * 160 / 16);  // blue at red: diagonal kernel centre 12
    EXPECT_EQ(at(4, 5, 0), 8 * 160 / 16);   // green in a red row: red along the row, weight 8
    EXPECT_EQ(at(4, 6, 1), 0);              // green at red two to the right: weight -2
    EXPECT_EQ(at(5, 4, 0), 8 * 160 / 16);   // green in a blue row: red along the column
    EXPECT_EQ(at(5, 5, 0), 4 * 160 / 16);   // blue site: red on the diagonal, weight 4
    EXPECT_EQ(at(4, 2, 2), 0);              // -3 at two columns: clamped to 0
    EXPECT_EQ(at(2, 4, 1), 0);              // red site two rows up: green weight -2, clamped

    // Impulse 160 at the green site (4, 5) of a red row.
    std::vector<int> g(81, 0);
    g[4 * 9 + 5] = 160;
    const auto rgbG = demosaic<std::uint8_t>(g, 9, 9, 0x011);
    const auto atG = [&](int r, int c, int ch) {
        return static_cast<int>(rgbG[3 * (r * 9 + c) + ch]);
    };
    EXPECT_EQ(atG(4, 5, 1), 160);            // native green
    EXPECT_EQ(atG(4, 5, 0), 10 * 160 / 16);  // red along the row: centre weight 10
    EXPECT_EQ(atG(2, 5, 0), 1 * 160 / 16);   // green two rows up: red along the row, weight 1
    EXPECT_EQ(atG(4, 4, 1), 4 * 160 / 16);   // red site to its left: green weight 4
    EXPECT_EQ(atG(5, 5, 1), 4 * 160 / 16);   // blue site below: green weight 4
}

TEST(Demosaic, EverySampleMatchesThePerSiteTableInEveryPhaseAndDepth) {
    for (int phase : {1, 2, 4, 8}) {
        expectMatchesTable<std::uint8_t>(randomMosaic(13, 11, 255, phase), 13, 11, 0x010 | phase,
                                         255);
        expectMatchesTable<std::uint16_t>(randomMosaic(13, 11, 65535, phase), 13, 11, 0x020 | phase,
                                          65535);
        expectMatchesTable<std::uint16_t>(randomMosaic(12, 9, 65535, phase + 9), 12, 9,
                                          0x040 | phase, 65535);
    }
}

TEST(Demosaic, NeutralSceneIsReproducedInFlatAreasAndCloselyAtABlurredEdge) {
    const cv::Mat scene =
        talonvireo::testing::renderGrey8(talonvireo::testing::edgeScene(1.0, 5.0));
    for (int phase : {1, 2, 4, 8}) {
        cv::Mat grey(scene.size(), CV_8U, cv::Scalar(0));
        ASSERT_EQ(demosaicToGrey(scene.data, scene.cols, scene.rows, 0x010 | phase, grey.data), 0);
        cv::Mat diff;
        cv::absdiff(grey, scene, diff);
        double worstFlat = 0.0;
        double worstEdge = 0.0;
        cv::minMaxLoc(diff.colRange(0, 40), nullptr, &worstFlat);
        cv::minMaxLoc(diff.colRange(40, 60), nullptr, &worstEdge);
        EXPECT_EQ(worstFlat, 0.0) << phase;
        EXPECT_LE(worstEdge, 6.0) << phase;  // 4 to 5 levels seen on a 160-level edge
    }
}

TEST(Demosaic, OneTwoAndFourThreadsGiveIdenticalResults) {
    const std::vector<int> m = randomMosaic(257, 131, 255, 42);
    std::vector<std::uint8_t> in(m.begin(), m.end());
    std::vector<std::vector<std::uint8_t>> results;
    const int before = omp_get_max_threads();
    for (int threads : {1, 2, 4}) {
        omp_set_num_threads(threads);
        std::vector<std::uint8_t> grey(in.size(), 0);
        ASSERT_EQ(demosaicToGrey(in.data(), 257, 131, 0x011, grey.data()), 0);
        results.push_back(grey);
    }
    omp_set_num_threads(before);
    EXPECT_EQ(results[0], results[1]);
    EXPECT_EQ(results[0], results[2]);
}

TEST(Demosaic, NullBuffersAndEmptySizesReturnMinusOne) {
    std::vector<std::uint8_t> in(16, 1);
    std::vector<std::uint8_t> out(48, 9);
    EXPECT_EQ(demosaicBordered(nullptr, 4, 4, 0x011, out.data()), -1);
    EXPECT_EQ(demosaicBordered(in.data(), 4, 4, 0x011, nullptr), -1);
    EXPECT_EQ(demosaicToGrey(in.data(), 4, 4, 0x011, nullptr), -1);
    for (auto wh : {std::pair<int, int>{0, 4}, {4, 0}, {-4, 4}, {4, -1}}) {
        EXPECT_EQ(demosaicBordered(in.data(), wh.first, wh.second, 0x011, out.data()), -1);
        EXPECT_EQ(demosaicToGrey(in.data(), wh.first, wh.second, 0x011, out.data()), -1);
    }
    EXPECT_EQ(out, std::vector<std::uint8_t>(48, 9));
}

TEST(Demosaic, SampleSizeAndPhaseIndexFollowTheirTables) {
    EXPECT_EQ(bytesPerMosaicSample(0x011), 1);
    EXPECT_EQ(bytesPerMosaicSample(0x021), 2);
    EXPECT_EQ(bytesPerMosaicSample(0x041), 2);
    EXPECT_EQ(bytesPerMosaicSample(0x081), 2);
    EXPECT_EQ(bytesPerMosaicSample(0x030), 1);  // 0x010 is tested first
    EXPECT_EQ(bytesPerMosaicSample(0x200), 2);
    EXPECT_EQ(bytesPerMosaicSample(0x000), 1);
    EXPECT_EQ(phaseIndex(8), 0);
    EXPECT_EQ(phaseIndex(4), 1);
    EXPECT_EQ(phaseIndex(1), 2);
    EXPECT_EQ(phaseIndex(2), 3);
    EXPECT_THROW(phaseIndex(3), cv::Exception);
    const int table[4][4] = {{0, 1, 2, 3}, {1, 0, 3, 2}, {3, 2, 1, 0}, {2, 3, 0, 1}};
    for (int p = 0; p < 4; ++p) {
        for (int pos = 0; pos < 4; ++pos) {
            EXPECT_EQ(routineFor(p, pos), table[p][pos]);
        }
    }
}

}  // namespace
