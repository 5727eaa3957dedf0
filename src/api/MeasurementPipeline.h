// The one body behind every whole-frame measurement member. The members differ only in
// data: the raw converter, the road to grey, the pair of locate functions and their edge
// count, the result record and the region rule.
#pragma once

#include <cstdint>
#include <cstring>
#include <exception>

#include <opencv2/core.hpp>

#include "api/GreyReduction.h"
#include "api/LocateEntry.h"
#include "convert/WordDepth.h"
#include "locate/IntConversion.h"
#include "talonvireo/MeasurementRecords.h"
#include "talonvireo/RegionSfr.h"

namespace talonvireo {
namespace api {

enum class RegionRule {
    kRoiSize,         // every region roiSize square
    kFixedSecondSet,  // the second layout's regions 90 square whatever roiSize says
    kForced90,        // roiSize forced to 90 in the caller's record; markSearchSize >= 90
};

// Two locate functions, each filling `Edges` centres, both searching the frame downscaled by
// `scale`: the pipeline downscales it once for the two.
template <class ParamT, class ResultT, int Edges>
struct LocatePair {
    using Param = ParamT;
    using Result = ResultT;
    using Locate = int (*)(const LocateImages&, Param, Result&);
    Locate first;
    Locate second;
    double scale;
    static constexpr int kEdges = Edges;
};

inline constexpr int kFixedRegion = 90;
inline constexpr int kPixelFormatGrey8 = 256;

// One region of `side` round the entry's centre: 0 with the entry's figures written, -2 when
// the region starts off the left or top, -3 when it is not measured, -1 for an exception
// (a region past the right or bottom border fails OpenCV's sub-region check).
inline int measureRegion(const cv::Mat& grey, int side, double nyquistDivisor,
                         SFREdgeResult& entry) noexcept {
    try {
        const int left = entry.x - side / 2;
        const int top = entry.y - side / 2;
        // Only the top-left corner and the side are tested, as the members always have.
        if (left < 0 || top < 0 || side > grey.cols || side > grey.rows) {
            return -2;
        }
        cv::Mat region = grey(cv::Rect(left, top, side, side)).clone();
        tagSFRResult sfr{};
        sfr.nyquistDivisor = nyquistDivisor;
        if (TalonCalSFR(region.data, region.cols, region.rows, kPixelFormatGrey8, sfr) != 0) {
            return -3;
        }
        entry.sfrHalfNyquist = static_cast<float>(sfr.sfrHalfNyquist[0]);
        entry.sfrQuarterNyquist = static_cast<float>(sfr.sfrQuarterNyquist[0]);
        entry.sfrCustom = static_cast<float>(sfr.sfrCustom[0]);
        return 0;
    } catch (const std::exception&) {
        return -1;
    }
}

// 0, or -1 (input, parameters, any exception), -2 (not located, region off the left or top),
// -3 (a region not measured). `result` is written once, at the end, and only on success.
template <class Record, class Pair>
int measureFrame(convert::WordDepth depth, GreyRoad road, const Pair& pair, RegionRule rule,
                 unsigned char* img, int width, int height, const SFRParam& param, Record& result) {
    constexpr int n = Pair::kEdges;
    static_assert(sizeof(Record) == 2 * n * sizeof(SFREdgeResult), "two sets of n entries");
    try {
        if (rule == RegionRule::kForced90) {
            // The caller's record changes, const or not: these members have always told
            // the caller the region size they used this way.
            const_cast<SFRParam&>(param).roiSize = kFixedRegion;
        }
        if (img == nullptr || static_cast<std::int64_t>(width) * height == 0) {
            return -1;
        }
        const cv::Mat raw(height, width, CV_16UC1, img);  // borrowed; negative sizes throw
        const int roiSize = param.roiSize;
        const int mark = param.markSearchSize;
        if (rule == RegionRule::kForced90) {
            if (mark < 1 || mark > width / 2 || mark < kFixedRegion) {
                return -1;
            }
        } else if (roiSize < 1 || mark < 1 || mark > width / 2 || roiSize > mark) {
            return -1;
        }

        const cv::Mat grey = reduceToGrey(depth, road, raw);

        typename Pair::Result located[2] = {};
        const typename Pair::Param locateParam{mark};
        RegularSFR::MarkSearchMemo marks;
        const LocateImages images = LocateImages::at(grey, pair.scale, &marks);
        if (pair.first(images, locateParam, located[0]) != 0 ||
            pair.second(images, locateParam, located[1]) != 0) {
            return -2;
        }

        Record local{};
        for (int set = 0; set < 2; ++set) {
            for (int k = 0; k < n; ++k) {
                local.edges[set * n + k].x = RegularSFR::truncateToInt(located[set].centres[k].x);
                local.edges[set * n + k].y = RegularSFR::truncateToInt(located[set].centres[k].y);
            }
        }
        // Regions in parallel, each into its own slot; the first failing slot in slot order
        // decides the status, as a one-by-one walk would.
        int status[2 * n];
#pragma omp parallel for schedule(dynamic, 2)
        for (int i = 0; i < 2 * n; ++i) {
            const bool fixed = rule == RegionRule::kFixedSecondSet && i >= n;
            status[i] = measureRegion(grey, fixed ? kFixedRegion : roiSize,
                                      static_cast<double>(param.freqDivisor), local.edges[i]);
        }
        for (int i = 0; i < 2 * n; ++i) {
            if (status[i] != 0) {
                return status[i];
            }
        }
        std::memcpy(&result, &local, sizeof(Record));
        return 0;
    } catch (const std::exception&) {
        return -1;
    }
}

}  // namespace api
}  // namespace talonvireo
