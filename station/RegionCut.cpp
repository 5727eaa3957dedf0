#include "station/RegionCut.h"

#include "station/Failure.h"
#include "talonvireo/talonVireoSFR.h"

namespace talonvireo {
namespace station {

namespace pf = talonvireo::PixelFormat;

bool isMosaicFormat(int format) {
    const int layout = format & pf::LayoutMask;
    return layout == pf::Bayer8 || layout == pf::Bayer16 || layout == pf::Bayer16B ||
           layout == pf::Bayer16C;
}

SfrMethod parseMethod(const std::string& name) {
    if (name == "classic") {
        return SfrMethod::kClassic;
    }
    if (name == "precise") {
        return SfrMethod::kPrecise;
    }
    throw Failure(Cause::BadInput, "unknown --method '" + name + "' (classic or precise)");
}

RoiRoad parseRoad(const std::string& name) {
    if (name == "opencv") {
        return RoiRoad::kOpenCv;
    }
    if (name == "malvar") {
        return RoiRoad::kMalvar;
    }
    if (name == "edge-directed") {
        return RoiRoad::kEdgeDirected;
    }
    throw Failure(Cause::BadInput,
                  "unknown --road '" + name + "' (opencv, malvar or edge-directed)");
}

int shiftedPhase(int phase, int dx, int dy) {
    // A phase is where red sits in the 2 x 2 cell; an odd offset moves it to the other column
    // or row of the cell.
    constexpr int kPhaseAt[2][2] = {{pf::PhaseRG, pf::PhaseGR}, {pf::PhaseGB, pf::PhaseBG}};
    for (int row = 0; row < 2; ++row) {
        for (int col = 0; col < 2; ++col) {
            if (kPhaseAt[row][col] == phase) {
                return kPhaseAt[row ^ (dy & 1)][col ^ (dx & 1)];
            }
        }
    }
    return phase;  // not a phase code: left for the library to refuse
}

Region cutRegion(const cv::Mat& image, int format, const std::optional<cv::Rect>& rect,
                 RoiRoad road, int bits) {
    const cv::Rect whole(0, 0, image.cols, image.rows);
    const cv::Rect r = rect ? *rect : whole;
    if (r.width <= 0 || r.height <= 0 || (r & whole) != r) {
        throw Failure(Cause::RegionOutOfBounds, "--rect lies outside the " +
                                                    std::to_string(image.cols) + " x " +
                                                    std::to_string(image.rows) + " image");
    }
    Region region;
    if (road == RoiRoad::kOpenCv) {
        region.pixels = image(r).clone();
        region.format = format;
        if (isMosaicFormat(format)) {
            region.format =
                (format & pf::LayoutMask) | shiftedPhase(format & pf::PhaseMask, r.x, r.y);
        }
        return region;
    }
    const int layout = format & pf::LayoutMask;
    if (layout == pf::Bayer8 || !isMosaicFormat(format) ||
        (format & pf::PhaseMask) != pf::PhaseRG || image.type() != CV_16UC1) {
        throw Failure(Cause::BadInput,
                      "--road malvar and edge-directed take a Bayer R G frame of 16-bit words "
                      "(--format 0x021), as the members do");
    }
    if (bits != 10 && bits != 14 && bits != 16) {
        throw Failure(Cause::BadInput, "--road malvar and edge-directed need --bits 10, 14 or 16");
    }
    cv::Mat words = image.isContinuous() ? image : image.clone();
    cv::Mat grey(image.rows, image.cols, CV_8UC1);
    const GreyRoad greyRoad =
        road == RoiRoad::kMalvar ? GreyRoad::kMalvar : GreyRoad::kEdgeDirected;
    if (rawFrameToGrey(words.ptr<std::uint16_t>(), words.cols, words.rows, bits, greyRoad,
                       grey.data) != 0) {
        throw Failure(Cause::Failed, "the road to grey refused the frame");
    }
    region.pixels = grey(r).clone();
    region.format = pf::Grey8;
    return region;
}

}  // namespace station
}  // namespace talonvireo
