// The edge-directed demosaic behind the image transform toolbox: hand-computed pixels of a
// 6 x 6 RGGB mosaic, a rule-by-rule transcription for even sizes, the other phases, odd sizes.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include "convert/EdgeDirectedDemosaic.h"

namespace {
using namespace talonvireo::convert;

constexpr unsigned char kSentinel = 0xA5;

using Bgra = std::array<int, 4>;

struct Demosaiced {
    int width;
    std::vector<unsigned char> pixels;

    Bgra at(int row, int col) const {
        const std::size_t i = 4 * (static_cast<std::size_t>(row) * width + col);
        return {pixels[i], pixels[i + 1], pixels[i + 2], pixels[i + 3]};
    }
};

// Runs the demosaic into an image pre-filled with a sentinel, so that unwritten bytes show.
Demosaiced demosaic(const std::vector<unsigned char>& mosaic, int width, int height,
                    MosaicPhase phase, FourthByte fourth = FourthByte::Untouched) {
    Demosaiced out{width, std::vector<unsigned char>(mosaic.size() * 4, kSentinel)};
    EXPECT_TRUE(
        demosaicEdgeDirected(mosaic.data(), out.pixels.data(), width, height, phase, fourth));
    return out;
}

// Exactly width * height bytes (no spare capacity), so that the address sanitizer sees any
// access past the image.
std::vector<unsigned char> randomMosaic(int width, int height, unsigned seed) {
    std::mt19937 rng(seed);
    std::vector<unsigned char> m(static_cast<std::size_t>(width) * height);
    for (auto& sample : m) {
        sample = static_cast<unsigned char>(rng());
    }
    return m;
}

// The rules for an RGGB mosaic of even width and height, transcribed step by step in the
// order they are stated: columns, then rows (overwriting the corners), then the interior.
std::vector<unsigned char> transcribedRggb(const std::vector<unsigned char>& m, int w, int h) {
    std::vector<unsigned char> out(m.size() * 4, kSentinel);
    auto s = [&](int r, int c) { return static_cast<int>(m[r * w + c]); };
    auto put = [&](int r, int c, int blue, int green, int red, int fourth) {
        unsigned char* p = &out[4 * (r * w + c)];
        p[0] = static_cast<unsigned char>(blue);
        p[1] = static_cast<unsigned char>(green);
        p[2] = static_cast<unsigned char>(red);
        if (fourth >= 0) {
            p[3] = static_cast<unsigned char>(fourth);
        }
    };
    auto avg = [](int a, int b) { return (a + b) >> 1; };
    auto absd = [](int a, int b) { return a > b ? a - b : b - a; };
    for (int r = 0; r < h; ++r) {
        if (r % 2 == 0) {
            put(r, 0, s(r + 1, 1), s(r + 1, 0), s(r, 0), 0);
            put(r, w - 1, s(r + 1, w - 1), s(r, w - 1), s(r, w - 2), 0);
        } else {
            put(r, 0, s(r, 1), s(r, 0), s(r - 1, 0), 0);
            put(r, w - 1, s(r, w - 1), s(r - 1, w - 1), s(r - 1, w - 2), 0);
        }
    }
    for (int c = 0; c < w; ++c) {
        if (c % 2 == 0) {
            put(0, c, s(1, c + 1), s(0, c + 1), s(0, c), 0);
            put(h - 1, c, s(h - 1, c + 1), s(h - 1, c), s(h - 2, c), 0);
        } else {
            put(0, c, s(1, c), s(0, c), s(0, c - 1), 0);
            put(h - 1, c, s(h - 1, c), s(h - 1, c - 1), s(h - 2, c - 1), 0);
        }
    }
    for (int r = 1; r < h - 1; ++r) {
        for (int c = 1; c < w - 1; ++c) {
            const int C = s(r, c), N = s(r - 1, c), S = s(r + 1, c), W = s(r, c - 1),
                      E = s(r, c + 1), NW = s(r - 1, c - 1), NE = s(r - 1, c + 1),
                      SW = s(r + 1, c - 1);
            const int green = absd(W, E) <= absd(N, S) ? avg(W, E) : avg(N, S);
            const int diag = absd(NW, NE) > absd(NW, SW) ? avg(NW, SW) : avg(NW, NE);
            if (r % 2 == 0 && c % 2 == 0) {
                put(r, c, diag, green, C, -1);
            } else if (r % 2 == 1 && c % 2 == 1) {
                put(r, c, C, green, diag, -1);
            } else if (r % 2 == 0) {
                put(r, c, avg(N, S), C, avg(W, E), 0);
            } else {
                put(r, c, avg(W, E), C, avg(N, S), 0);
            }
        }
    }
    return out;
}

// A 6 x 6 RGGB mosaic with uneven values, so that every rule picks distinguishable samples.
const std::vector<unsigned char> kMosaic6 = {
    10,  20, 30,  40,  50,  60,   // R G R G R G
    70,  80, 90,  100, 110, 120,  // G B G B G B
    15,  25, 135, 145, 35,  45,   //
    55,  65, 200, 95,  105, 115,  //
    125, 12, 22,  32,  42,  52,   //
    62,  72, 82,  92,  102, 112,  //
};

TEST(EdgeDirectedDemosaic, LeftColumnRulesOnEvenAndOddRows) {
    const Demosaiced d = demosaic(kMosaic6, 6, 6, kPhaseRggb);
    // (2, 0) even row: red own 15, green below 55, blue below-right 65.
    EXPECT_EQ(d.at(2, 0), (Bgra{65, 55, 15, 0}));
    // (3, 0) odd row: red above 15, green own 55, blue right 65.
    EXPECT_EQ(d.at(3, 0), (Bgra{65, 55, 15, 0}));
    // (1, 0): red above 10, green own 70, blue right 80.
    EXPECT_EQ(d.at(1, 0), (Bgra{80, 70, 10, 0}));
    // (4, 0): red own 125, green below 62, blue below-right 72.
    EXPECT_EQ(d.at(4, 0), (Bgra{72, 62, 125, 0}));
}

TEST(EdgeDirectedDemosaic, RightColumnRulesOnEvenAndOddRows) {
    const Demosaiced d = demosaic(kMosaic6, 6, 6, kPhaseRggb);
    // (2, 5) even row: red left 35, green own 45, blue below 115.
    EXPECT_EQ(d.at(2, 5), (Bgra{115, 45, 35, 0}));
    // (3, 5) odd row: red up-left 35, green above 45, blue own 115.
    EXPECT_EQ(d.at(3, 5), (Bgra{115, 45, 35, 0}));
    // (1, 5): red up-left 50, green above 60, blue own 120.
    EXPECT_EQ(d.at(1, 5), (Bgra{120, 60, 50, 0}));
    // (4, 5): red left 42, green own 52, blue below 112.
    EXPECT_EQ(d.at(4, 5), (Bgra{112, 52, 42, 0}));
}

TEST(EdgeDirectedDemosaic, TopRowRulesOnEvenAndOddColumns) {
    const Demosaiced d = demosaic(kMosaic6, 6, 6, kPhaseRggb);
    // (0, 2) even column: red own 30, green right 40, blue below-right 100.
    EXPECT_EQ(d.at(0, 2), (Bgra{100, 40, 30, 0}));
    // (0, 3) odd column: red left 30, green own 40, blue below 100.
    EXPECT_EQ(d.at(0, 3), (Bgra{100, 40, 30, 0}));
}

TEST(EdgeDirectedDemosaic, BottomRowRulesOnEvenAndOddColumns) {
    const Demosaiced d = demosaic(kMosaic6, 6, 6, kPhaseRggb);
    // (5, 2) even column: red above 22, green own 82, blue right 92.
    EXPECT_EQ(d.at(5, 2), (Bgra{92, 82, 22, 0}));
    // (5, 3) odd column: red up-left 22, green left 82, blue own 92.
    EXPECT_EQ(d.at(5, 3), (Bgra{92, 82, 22, 0}));
}

TEST(EdgeDirectedDemosaic, RowRulesOverwriteTheCornersOfTheColumnPass) {
    const Demosaiced d = demosaic(kMosaic6, 6, 6, kPhaseRggb);
    // (0, 0): top row, green from the right (20), not from below (70).
    EXPECT_EQ(d.at(0, 0), (Bgra{80, 20, 10, 0}));
    // (0, 5): top row odd column: red left 50, green own 60, blue below 120.
    EXPECT_EQ(d.at(0, 5), (Bgra{120, 60, 50, 0}));
    // (5, 0): bottom row even column: red above 125, green own 62, blue right 72.
    EXPECT_EQ(d.at(5, 0), (Bgra{72, 62, 125, 0}));
    // (5, 5): bottom row, green from the left (102), not from above (52).
    EXPECT_EQ(d.at(5, 5), (Bgra{112, 102, 42, 0}));
}

TEST(EdgeDirectedDemosaic, InteriorRedSite) {
    const Demosaiced d = demosaic(kMosaic6, 6, 6, kPhaseRggb);
    // (2, 2): C 135, W 25, E 145, N 90, S 200: |W-E| 120 > |N-S| 110, green (90+200)>>1 = 145.
    // NW 80, NE 100, SW 65: |NW-NE| 20 > |NW-SW| 15, blue (80+65)>>1 = 72. Fourth untouched.
    EXPECT_EQ(d.at(2, 2), (Bgra{72, 145, 135, kSentinel}));
    // (4, 4): C 42, W 32, E 52, N 105, S 102: |W-E| 20 > |N-S| 3, green (105+102)>>1 = 103.
    // NW 95, NE 115, SW 92: |NW-NE| 20 > |NW-SW| 3, blue (95+92)>>1 = 93.
    EXPECT_EQ(d.at(4, 4), (Bgra{93, 103, 42, kSentinel}));
}

TEST(EdgeDirectedDemosaic, InteriorBlueSite) {
    const Demosaiced d = demosaic(kMosaic6, 6, 6, kPhaseRggb);
    // (1, 1): C 80, W 70, E 90, N 20, S 25: |W-E| 20 > |N-S| 5, green (20+25)>>1 = 22.
    // NW 10, NE 30, SW 15: |NW-NE| 20 > |NW-SW| 5, red (10+15)>>1 = 12.
    EXPECT_EQ(d.at(1, 1), (Bgra{80, 22, 12, kSentinel}));
    // (3, 3): C 95, W 200, E 105, N 145, S 32: |W-E| 95 <= |N-S| 113, green (200+105)>>1 = 152.
    // NW 135, NE 35, SW 22: |NW-NE| 100 <= |NW-SW| 113, red (135+35)>>1 = 85.
    EXPECT_EQ(d.at(3, 3), (Bgra{95, 152, 85, kSentinel}));
}

TEST(EdgeDirectedDemosaic, InteriorGreenInRedRow) {
    const Demosaiced d = demosaic(kMosaic6, 6, 6, kPhaseRggb);
    // (2, 3): green 145, blue (N 100 + S 95)>>1 = 97, red (W 135 + E 35)>>1 = 85.
    EXPECT_EQ(d.at(2, 3), (Bgra{97, 145, 85, 0}));
}

TEST(EdgeDirectedDemosaic, InteriorGreenInBlueRow) {
    const Demosaiced d = demosaic(kMosaic6, 6, 6, kPhaseRggb);
    // (3, 2): green 200, blue (W 65 + E 95)>>1 = 80, red (N 135 + S 22)>>1 = 78.
    EXPECT_EQ(d.at(3, 2), (Bgra{80, 200, 78, 0}));
}

TEST(EdgeDirectedDemosaic, GreenTieAtRedSiteTakesTheLeftRightAverage) {
    std::vector<unsigned char> m(36, 50);
    // Red site (2, 2): |W - E| = |N - S| = 40.
    m[2 * 6 + 1] = 60;   // W
    m[2 * 6 + 3] = 100;  // E
    m[1 * 6 + 2] = 10;   // N
    m[3 * 6 + 2] = 50;   // S
    const Demosaiced d = demosaic(m, 6, 6, kPhaseRggb);
    EXPECT_EQ(d.at(2, 2)[1], (60 + 100) >> 1);
}

TEST(EdgeDirectedDemosaic, DiagonalTieAtRedSiteTakesNorthWestAndNorthEast) {
    std::vector<unsigned char> m(36, 50);
    // Red site (2, 2): |NW - NE| = |NW - SW| = 30.
    m[1 * 6 + 1] = 100;  // NW
    m[1 * 6 + 3] = 70;   // NE
    m[3 * 6 + 1] = 130;  // SW
    const Demosaiced d = demosaic(m, 6, 6, kPhaseRggb);
    EXPECT_EQ(d.at(2, 2)[0], (100 + 70) >> 1);
}

TEST(EdgeDirectedDemosaic, DiagonalEstimateNeverLooksDownRight) {
    std::vector<unsigned char> m = randomMosaic(40, 8, 3);
    const Demosaiced before = demosaic(m, 40, 8, kPhaseRggb);
    // Changing the down-right neighbour of red site (2, 20) and blue site (3, 21) leaves
    // their diagonal estimates alone (those samples are other sites' own or edge samples).
    m[3 * 40 + 21] = static_cast<unsigned char>(m[3 * 40 + 21] ^ 0x80);
    m[4 * 40 + 22] = static_cast<unsigned char>(m[4 * 40 + 22] ^ 0x80);
    const Demosaiced after = demosaic(m, 40, 8, kPhaseRggb);
    EXPECT_EQ(after.at(2, 20)[0], before.at(2, 20)[0]);
    EXPECT_EQ(after.at(3, 21)[2], before.at(3, 21)[2]);
}

TEST(EdgeDirectedDemosaic, EvenSizesFollowTheRulesStepByStep) {
    // Widths below and above one 16-pixel vector group, so both the vector and the scalar
    // interior paths run, and partial groups at the row's end.
    for (const auto& [w, h] :
         {std::pair{2, 2}, {6, 6}, {4, 8}, {18, 4}, {34, 6}, {50, 10}, {64, 4}, {200, 6}}) {
        const std::vector<unsigned char> m = randomMosaic(w, h, static_cast<unsigned>(w * h));
        const Demosaiced d = demosaic(m, w, h, kPhaseRggb);
        EXPECT_EQ(d.pixels, transcribedRggb(m, w, h)) << w << "x" << h;
    }
}

TEST(EdgeDirectedDemosaic, ScratchPolicyZeroesTheFourthByteAndChangesNothingElse) {
    const std::vector<unsigned char> m = randomMosaic(50, 10, 9);
    const Demosaiced kept = demosaic(m, 50, 10, kPhaseRggb);
    const Demosaiced zeroed = demosaic(m, 50, 10, kPhaseRggb, FourthByte::Zeroed);
    for (std::size_t i = 0; i < kept.pixels.size(); ++i) {
        if (i % 4 == 3) {
            ASSERT_EQ(zeroed.pixels[i], 0) << i;
        } else {
            ASSERT_EQ(zeroed.pixels[i], kept.pixels[i]) << i;
        }
    }
}

// Samples a constant colour through a phase's mosaic pattern.
std::vector<unsigned char> flatColourMosaic(int w, int h, MosaicPhase phase, int blue, int green,
                                            int red) {
    std::vector<unsigned char> m;
    for (int r = 0; r < h; ++r) {
        for (int c = 0; c < w; ++c) {
            const bool redRow = (r + phase.rowShift) % 2 == 0;
            const bool redCol = (c + phase.colShift) % 2 == 0;
            const int v = redRow && redCol ? red : !redRow && !redCol ? blue : green;
            m.push_back(static_cast<unsigned char>(v));
        }
    }
    return m;
}

TEST(EdgeDirectedDemosaic, EveryPhaseRecoversAFlatColourEverywhere) {
    for (const MosaicPhase phase : {kPhaseRggb, kPhaseGrbg, kPhaseGbrg, kPhaseBggr}) {
        for (const auto& [w, h] : {std::pair{6, 6}, {40, 10}, {7, 5}, {2, 3}, {3, 3}, {37, 9}}) {
            const Demosaiced d = demosaic(flatColourMosaic(w, h, phase, 40, 120, 200), w, h, phase);
            for (int r = 0; r < h; ++r) {
                for (int c = 0; c < w; ++c) {
                    ASSERT_EQ(d.at(r, c), (Bgra{40, 120, 200, d.at(r, c)[3]}))
                        << w << "x" << h << " at " << r << "," << c;
                }
            }
        }
    }
}

// Interior pixels of the other phases equal those of the RGGB rules on the same mosaic moved
// by the phase's shift (a dummy row or column in front).
TEST(EdgeDirectedDemosaic, OtherPhasesAreTheRggbRulesShifted) {
    const int w = 40, h = 12;
    const std::vector<unsigned char> m = randomMosaic(w, h, 21);
    for (const MosaicPhase phase : {kPhaseGrbg, kPhaseGbrg, kPhaseBggr}) {
        const int sw = w + phase.colShift, sh = h + phase.rowShift;
        std::vector<unsigned char> shifted(static_cast<std::size_t>(sw) * sh, 0);
        for (int r = 0; r < h; ++r) {
            for (int c = 0; c < w; ++c) {
                shifted[(r + phase.rowShift) * sw + c + phase.colShift] = m[r * w + c];
            }
        }
        const Demosaiced d = demosaic(m, w, h, phase);
        const Demosaiced reference = demosaic(shifted, sw, sh, kPhaseRggb);
        for (int r = 1; r < h - 1; ++r) {
            for (int c = 1; c < w - 1; ++c) {
                ASSERT_EQ(d.at(r, c), reference.at(r + phase.rowShift, c + phase.colShift))
                    << phase.rowShift << phase.colShift << " at " << r << "," << c;
            }
        }
    }
}

TEST(EdgeDirectedDemosaic, OddSizesTakeTheNearestSameColourSample) {
    // 5 x 5 RGGB: the last row and column are red rows/columns whose cell partner is missing.
    std::vector<unsigned char> m;
    for (int i = 0; i < 25; ++i) {
        m.push_back(static_cast<unsigned char>(10 + 7 * i));  // (r, c) = 10 + 35 r + 7 c
    }
    const Demosaiced d = demosaic(m, 5, 5, kPhaseRggb);
    // (0, 4) red, top row: green from the right is missing, so from the left (0, 3) = 31;
    // blue from below-right is missing, so below-left (1, 3) = 66.
    EXPECT_EQ(d.at(0, 4), (Bgra{66, 31, 38, 0}));
    // (4, 0) red, bottom row: green right (4, 1) = 157; blue below-right missing, so
    // up-right (3, 1) = 122.
    EXPECT_EQ(d.at(4, 0), (Bgra{122, 157, 150, 0}));
    // (4, 4) red corner: green left (4, 3) = 171, blue up-left (3, 3) = 136.
    EXPECT_EQ(d.at(4, 4), (Bgra{136, 171, 178, 0}));
    // (2, 4) red, last column: green from above/below along the border: below (3, 4) = 143;
    // blue from (3, 5), missing, so (3, 3) = 136.
    EXPECT_EQ(d.at(2, 4), (Bgra{136, 143, 108, 0}));
    // (3, 4) green in a blue row, last column: blue from the right is missing, so the left
    // (3, 3) = 136; red above (2, 4) = 108.
    EXPECT_EQ(d.at(3, 4), (Bgra{136, 143, 108, 0}));
}

TEST(EdgeDirectedDemosaic, OddSizesAwayFromTheLastRowAndColumnFollowTheEvenRules) {
    for (const auto& [w, h] : {std::pair{7, 7}, {35, 5}, {5, 9}, {51, 3}}) {
        // The odd image, and one a row and column larger with the same samples in front.
        const std::vector<unsigned char> big = randomMosaic(w + 1, h + 1, 77);
        std::vector<unsigned char> odd;
        for (int r = 0; r < h; ++r) {
            for (int c = 0; c < w; ++c) {
                odd.push_back(big[r * (w + 1) + c]);
            }
        }
        const Demosaiced d = demosaic(odd, w, h, kPhaseRggb);
        const std::vector<unsigned char> reference = transcribedRggb(big, w + 1, h + 1);
        for (int r = 0; r < h - 1; ++r) {
            for (int c = 0; c < w - 1; ++c) {
                const std::size_t j = 4 * (static_cast<std::size_t>(r) * (w + 1) + c);
                ASSERT_EQ(d.at(r, c), (Bgra{reference[j], reference[j + 1], reference[j + 2],
                                            reference[j + 3]}))
                    << w << "x" << h << " at " << r << "," << c;
            }
        }
    }
}

TEST(EdgeDirectedDemosaic, EverySmallSizeStaysInsideItsBuffers) {
    // Exact-size heap buffers: the address sanitizer build reports any read or write past
    // them. Every size up to 9 x 9, every phase.
    for (const MosaicPhase phase : {kPhaseRggb, kPhaseGrbg, kPhaseGbrg, kPhaseBggr}) {
        for (int h = 1; h <= 9; ++h) {
            for (int w = 1; w <= 9; ++w) {
                const std::vector<unsigned char> m = randomMosaic(w, h, 5);
                std::vector<unsigned char> out(4 * m.size(), kSentinel);
                ASSERT_TRUE(demosaicEdgeDirected(m.data(), out.data(), w, h, phase));
                // Every pixel that is not an interior red or blue site has its fourth byte 0.
                EXPECT_EQ(out[3], 0);
                EXPECT_EQ(out.back(), 0);
            }
        }
    }
}

TEST(EdgeDirectedDemosaic, OneByOneImageRepeatsItsSample) {
    const std::vector<unsigned char> m = {77};
    const Demosaiced d = demosaic(m, 1, 1, kPhaseRggb);
    EXPECT_EQ(d.at(0, 0), (Bgra{77, 77, 77, 0}));
}

TEST(EdgeDirectedDemosaic, RefusesNullBuffersAndEmptySizes) {
    std::vector<unsigned char> m(16, 1), out(64, kSentinel);
    EXPECT_FALSE(demosaicEdgeDirected(nullptr, out.data(), 4, 4, kPhaseRggb));
    EXPECT_FALSE(demosaicEdgeDirected(m.data(), nullptr, 4, 4, kPhaseRggb));
    EXPECT_FALSE(demosaicEdgeDirected(m.data(), out.data(), 0, 4, kPhaseRggb));
    EXPECT_FALSE(demosaicEdgeDirected(m.data(), out.data(), 4, -1, kPhaseRggb));
    EXPECT_EQ(out, std::vector<unsigned char>(64, kSentinel));
}

}  // namespace
