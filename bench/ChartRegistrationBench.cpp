// Registering a 9 x 12 grid description (squares of side 190 at a pitch of 333, turned 5 to 12
// degrees alternately either way) to the 108 quads a 4000 x 3000 frame shows of it: turned 3
// degrees, 5 % barrel, corners off by 0.1 px. Upright and upside down; and with 40 clutter quads.
#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <vector>

#include <opencv2/core.hpp>

#include "detect/Quad.h"
#include "locate/ChartRegistrationFit.h"
#include "talonvireo/ChartDescription.h"
#include "talonvireo/ChartRegistration.h"

namespace {
using namespace talonvireo;

constexpr double kPi = 3.14159265358979323846;
constexpr int kWidth = 4000;
constexpr int kHeight = 3000;

ChartShape turnedSquare(double cx, double cy, double side, double turnDeg) {
    const double c = std::cos(turnDeg * kPi / 180.0), s = std::sin(turnDeg * kPi / 180.0);
    const double h = 0.5 * side;
    const double local[4][2] = {{-h, -h}, {h, -h}, {h, h}, {-h, h}};
    ChartShape shape;
    for (int i = 0; i < 4; ++i) {
        shape.corners[i] = {cx + c * local[i][0] - s * local[i][1],
                            cy + s * local[i][0] + c * local[i][1]};
    }
    return shape;
}

ChartDescription grid() {
    ChartDescription d;
    cv::RNG rng(1907);
    for (int r = 0; r < 9; ++r) {
        for (int c = 0; c < 12; ++c) {
            const double turn = rng.uniform(5.0, 12.0) * ((r + c) % 2 ? -1.0 : 1.0);
            d.shapes.push_back(turnedSquare(333.0 * (c + 0.5), 333.0 * (r + 0.5), 190.0, turn));
        }
    }
    return d;
}

detect::Quad quadOf(std::array<cv::Point2d, 4> p, int polarity) {
    int first = 0;
    for (int i = 1; i < 4; ++i) {
        if (p[i].x + p[i].y < p[first].x + p[first].y) {
            first = i;
        }
    }
    detect::Quad q;
    for (int j = 0; j < 4; ++j) {
        q.corners[j] = p[(j + first) % 4];
    }
    q.polarity = polarity;
    return q;
}

std::vector<detect::Quad> gridQuads(const ChartDescription& d, double turnDeg, int clutter) {
    ChartRegistration truth = undistortedRegistration(kWidth, kHeight);
    const double c = std::cos(turnDeg * kPi / 180.0), s = std::sin(turnDeg * kPi / 180.0);
    const double cx = 333.0 * 6.0, cy = 333.0 * 4.5;
    const double h[9] = {
        c, -s, truth.centreX - (c * cx - s * cy), s, c, truth.centreY - (s * cx + c * cy), 0, 0, 1};
    std::copy(h, h + 9, truth.homography);
    truth.k1 = -0.05;
    cv::RNG rng(5);
    std::vector<detect::Quad> quads;
    for (const ChartShape& shape : d.shapes) {
        std::array<cv::Point2d, 4> p;
        for (int i = 0; i < 4; ++i) {
            const ChartPoint f = chartToFrame(truth, shape.corners[i]);
            p[i] = {f.x + rng.gaussian(0.1), f.y + rng.gaussian(0.1)};
        }
        quads.push_back(quadOf(p, 1));
    }
    for (int i = 0; i < clutter; ++i) {
        const ChartShape junk = turnedSquare(
            rng.uniform(100.0, kWidth - 100.0), rng.uniform(100.0, kHeight - 100.0),
            i % 2 ? rng.uniform(30.0, 80.0) : rng.uniform(420.0, 600.0), rng.uniform(-45.0, 45.0));
        std::array<cv::Point2d, 4> p;
        for (int k = 0; k < 4; ++k) {
            p[k] = {junk.corners[k].x, junk.corners[k].y};
        }
        quads.push_back(quadOf(p, i % 3 ? 1 : -1));
    }
    return quads;
}

void BM_RegisterGrid(benchmark::State& state, double turnDeg, int clutter) {
    const ChartDescription description = grid();
    const std::vector<detect::Quad> quads = gridQuads(description, turnDeg, clutter);
    ChartRegistration registration;
    std::vector<locate::ShapeMatch> matches;
    for (auto _ : state) {
        const bool ok =
            locate::registerChart(description, quads, kWidth, kHeight, registration, matches);
        benchmark::DoNotOptimize(ok);
        if (!ok) {
            state.SkipWithError("not registered");
            break;
        }
    }
    state.counters["matched"] = static_cast<double>(matches.size());
    state.counters["rms_px"] = registration.residualRms;
}

BENCHMARK_CAPTURE(BM_RegisterGrid, upright, 3.0, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_RegisterGrid, upside_down, 183.0, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_RegisterGrid, clutter_40, 3.0, 40)->Unit(benchmark::kMillisecond);

}  // namespace
