#include "station/RegionByRegion.h"

#include <cmath>
#include <limits>
#include <vector>

#include "render/ChartDesign.h"
#include "station/Failure.h"
#include "talonvireo/talonVireoSFR.h"

namespace talonvireo {
namespace station {

namespace {
constexpr int kMostEdges = 68;  // K31R22BX: two layouts of 34

// A centre as the member stores it: truncated toward zero. false for one that is not a number
// or too far out to be a pixel of any frame.
bool memberCentre(float x, float y, int& ix, int& iy) {
    constexpr float kFar = 1e9f;
    if (!(std::fabs(x) < kFar) || !(std::fabs(y) < kFar)) {
        return false;
    }
    ix = static_cast<int>(x);
    iy = static_cast<int>(y);
    return true;
}
}  // namespace

bool explainsMemberFailure(Cause cause) {
    return cause == Cause::NotLocated || cause == Cause::RegionOutOfBounds ||
           cause == Cause::SfrFailed || cause == Cause::Failed;
}

FrameReport measureRegionByRegion(const Member& member, const cv::Mat& grey,
                                  const SFRParam& param) {
    if (grey.type() != CV_8UC1 || !grey.isContinuous()) {
        throw Failure(Cause::Failed, "internal: the grey frame is not packed bytes");
    }
    std::vector<EdgeCentre> centres(kMostEdges);
    const int count = locateMemberEdges(grey.data, grey.cols, grey.rows, member.chart(),
                                        param.markSearchSize, centres.data(), kMostEdges);
    if (count < 0) {
        throw Failure(Cause::Failed, "the chart's edges could not be searched for");
    }
    FrameReport report;
    report.member = member.name;
    report.project = render::projectName(member.project);
    report.width = grey.cols;
    report.height = grey.rows;
    report.param = param;
    if (member.forced90) {
        report.param.roiSize = 90;  // as the member writes it
    }
    const cv::Rect frame(0, 0, grey.cols, grey.rows);
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    for (int i = 0; i < count; ++i) {
        EdgeRow row;
        row.index = i;
        row.side = member.regionSide(i, count, param.roiSize);
        row.measured.sfrQuarterNyquist = nan;
        row.measured.sfrHalfNyquist = nan;
        row.measured.sfrCustom = nan;
        int x = 0;
        int y = 0;
        if (!memberCentre(centres[i].x, centres[i].y, x, y)) {
            row.state = EdgeState::kNotLocated;
            report.rows.push_back(row);
            continue;
        }
        row.measured.x = x;
        row.measured.y = y;
        const cv::Rect cut = row.region();
        if ((cut & frame) != cut) {
            row.state = EdgeState::kOffFrame;
            report.rows.push_back(row);
            continue;
        }
        cv::Mat region = grey(cut).clone();
        tagSFRResult sfr{};
        sfr.nyquistDivisor = static_cast<double>(param.freqDivisor);
        const int status =
            TalonCalSFR(region.data, region.cols, region.rows, PixelFormat::Grey8, sfr);
        if (status != 0) {
            row.state = EdgeState::kRefused;
            row.sfrStatus = status;
        } else {
            // Narrowed to the record's floats exactly as the member narrows them.
            row.measured.sfrQuarterNyquist = static_cast<float>(sfr.sfrQuarterNyquist[0]);
            row.measured.sfrHalfNyquist = static_cast<float>(sfr.sfrHalfNyquist[0]);
            row.measured.sfrCustom = static_cast<float>(sfr.sfrCustom[0]);
        }
        report.rows.push_back(row);
    }
    return report;
}

}  // namespace station
}  // namespace talonvireo
