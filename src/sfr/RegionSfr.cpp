// Exported region SFR functions: TalonCalSFR and TalonCalSFRS.
#include "talonvireo/RegionSfr.h"

#include <cstdint>
#include <exception>

#include "sfr/RegionMeasurement.h"
#include "sfr/RegionPreparation.h"
#include "sfr/SfrContext.h"
#include "sfr/SfrStatus.h"

namespace {
using namespace talonvireo::sfr;

// Clears every figure but keeps the caller's divisor, so it is set once and survives calls.
void resetResult(tagSFRResult& result) {
    const double divisor = result.nyquistDivisor;
    result = tagSFRResult{};
    result.nyquistDivisor = divisor;
}

// Measures one prepared region (a deep copy is taken); figures are written only on success.
int measureRegion(const cv::Mat& region, tagSFRResult& result) {
    SfrContext ctx;
    return measurePreparedRegion(region, result, ctx);
}

bool outsideImage(const tagEdgeRoi& roi, int width, int height) {
    // Unsigned 32-bit sums: a huge origin or size wraps and is caught by the negative test
    // below rather than overflowing.
    const auto u = [](std::int32_t v) { return static_cast<std::uint32_t>(v); };
    return u(roi.x) + u(roi.width) > u(width) || u(roi.y) + u(roi.height) > u(height);
}

bool negative(const tagEdgeRoi& roi) {
    return roi.x < 0 || roi.y < 0 || roi.width < 0 || roi.height < 0;
}
}  // namespace

int TalonCalSFR(unsigned char* image, int width, int height, int format, tagSFRResult& result) {
    try {
        resetResult(result);
        cv::Mat region;
        prepareRegion(image, width, height, format, region);
        if (region.empty()) {
            return kSfrFailed;
        }
        return measureRegion(region, result);
    } catch (const std::exception&) {
        return kSfrFailed;
    } catch (...) {
        return kSfrFailed;
    }
}

int TalonCalSFRS(unsigned char* image, int width, int height, int format, int count,
                 tagEdgeRoi* rois, tagSFRResult* results) {
    try {
        cv::Mat whole;
        prepareRegion(image, width, height, format, whole);
        if (whole.empty()) {
            return kSfrFailed;
        }
        if (count > 0 && (rois == nullptr || results == nullptr)) {
            return kSfrFailed;
        }
        for (int i = 0; i < count; ++i) {
            const tagEdgeRoi& roi = rois[i];
            if (outsideImage(roi, width, height)) {
                return kSfrFailed;
            }
            resetResult(results[i]);
            // A negative origin or size passes the unsigned test; OpenCV's region check would
            // throw on it, so it ends the same way, without reaching OpenCV.
            if (negative(roi)) {
                return kSfrFailed;
            }
            const cv::Mat view = whole(cv::Rect(roi.x, roi.y, roi.width, roi.height));
            if (measureRegion(view, results[i]) != kSfrOk) {
                return kSfrFailed;
            }
        }
        return kSfrOk;
    } catch (const std::exception&) {
        return kSfrFailed;
    } catch (...) {
        return kSfrFailed;
    }
}
