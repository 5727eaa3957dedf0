// Whole-frame measurement: every member on its project's rendered raw frame (4000 x 3000, or
// 7680 x 4320 for the 8K members), and the stages of one call one by one: unpacking, the two
// roads to grey, each locate function, and the 52 regions.
#include <benchmark/benchmark.h>

#include <functional>
#include <vector>

#include <opencv2/core.hpp>

#include "ChartFrame.h"
#include "api/InternalLocate.h"
#include "convert/Demosaic.h"
#include "convert/ImageTransform.h"
#include "convert/RawUnpack.h"
#include "talonvireo/talonVireoSFR.h"

namespace {
using namespace talonvireo;
using bench::rawChart;
using render::ChartProject;

// One call of a member on a frame: its status.
using Call = std::function<int(unsigned char*, int, int)>;

template <class Record>
Call call(int (*member)(unsigned char*, int, int, const SFRParam&, Record&)) {
    return [member](unsigned char* img, int width, int height) {
        SFRParam param{4.0f, 80, 100};
        Record result{};
        const int status = member(img, width, height, param, result);
        benchmark::DoNotOptimize(result.edges[0].sfrHalfNyquist);
        return status;
    };
}

void BM_Member(benchmark::State& state, const Call& member, ChartProject project, int bits,
               int width, int height) {
    cv::Mat raw = rawChart(project, bits, width, height);
    for (auto _ : state) {
        if (member(raw.data, width, height) != 0) {
            state.SkipWithError("measurement failed");
            break;
        }
    }
}

constexpr int W = 4000, H = 3000;

void BM_StageUnpack(benchmark::State& state,
                    void (*unpack)(const unsigned short*, unsigned char*, cv::Size)) {
    const cv::Mat raw = rawChart(ChartProject::HLX6C, 16, W, H);
    cv::Mat mosaic(H, W, CV_8UC1);
    for (auto _ : state) {
        unpack(raw.ptr<unsigned short>(), mosaic.data, raw.size());
        benchmark::DoNotOptimize(mosaic.data);
    }
}

cv::Mat mosaic8(ChartProject project) {
    const cv::Mat raw = rawChart(project, 10, W, H);
    cv::Mat mosaic(H, W, CV_8UC1);
    convert::unpackRaw10(raw.ptr<unsigned short>(), mosaic.data, raw.size());
    return mosaic;
}

void BM_StageGreyDemosaic17(benchmark::State& state) {
    const cv::Mat mosaic = mosaic8(ChartProject::HLX6C);
    cv::Mat grey(H, W, CV_8UC1);
    for (auto _ : state) {
        convert::demosaicToGrey(mosaic.data, W, H, 17, grey.data);
        benchmark::DoNotOptimize(grey.data);
    }
}

void BM_StageGreyTransform(benchmark::State& state) {
    const cv::Mat mosaic = mosaic8(ChartProject::HLX6C);
    cv::Mat grey(H, W, CV_8UC1);
    for (auto _ : state) {
        libs::TalonUtil::ImageTransform transform;
        transform.mosaicToGrey(mosaic.data, grey.data, W, H, 0);
        benchmark::DoNotOptimize(grey.data);
    }
}

cv::Mat greyOf(ChartProject project, int width, int height) {
    const cv::Mat raw = rawChart(project, 10, width, height);
    cv::Mat mosaic(height, width, CV_8UC1), grey(height, width, CV_8UC1);
    convert::unpackRaw10(raw.ptr<unsigned short>(), mosaic.data, raw.size());
    convert::demosaicToGrey(mosaic.data, width, height, 17, grey.data);
    return grey;
}

template <class Param, class Result>
Call locateCall(int (*locate)(unsigned char*, int, int, Param, Result&)) {
    return [locate](unsigned char* img, int width, int height) {
        Result result{};
        const int status = locate(img, width, height, Param{100}, result);
        benchmark::DoNotOptimize(result.centres[0].x);
        return status;
    };
}

void BM_StageLocate(benchmark::State& state, const Call& locate, ChartProject project, int width,
                    int height) {
    cv::Mat grey = greyOf(project, width, height);
    for (auto _ : state) {
        locate(grey.data, width, height);
    }
}

// The 52 regions of an HLX6C call: cut 80 x 80 round every located centre and measure.
void BM_StageRegions(benchmark::State& state) {
    cv::Mat grey = greyOf(ChartProject::HLX6C, W, H);
    std::vector<cv::Point> centres;
    for (auto locate : {&api::locateHlx6c, &api::locateHlx6c2}) {
        K74T16BX::Result r{};
        locate(grey.data, W, H, {100}, r);
        for (int k = 0; k < 26; ++k) {
            centres.emplace_back(static_cast<int>(r.centres[k].x),
                                 static_cast<int>(r.centres[k].y));
        }
    }
    tagSFRResult sfr{};
    sfr.nyquistDivisor = 4.0;
    for (auto _ : state) {
        for (const cv::Point& c : centres) {
            cv::Mat region = grey(cv::Rect(c.x - 40, c.y - 40, 80, 80)).clone();
            TalonCalSFR(region.data, 80, 80, 256, sfr);
        }
        benchmark::DoNotOptimize(sfr.sfrHalfNyquist[0]);
    }
}

}  // namespace

BENCHMARK_CAPTURE(BM_Member, talonvireoSFR_SFRResult, call<SFRResult>(&talonvireoSFR),
                  ChartProject::K31R22BX, 10, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Member, talonvireoSFR_SFRResult_HLX5, call<SFRResult_HLX5>(&talonvireoSFR),
                  ChartProject::K74T16BX, 10, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Member, talonvireoSFR_raw14_SFRResult, call<SFRResult>(&talonvireoSFR_raw14),
                  ChartProject::K31R22BX, 14, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Member, talonvireoSFR_raw14_SFRResult_HLX5,
                  call<SFRResult_HLX5>(&talonvireoSFR_raw14), ChartProject::K74T16BX, 14, 4000,
                  3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Member, talonvireoSFR_raw16_SFRResult_HLX5,
                  call<SFRResult_HLX5>(&talonvireoSFR_raw16), ChartProject::K74T16BX, 16, 4000,
                  3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Member, talonvireoSFR_raw16_HLX5_8K_SFRResult_HLX5,
                  call<SFRResult_HLX5>(&talonvireoSFR_raw16_HLX5_8K), ChartProject::K74T16BX, 16,
                  7680, 4320)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Member, talonvireoSFR_raw10_HLX6C_SFRResult_HLX5,
                  call<SFRResult_HLX5>(&talonvireoSFR_raw10_HLX6C), ChartProject::HLX6C, 10, 4000,
                  3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Member, talonvireoSFR_raw14_HLX6C_SFRResult_HLX5,
                  call<SFRResult_HLX5>(&talonvireoSFR_raw14_HLX6C), ChartProject::HLX6C, 14, 4000,
                  3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Member, talonvireoSFR_raw16_HLX6C_SFRResult_HLX5,
                  call<SFRResult_HLX5>(&talonvireoSFR_raw16_HLX6C), ChartProject::HLX6C, 16, 4000,
                  3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Member, talonvireoSFR_raw16_HLX6C_8K_SFRResult_HLX5,
                  call<SFRResult_HLX5>(&talonvireoSFR_raw16_HLX6C_8K), ChartProject::HLX6C, 16,
                  7680, 4320)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Member, talonvireoSFR_raw10_RQ8_SFRResult_HLX5,
                  call<SFRResult_HLX5>(&talonvireoSFR_raw10_RQ8), ChartProject::K83P09BQ, 10, 4000,
                  3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Member, talonvireoSFR_raw14_RQ8_SFRResult_HLX5,
                  call<SFRResult_HLX5>(&talonvireoSFR_raw14_RQ8), ChartProject::K83P09BQ, 14, 4000,
                  3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Member, talonvireoSFR_raw16_RQ8_SFRResult_HLX5,
                  call<SFRResult_HLX5>(&talonvireoSFR_raw16_RQ8), ChartProject::K83P09BQ, 16, 4000,
                  3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StageUnpack, raw10, &talonvireo::convert::unpackRaw10)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StageUnpack, raw14, &talonvireo::convert::unpackRaw14)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StageUnpack, raw16, &talonvireo::convert::unpackRaw16)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StageGreyDemosaic17)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StageGreyTransform)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StageLocate, K31R22BX, locateCall(&K31R22BX::SFRLocate_K31R22BX),
                  ChartProject::K31R22BX, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StageLocate, K31R22BX_2, locateCall(&K31R22BX::SFRLocate_K31R22BX_2),
                  ChartProject::K31R22BX, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StageLocate, K74T16BX, locateCall(&K74T16BX::SFRLocate_K74T16BX),
                  ChartProject::K74T16BX, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StageLocate, K74T16BX_2, locateCall(&K74T16BX::SFRLocate_K74T16BX_2),
                  ChartProject::K74T16BX, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StageLocate, K83P09BQ, locateCall(&K83P09BQ::SFRLocate_K83P09BQ),
                  ChartProject::K83P09BQ, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StageLocate, K83P09BQ_2, locateCall(&K83P09BQ::SFRLocate_K83P09BQ_2),
                  ChartProject::K83P09BQ, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StageLocate, HLX6C, locateCall(&talonvireo::api::locateHlx6c),
                  ChartProject::HLX6C, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StageLocate, HLX6C_2, locateCall(&talonvireo::api::locateHlx6c2),
                  ChartProject::HLX6C, 4000, 3000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StageLocate, Map8K, locateCall(&talonvireo::api::locateMap8k),
                  ChartProject::K74T16BX, 7680, 4320)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StageLocate, Map8K_2, locateCall(&talonvireo::api::locateMap8k2),
                  ChartProject::K74T16BX, 7680, 4320)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StageLocate, HLX6C_8K, locateCall(&talonvireo::api::locateHlx6c8k),
                  ChartProject::HLX6C, 7680, 4320)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StageLocate, HLX6C_8K_2, locateCall(&talonvireo::api::locateHlx6c8k2),
                  ChartProject::HLX6C, 7680, 4320)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StageRegions)->Unit(benchmark::kMillisecond);
