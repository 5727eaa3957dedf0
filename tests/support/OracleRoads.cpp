#include "OracleRoads.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include <opencv2/imgproc.hpp>

namespace talonvireo {
namespace testing {

namespace {
using Kernel = std::array<std::array<int, 5>, 5>;

// Green at red or blue; the wanted colour left and right; above and below; on the diagonals.
constexpr Kernel kGreenAtChroma = {
    {{0, 0, -2, 0, 0}, {0, 0, 4, 0, 0}, {-2, 4, 8, 4, -2}, {0, 0, 4, 0, 0}, {0, 0, -2, 0, 0}}};
constexpr Kernel kRowNeighbours = {
    {{0, 0, 1, 0, 0}, {0, -2, 0, -2, 0}, {-2, 8, 10, 8, -2}, {0, -2, 0, -2, 0}, {0, 0, 1, 0, 0}}};
constexpr Kernel kColumnNeighbours = {
    {{0, 0, -2, 0, 0}, {0, -2, 8, -2, 0}, {1, 0, 10, 0, 1}, {0, -2, 8, -2, 0}, {0, 0, -2, 0, 0}}};
constexpr Kernel kDiagonalNeighbours = {
    {{0, 0, -3, 0, 0}, {0, 4, 0, 4, 0}, {-3, 0, 12, 0, -3}, {0, 4, 0, 4, 0}, {0, 0, -3, 0, 0}}};

int applyKernel(const cv::Mat& bordered, int row, int col, const Kernel& k) {
    int sum = 0;
    for (int dy = -2; dy <= 2; ++dy) {
        for (int dx = -2; dx <= 2; ++dx) {
            sum += k[dy + 2][dx + 2] * bordered.at<std::uint8_t>(row + dy, col + dx);
        }
    }
    if (sum <= 0) {
        return 0;
    }
    return std::min(sum / 16, 255);
}

enum Colour { kRed, kGreen, kBlue };

// The colour of mosaic sample (row, col) for a phase index.
Colour colourAt(int phaseIdx, int row, int col) {
    // First row's two colours and second row's two colours per phase.
    static const Colour kCells[4][4] = {
        {kBlue, kGreen, kGreen, kRed},
        {kGreen, kBlue, kRed, kGreen},
        {kRed, kGreen, kGreen, kBlue},
        {kGreen, kRed, kBlue, kGreen},
    };
    return kCells[phaseIdx][2 * (row & 1) + (col & 1)];
}

int edgeAverage(int a, int b) {
    return (a + b) >> 1;
}
}  // namespace

std::uint8_t oracleUnpack(std::uint16_t word, int bits) {
    if (bits == 10) {
        static const std::array<std::uint8_t, 1024> table = [] {
            std::array<std::uint8_t, 1024> t{};
            for (int i = 0; i < 1024; ++i) {
                t[i] = static_cast<std::uint8_t>(i >> 2);
            }
            return t;
        }();
        return table[std::min<int>(word, 1023)];
    }
    if (bits == 14) {
        return static_cast<std::uint8_t>((word >> 6) & 0xFF);
    }
    return static_cast<std::uint8_t>(word >> 8);
}

cv::Mat oracleMosaic(const cv::Mat& words, int bits) {
    cv::Mat mosaic(words.size(), CV_8UC1);
    for (int r = 0; r < words.rows; ++r) {
        for (int c = 0; c < words.cols; ++c) {
            mosaic.at<std::uint8_t>(r, c) = oracleUnpack(words.at<std::uint16_t>(r, c), bits);
        }
    }
    return mosaic;
}

cv::Mat oracleMalvarGrey(const cv::Mat& words, int bits, int phaseIdx) {
    const cv::Mat mosaic = oracleMosaic(words, bits);
    cv::Mat bordered;
    cv::copyMakeBorder(mosaic, bordered, 2, 2, 2, 2, cv::BORDER_REFLECT_101);
    cv::Mat rgb(mosaic.size(), CV_8UC3);
    for (int r = 0; r < mosaic.rows; ++r) {
        for (int c = 0; c < mosaic.cols; ++c) {
            const int br = r + 2;
            const int bc = c + 2;
            const int own = bordered.at<std::uint8_t>(br, bc);
            const auto k = [&](const Kernel& kernel) {
                return applyKernel(bordered, br, bc, kernel);
            };
            int red = 0;
            int green = 0;
            int blue = 0;
            switch (colourAt(phaseIdx, r, c)) {
                case kRed:
                    red = own;
                    green = k(kGreenAtChroma);
                    blue = k(kDiagonalNeighbours);
                    break;
                case kBlue:
                    blue = own;
                    green = k(kGreenAtChroma);
                    red = k(kDiagonalNeighbours);
                    break;
                case kGreen: {
                    green = own;
                    // Red beside the sample (in its row) or above and below it.
                    const bool redInRow = colourAt(phaseIdx, r, c ^ 1) == kRed;
                    red = k(redInRow ? kRowNeighbours : kColumnNeighbours);
                    blue = k(redInRow ? kColumnNeighbours : kRowNeighbours);
                    break;
                }
            }
            rgb.at<cv::Vec3b>(r, c) =
                cv::Vec3b(static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
                          static_cast<std::uint8_t>(blue));
        }
    }
    cv::Mat grey;
    cv::cvtColor(rgb, grey, cv::COLOR_RGB2GRAY);
    return grey;
}

cv::Mat oracleEdgeDirectedGrey(const cv::Mat& words, int bits, int rowShift, int colShift) {
    const cv::Mat m = oracleMosaic(words, bits);
    const int w = m.cols;
    const int h = m.rows;
    const auto at = [&](int r, int c) { return static_cast<int>(m.at<std::uint8_t>(r, c)); };
    const auto redRow = [&](int r) { return ((r + rowShift) & 1) == 0; };
    const auto redCol = [&](int c) { return ((c + colShift) & 1) == 0; };
    // The other index of a sample's 2 x 2 cell; past the end the same colour two back; alone,
    // the sample itself.
    const auto partner = [](int i, int extent) {
        int p = (i % 2 == 0) ? i + 1 : i - 1;
        if (p >= extent) {
            p = i - 1;
        }
        return p < 0 ? i : p;
    };
    cv::Mat grey(m.size(), CV_8UC1);
    for (int r = 0; r < h; ++r) {
        for (int c = 0; c < w; ++c) {
            int red;
            int green;
            int blue;
            const bool chroma = redRow(r) == redCol(c);
            const bool borderRow = r == 0 || r == h - 1;
            const bool borderCol = c == 0 || c == w - 1;
            if (borderRow || borderCol) {
                const int pr = partner(r, h);
                const int pc = partner(c, w);
                if (chroma) {
                    // Green from the partner along the border: vertical in the first and last
                    // columns, horizontal in the first and last rows (corners included).
                    green = borderRow ? at(r, pc) : at(pr, c);
                    const int own = at(r, c);
                    const int opposite = at(pr, pc);
                    red = redRow(r) ? own : opposite;
                    blue = redRow(r) ? opposite : own;
                } else {
                    green = at(r, c);
                    red = redRow(r) ? at(r, pc) : at(pr, c);
                    blue = redRow(r) ? at(pr, c) : at(r, pc);
                }
            } else if (chroma) {
                const int west = at(r, c - 1), east = at(r, c + 1);
                const int north = at(r - 1, c), south = at(r + 1, c);
                const int nw = at(r - 1, c - 1), ne = at(r - 1, c + 1), sw = at(r + 1, c - 1);
                green = std::abs(west - east) <= std::abs(north - south)
                            ? edgeAverage(west, east)
                            : edgeAverage(north, south);
                const int opposite = std::abs(nw - ne) > std::abs(nw - sw) ? edgeAverage(nw, sw)
                                                                           : edgeAverage(nw, ne);
                red = redRow(r) ? at(r, c) : opposite;
                blue = redRow(r) ? opposite : at(r, c);
            } else {
                green = at(r, c);
                const int inRow = edgeAverage(at(r, c - 1), at(r, c + 1));
                const int inColumn = edgeAverage(at(r - 1, c), at(r + 1, c));
                red = redRow(r) ? inRow : inColumn;
                blue = redRow(r) ? inColumn : inRow;
            }
            grey.at<std::uint8_t>(r, c) =
                static_cast<std::uint8_t>((117 * blue + 601 * green + 306 * red) >> 10);
        }
    }
    return grey;
}

}  // namespace testing
}  // namespace talonvireo
