// The contract of the whole-frame members and the project locate functions: validation,
// statuses, the caller's records untouched on failure, the forced region size of the RQ8
// members, the fixed second-set regions of the HLX6C members, the K31R22BX result slots.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "ChartFrames.h"
#include "render/ChartDesign.h"
#include "render/ChartTruth.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;
using render::ChartProject;
using talonvireo::testing::ChartFrame;
using talonvireo::testing::renderGreyChart;
using talonvireo::testing::renderRawChart;

using HlxMember = int (*)(unsigned char*, int, int, const SFRParam&, SFRResult_HLX5&);
using FullMember = int (*)(unsigned char*, int, int, const SFRParam&, SFRResult&);

struct NamedHlx {
    const char* name;
    HlxMember fn;
    bool rq8;
};

const std::vector<NamedHlx>& hlxMembers() {
    static const std::vector<NamedHlx> members = {
        {"talonvireoSFR", talonvireoSFR, false},
        {"talonvireoSFR_raw14", talonvireoSFR_raw14, false},
        {"talonvireoSFR_raw16", talonvireoSFR_raw16, false},
        {"talonvireoSFR_raw16_HLX5_8K", talonvireoSFR_raw16_HLX5_8K, false},
        {"talonvireoSFR_raw10_HLX6C", talonvireoSFR_raw10_HLX6C, false},
        {"talonvireoSFR_raw14_HLX6C", talonvireoSFR_raw14_HLX6C, false},
        {"talonvireoSFR_raw16_HLX6C", talonvireoSFR_raw16_HLX6C, false},
        {"talonvireoSFR_raw16_HLX6C_8K", talonvireoSFR_raw16_HLX6C_8K, false},
        {"talonvireoSFR_raw10_RQ8", talonvireoSFR_raw10_RQ8, true},
        {"talonvireoSFR_raw14_RQ8", talonvireoSFR_raw14_RQ8, true},
        {"talonvireoSFR_raw16_RQ8", talonvireoSFR_raw16_RQ8, true},
    };
    return members;
}
const FullMember kFullMembers[] = {talonvireoSFR, talonvireoSFR_raw14};

template <class T>
T sentinel() {
    T value;
    std::memset(&value, 0xA5, sizeof(T));
    return value;
}
template <class T>
bool untouched(const T& value) {
    const T expected = sentinel<T>();
    return std::memcmp(&value, &expected, sizeof(T)) == 0;
}

// ---- Inputs and validation ----

TEST(FrameMeasurementContract, ANullImageOrAZeroSizeReturnsMinusOneAndLeavesTheResult) {
    std::vector<unsigned short> frame(64 * 64, 100);
    auto* img = reinterpret_cast<unsigned char*>(frame.data());
    const SFRParam param{4.0f, 20, 30};
    for (const NamedHlx& m : hlxMembers()) {
        for (const auto& [data, w, h] :
             {std::tuple<unsigned char*, int, int>{nullptr, 64, 64}, {img, 0, 64}, {img, 64, 0}}) {
            SFRResult_HLX5 result = sentinel<SFRResult_HLX5>();
            SFRParam p = param;
            EXPECT_EQ(m.fn(data, w, h, p, result), -1) << m.name;
            EXPECT_TRUE(untouched(result)) << m.name;
        }
    }
    for (const FullMember fn : kFullMembers) {
        SFRResult result = sentinel<SFRResult>();
        SFRParam p = param;
        EXPECT_EQ(fn(nullptr, 64, 64, p, result), -1);
        EXPECT_EQ(fn(img, 64, 0, p, result), -1);
        EXPECT_TRUE(untouched(result));
    }
}

TEST(FrameMeasurementContract, ParametersFailingValidationReturnMinusOne) {
    std::vector<unsigned short> frame(200 * 100, 100);
    auto* img = reinterpret_cast<unsigned char*>(frame.data());
    // width 200: markSearchSize may be at most 100.
    const SFRParam refused[] = {
        {4.0f, 0, 50}, {4.0f, 20, 0}, {4.0f, 20, 101}, {4.0f, 51, 50}, {4.0f, -3, 50}};
    for (const NamedHlx& m : hlxMembers()) {
        if (m.rq8) {
            continue;
        }
        for (const SFRParam& p : refused) {
            SFRResult_HLX5 result = sentinel<SFRResult_HLX5>();
            EXPECT_EQ(m.fn(img, 200, 100, p, result), -1)
                << m.name << " roi " << p.roiSize << " mark " << p.markSearchSize;
            EXPECT_TRUE(untouched(result));
        }
    }
    for (const FullMember fn : kFullMembers) {
        for (const SFRParam& p : refused) {
            SFRResult result = sentinel<SFRResult>();
            EXPECT_EQ(fn(img, 200, 100, p, result), -1);
            EXPECT_TRUE(untouched(result));
        }
    }
}

TEST(FrameMeasurementContract, ARegionAsLargeAsTheMarkSizeIsAcceptedOneMoreIsNot) {
    // A blank frame passes validation and then finds no chart: -2, not -1.
    std::vector<unsigned short> frame(400 * 300, 600);
    auto* img = reinterpret_cast<unsigned char*>(frame.data());
    SFRResult_HLX5 result = sentinel<SFRResult_HLX5>();
    EXPECT_EQ(talonvireoSFR_raw10_HLX6C(img, 400, 300, SFRParam{4.0f, 50, 50}, result), -2);
    EXPECT_EQ(talonvireoSFR_raw10_HLX6C(img, 400, 300, SFRParam{4.0f, 51, 50}, result), -1);
    EXPECT_EQ(talonvireoSFR_raw10_HLX6C(img, 400, 300, SFRParam{4.0f, 50, 200}, result), -2);
    EXPECT_EQ(talonvireoSFR_raw10_HLX6C(img, 400, 300, SFRParam{4.0f, 50, 201}, result), -1);
    EXPECT_TRUE(untouched(result));
}

TEST(FrameMeasurementContract, RQ8MembersLeaveRoiSizeAtNinetyAfterEveryCall) {
    std::vector<unsigned short> frame(400 * 300, 600);
    auto* img = reinterpret_cast<unsigned char*>(frame.data());
    for (const NamedHlx& m : hlxMembers()) {
        if (!m.rq8) {
            continue;
        }
        SFRResult_HLX5 result = sentinel<SFRResult_HLX5>();
        SFRParam p{4.0f, 7, 100};
        EXPECT_EQ(m.fn(nullptr, 400, 300, p, result), -1) << m.name;  // refused input
        EXPECT_EQ(p.roiSize, 90);
        p = {4.0f, 7, 89};  // markSearchSize below 90
        EXPECT_EQ(m.fn(img, 400, 300, p, result), -1) << m.name;
        EXPECT_EQ(p.roiSize, 90);
        p = {4.0f, 500, 201};  // above width / 2
        EXPECT_EQ(m.fn(img, 400, 300, p, result), -1) << m.name;
        EXPECT_EQ(p.roiSize, 90);
        p = {4.0f, 1000, 90};  // a roiSize above the mark no longer matters: 90 is used
        EXPECT_EQ(m.fn(img, 400, 300, p, result), -2) << m.name;
        EXPECT_EQ(p.roiSize, 90);
        EXPECT_TRUE(untouched(result));
    }
}

// ---- Successful calls ----

TEST(FrameMeasurementContract, ASuccessfulCallFillsEveryEntryAndNoDivisorMeansNoCustomFigure) {
    cv::Mat raw = renderRawChart(ChartProject::HLX6C, 10);
    SFRResult_HLX5 result = sentinel<SFRResult_HLX5>();
    ASSERT_EQ(talonvireoSFR_raw10_HLX6C(raw.data, 4000, 3000, SFRParam{0.0f, 80, 100}, result), 0);
    for (const SFREdgeResult& e : result.edges) {
        EXPECT_GT(e.x, 0);
        EXPECT_GT(e.y, 0);
        EXPECT_GT(e.sfrHalfNyquist, 0.0f);
        EXPECT_GT(e.sfrQuarterNyquist, e.sfrHalfNyquist);
        EXPECT_EQ(e.sfrCustom, 0.0f);
    }

    cv::Mat k31 = renderRawChart(ChartProject::K31R22BX, 10);
    SFRResult full = sentinel<SFRResult>();
    ASSERT_EQ(talonvireoSFR(k31.data, 4000, 3000, SFRParam{0.0f, 80, 100}, full), 0);
    for (const SFREdgeResult& e : full.edges) {
        EXPECT_GT(e.x, 0);
        EXPECT_GT(e.sfrHalfNyquist, 0.0f);
        EXPECT_EQ(e.sfrCustom, 0.0f);
    }
}

TEST(FrameMeasurementContract, HLX6CSecondSetRegionsAreNinetyWhateverRoiSizeSays) {
    cv::Mat raw = renderRawChart(ChartProject::HLX6C, 10);
    SFRResult_HLX5 small{}, large{};
    ASSERT_EQ(talonvireoSFR_raw10_HLX6C(raw.data, 4000, 3000, SFRParam{4.0f, 60, 100}, small), 0);
    ASSERT_EQ(talonvireoSFR_raw10_HLX6C(raw.data, 4000, 3000, SFRParam{4.0f, 100, 100}, large), 0);
    int firstSetDiffers = 0;
    for (int i = 0; i < 52; ++i) {
        const bool same = small.edges[i].sfrHalfNyquist == large.edges[i].sfrHalfNyquist &&
                          small.edges[i].sfrQuarterNyquist == large.edges[i].sfrQuarterNyquist;
        if (i >= 26) {
            EXPECT_TRUE(same) << "entry " << i;
        } else {
            firstSetDiffers += same ? 0 : 1;
        }
    }
    EXPECT_GT(firstSetDiffers, 20);
}

TEST(FrameMeasurementContract, ACentreNearTheLeftBorderIsMinusTwoNearTheRightMinusOne) {
    // K74T16BX: the leftmost edge centre (ring crossing of the (255, 410) corner) lies near
    // x = 155. Moved 120 px left it sits 35 px from the border: a region of 80 starts at -5.
    render::ChartTransform left;
    left.shiftX = -120.0;
    cv::Mat moved = renderRawChart(ChartProject::K74T16BX, 16, 4000, 3000, left);
    SFRResult_HLX5 result = sentinel<SFRResult_HLX5>();
    EXPECT_EQ(talonvireoSFR_raw16(moved.data, 4000, 3000, SFRParam{4.0f, 80, 100}, result), -2);
    EXPECT_TRUE(untouched(result));
    // Unmoved, in a frame cut 20 px right of the rightmost centre: its region of 80 passes
    // the left/top test and runs 20 px past the right border.
    const render::ChartDesign design = render::designChart(ChartProject::K74T16BX);
    double rightmost = 0.0;
    for (int layout = 0; layout < 2; ++layout) {
        const render::LayoutTruth truth = render::layoutTruth(design, layout, {});
        for (const render::EdgeTruth& e : truth.edges) {
            rightmost = std::max(rightmost, render::edgeCentre(design, truth, e, {}, 100).x);
        }
    }
    const int width = static_cast<int>(rightmost) + 20;
    cv::Mat cut = renderRawChart(ChartProject::K74T16BX, 16)(cv::Rect(0, 0, width, 3000)).clone();
    EXPECT_EQ(talonvireoSFR_raw16(cut.data, width, 3000, SFRParam{4.0f, 80, 100}, result), -1);
    EXPECT_TRUE(untouched(result));
}

TEST(FrameMeasurementContract, FourThreadsAtOnceGiveExactlyTheSequentialResults) {
    // Four frames, four members, three record layouts and both grey roads.
    struct Job {
        cv::Mat raw;
        std::function<int(SFRResult_HLX5&, SFRResult&)> run;
    };
    std::vector<Job> jobs;
    const SFRParam param{4.0f, 80, 100};
    jobs.push_back({renderRawChart(ChartProject::HLX6C, 10), {}});
    jobs.push_back({renderRawChart(ChartProject::K83P09BQ, 16), {}});
    jobs.push_back({renderRawChart(ChartProject::K74T16BX, 14), {}});
    jobs.push_back({renderRawChart(ChartProject::K31R22BX, 10), {}});
    jobs[0].run = [&](SFRResult_HLX5& r, SFRResult&) {
        return talonvireoSFR_raw10_HLX6C(jobs[0].raw.data, 4000, 3000, param, r);
    };
    jobs[1].run = [&](SFRResult_HLX5& r, SFRResult&) {
        SFRParam p = param;
        return talonvireoSFR_raw16_RQ8(jobs[1].raw.data, 4000, 3000, p, r);
    };
    jobs[2].run = [&](SFRResult_HLX5& r, SFRResult&) {
        return talonvireoSFR_raw14(jobs[2].raw.data, 4000, 3000, param, r);
    };
    jobs[3].run = [&](SFRResult_HLX5&, SFRResult& r) {
        return talonvireoSFR(jobs[3].raw.data, 4000, 3000, param, r);
    };
    struct Outcome {
        int status = 99;
        SFRResult_HLX5 hlx{};
        SFRResult full{};
    };
    std::vector<Outcome> sequential(jobs.size()), concurrent(jobs.size());
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        sequential[i].status = jobs[i].run(sequential[i].hlx, sequential[i].full);
        ASSERT_EQ(sequential[i].status, 0) << "job " << i;
    }
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        threads.emplace_back(
            [&, i] { concurrent[i].status = jobs[i].run(concurrent[i].hlx, concurrent[i].full); });
    }
    for (std::thread& t : threads) {
        t.join();
    }
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        EXPECT_EQ(concurrent[i].status, 0);
        EXPECT_EQ(std::memcmp(&concurrent[i].hlx, &sequential[i].hlx, sizeof(SFRResult_HLX5)), 0)
            << "job " << i;
        EXPECT_EQ(std::memcmp(&concurrent[i].full, &sequential[i].full, sizeof(SFRResult)), 0)
            << "job " << i;
    }
}

// ---- The project locate functions ----

TEST(ProjectLocate, ANullImageOrZeroSizeReturnsMinusOneAndLeavesTheResult) {
    std::vector<unsigned char> frame(64 * 64, 200);
    K31R22BX::Result a = sentinel<K31R22BX::Result>();
    K74T16BX::Result b = sentinel<K74T16BX::Result>();
    K83P09BQ::Result c = sentinel<K83P09BQ::Result>();
    EXPECT_EQ(K31R22BX::SFRLocate_K31R22BX(nullptr, 64, 64, {100}, a), -1);
    EXPECT_EQ(K31R22BX::SFRLocate_K31R22BX_2(frame.data(), 0, 64, {100}, a), -1);
    EXPECT_EQ(K74T16BX::SFRLocate_K74T16BX(frame.data(), 64, 0, {100}, b), -1);
    EXPECT_EQ(K74T16BX::SFRLocate_K74T16BX_2(nullptr, 64, 64, {100}, b), -1);
    EXPECT_EQ(K83P09BQ::SFRLocate_K83P09BQ(nullptr, 0, 0, {100}, c), -1);
    EXPECT_EQ(K83P09BQ::SFRLocate_K83P09BQ_2(frame.data(), 0, 0, {100}, c), -1);
    EXPECT_TRUE(untouched(a));
    EXPECT_TRUE(untouched(b));
    EXPECT_TRUE(untouched(c));
}

TEST(ProjectLocate, NoChartFoundReturnsZeroAndWritesNothing) {
    // A blank frame: the corner search finds nothing (an exception inside: -1) or the read-out
    // is empty (0); either way nothing is written.
    std::vector<unsigned char> blank(4000 * 3000, 200);
    K74T16BX::Result b = sentinel<K74T16BX::Result>();
    K83P09BQ::Result c = sentinel<K83P09BQ::Result>();
    K74T16BX::SFRLocate_K74T16BX(blank.data(), 4000, 3000, {100}, b);
    K83P09BQ::SFRLocate_K83P09BQ_2(blank.data(), 4000, 3000, {100}, c);
    EXPECT_TRUE(untouched(b));
    EXPECT_TRUE(untouched(c));
    // The chart is there and its corners are placed, but with a mark size of 0 no ring can
    // be drawn: the first edge is not found, the read-out is empty, and the call returns 0.
    ChartFrame map;
    map.project = ChartProject::K74T16BX;
    map.sigma = 0.8;
    cv::Mat grey = renderGreyChart(map);
    K74T16BX::Result d = sentinel<K74T16BX::Result>();
    EXPECT_EQ(K74T16BX::SFRLocate_K74T16BX(grey.data, 4000, 3000, {0}, d), 0);
    EXPECT_TRUE(untouched(d));
}

TEST(ProjectLocate, K31R22BXPlacesLocatedEdgesThroughItsReorderingTables) {
    const render::ChartDesign design = render::designChart(ChartProject::K31R22BX);
    ChartFrame frame;
    frame.project = ChartProject::K31R22BX;
    frame.sigma = 0.8;
    cv::Mat grey = renderGreyChart(frame);
    const auto centreOf = [&](int layout, int edge) {
        const render::LayoutTruth truth = render::layoutTruth(design, layout, {});
        return render::edgeCentre(design, truth, truth.edges[edge], {}, 100);
    };
    const auto near = [](const K31R22BX::Centre& c, cv::Point2d p) {
        return std::hypot(c.x - p.x, c.y - p.y) <= 3.0;
    };
    K31R22BX::Result first{}, second{};
    ASSERT_EQ(K31R22BX::SFRLocate_K31R22BX(grey.data, 4000, 3000, {100}, first), 0);
    ASSERT_EQ(K31R22BX::SFRLocate_K31R22BX_2(grey.data, 4000, 3000, {100}, second), 0);
    // First table: located edge 4 goes to slot 7 (T1[4] = 8), edge 6 to slot 4 (T1[6] = 5).
    EXPECT_TRUE(near(first.centres[7], centreOf(0, 4)));
    EXPECT_TRUE(near(first.centres[4], centreOf(0, 6)));
    EXPECT_TRUE(near(first.centres[0], centreOf(0, 0)));
    // Second table: located edges 0 and 1 swap places.
    EXPECT_TRUE(near(second.centres[1], centreOf(1, 0)));
    EXPECT_TRUE(near(second.centres[0], centreOf(1, 1)));
    EXPECT_TRUE(near(second.centres[2], centreOf(1, 2)));
}

}  // namespace
