#include "station/RegionFigures.h"

#include <string>
#include <vector>

#include "station/Failure.h"
#include "station/RegionCut.h"
#include "talonvireo/talonVireoSFR.h"

namespace talonvireo {
namespace station {

namespace {
std::vector<double> figureFrequencies(const FrameReport& report) {
    std::vector<double> f = {0.125, 0.25};
    if (report.hasCustom()) {
        f.push_back(0.5 / static_cast<double>(report.param.freqDivisor));
    }
    return f;
}

CurveFigures figuresOf(const SfrChannelCurve& ch) {
    CurveFigures c;
    c.channel = ch.name;
    c.sfrQuarterNyquist = ch.sfrAt.at(0);
    c.sfrHalfNyquist = ch.sfrAt.at(1);
    if (ch.sfrAt.size() > 2) {
        c.sfrCustom = ch.sfrAt[2];
    }
    c.mtf50 = ch.mtf50;
    return c;
}

SfrCurve measure(const cv::Mat& region, int format, const SfrCurveOptions& options, int& status) {
    SfrCurve curve;
    status = measureSfrCurve(region.data, region.cols, region.rows, format, options, curve);
    return curve;
}
}  // namespace

cv::Mat memberGrey(const Member& member, const cv::Mat& raw) {
    if (raw.type() != CV_16UC1 || !raw.isContinuous()) {
        throw Failure(Cause::Failed, "internal: the frame is not packed 16-bit words");
    }
    cv::Mat grey(raw.rows, raw.cols, CV_8UC1);
    if (rawFrameToGrey(raw.ptr<std::uint16_t>(), raw.cols, raw.rows, member.bits, member.road,
                       grey.data) != 0) {
        throw Failure(Cause::Failed, "the frame could not be reduced to grey");
    }
    return grey;
}

void addRegionFigures(FrameReport& report, const Member& member, const cv::Mat& raw,
                      const cv::Mat& grey, RegionFigureSet what) {
    const bool planes = what.planes;
    SfrCurveOptions classic;
    classic.frequencies = figureFrequencies(report);
    SfrCurveOptions precise = classic;
    precise.method = SfrMethod::kPrecise;
    SfrCurveOptions perPlane = precise;
    perPlane.perChannelRaw = true;
    const cv::Rect frame(0, 0, raw.cols, raw.rows);
    for (EdgeRow& row : report.rows) {
        const cv::Rect cut = row.region();  // exactly the member's cut
        if ((cut & frame) != cut) {
            row.precise.status = -1;
            continue;
        }
        const cv::Mat region = grey(cut).clone();
        int status = 0;
        if (what.mtf50) {
            const SfrCurve c = measure(region, PixelFormat::Grey8, classic, status);
            if (status == 0) {
                row.mtf50 = c.channels.at(0).mtf50;
            }
        }
        if (what.precise) {
            const SfrCurve p = measure(region, PixelFormat::Grey8, precise, status);
            row.precise = status == 0 ? figuresOf(p.channels.at(0)) : CurveFigures{};
            row.precise.channel = "grey";
            row.precise.status = status;
        }
        if (planes) {
            const Region mosaic = cutRegion(raw, PixelFormat::Bayer16 + PixelFormat::PhaseRG, cut,
                                            RoiRoad::kOpenCv, member.bits);
            const SfrCurve r = measure(mosaic.pixels, mosaic.format, perPlane, status);
            row.planes.clear();
            for (const char* name : {"R", "Gr", "Gb", "B"}) {
                CurveFigures f;
                f.channel = name;
                f.status = status;
                row.planes.push_back(f);
            }
            for (std::size_t k = 0; status == 0 && k < r.channels.size() && k < 4; ++k) {
                row.planes[k] = figuresOf(r.channels[k]);
            }
        }
    }
    report.hasMtf50 = what.mtf50;
    report.hasPrecise = what.precise;
    report.hasPlanes = planes;
}

}  // namespace station
}  // namespace talonvireo
