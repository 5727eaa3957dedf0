#include "station/FocusStudy.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>

#include "station/Failure.h"

namespace talonvireo {
namespace station {

namespace {

bool parseNumber(const std::string& text, double& value) {
    std::size_t used = 0;
    try {
        value = std::stod(text, &used);
    } catch (const std::exception&) {
        return false;
    }
    return used == text.size() && std::isfinite(value);
}

std::string trim(const std::string& s) {
    const auto b = s.find_first_not_of(" \t\r");
    const auto e = s.find_last_not_of(" \t\r");
    return b == std::string::npos ? "" : s.substr(b, e - b + 1);
}

}  // namespace

FocusFrame parseFocusFrame(const std::string& arg) {
    const auto at = arg.rfind('@');
    FocusFrame f;
    if (at == std::string::npos || at == 0 || !parseNumber(arg.substr(at + 1), f.z)) {
        throw Failure(Cause::BadInput,
                      "'" + arg + "' is no FILE@Z (a frame file and its focus position in um)");
    }
    f.path = arg.substr(0, at);
    return f;
}

std::vector<FocusFrame> readFocusList(const std::string& path) {
    std::ifstream in(path);
    if (!in) {
        throw Failure(Cause::UnreadableFile, "cannot read the focus list " + path);
    }
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::vector<FocusFrame> frames;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        line = trim(line);
        if (line.empty() || line[0] == '#') {
            continue;
        }
        const auto comma = line.rfind(',');
        FocusFrame f;
        if (comma == std::string::npos || !parseNumber(trim(line.substr(comma + 1)), f.z)) {
            if (frames.empty() && number == 1) {
                continue;  // a header line
            }
            throw Failure(Cause::BadInput, "focus list " + path + ":" + std::to_string(number) +
                                               ": expected file,z (z in um), not '" + line + "'");
        }
        const std::filesystem::path file(trim(line.substr(0, comma)));
        f.path = file.is_absolute() ? file.string() : (folder / file).string();
        frames.push_back(f);
    }
    return frames;
}

std::vector<FocusZone> focusZones() {
    FocusZone centre, middle, outer;
    centre.name = "centre";
    centre.toField = 0.3;
    middle.name = "middle";
    middle.fromField = 0.3;
    middle.toField = 0.7;
    outer.name = "outer";
    outer.fromField = 0.7;
    return {centre, middle, outer};
}

std::string focusZoneOf(const std::vector<FocusZone>& zones, double x, double y, int width,
                        int height) {
    const double cx = 0.5 * (width - 1), cy = 0.5 * (height - 1);
    const double field = std::hypot(x - cx, y - cy) / (0.5 * std::hypot(width, height));
    for (const FocusZone& z : zones) {
        if (field >= z.fromField && field <= z.toField) {
            return z.name;
        }
    }
    return "";
}

double focusSfr(const EdgeRow& row, double frequency) {
    return std::abs(frequency - 0.125) < 1e-12 ? row.measured.sfrQuarterNyquist
                                               : row.measured.sfrCustom;
}

FocusStudy studyFocus(FrameStream& stream, std::vector<FocusFrame> frames, double frequency,
                      double minSfr, double pixelPitchUm) {
    if (frames.size() < 3) {
        throw Failure(Cause::BadInput, "a through-focus stack needs three frames or more");
    }
    if (!(pixelPitchUm > 0.0)) {
        throw Failure(Cause::BadInput, "the pixel pitch must be above 0");
    }
    std::sort(frames.begin(), frames.end(),
              [](const FocusFrame& a, const FocusFrame& b) { return a.z < b.z; });
    for (std::size_t i = 1; i < frames.size(); ++i) {
        if (frames[i].z == frames[i - 1].z) {
            throw Failure(Cause::BadInput,
                          "two frames at z " + std::to_string(frames[i].z) + " um");
        }
    }
    FocusStudy study;
    study.measurand = stream.measurand().name();
    study.frequency = frequency;
    study.minSfr = minSfr;
    study.pixelPitchUm = pixelPitchUm;
    study.frames = frames;
    study.zones = focusZones();
    std::map<int, FocusEdge> edges;
    std::map<int, int> seen;
    int width = 0, height = 0;
    for (const FocusFrame& frame : frames) {
        std::string error;
        try {
            const GradedFrame graded = stream.gradeFile(frame.path);
            const FrameReport& r = graded.report;
            width = r.width;
            height = r.height;
            for (const EdgeRow& row : r.rows) {
                if (row.state != EdgeState::kMeasured) {
                    continue;
                }
                FocusEdge& e = edges[row.index];
                e.edge = row.index;
                if (row.chart) {
                    e.name = row.chart->name;
                }
                const cv::Point2d place = row.place();
                e.x += place.x;
                e.y += place.y;
                ++seen[row.index];
                if (e.orientation.empty() || e.orientation == "none") {
                    e.orientation = row.field.orientation;
                }
                const double sfr = focusSfr(row, frequency);
                if (std::isfinite(sfr)) {
                    e.samples.push_back({frame.z, sfr});
                }
            }
        } catch (const Failure& f) {
            error = f.what();
        }
        study.frameErrors.push_back(error);
        study.frameRelocated.push_back(error.empty() && stream.relocated());
    }
    study.width = width;
    study.height = height;
    const double cx = 0.5 * (width - 1), cy = 0.5 * (height - 1);
    std::vector<FocusPoint> points;
    std::vector<FocusCurve> curves;
    for (auto& [index, e] : edges) {
        e.x /= seen[index];
        e.y /= seen[index];
        e.xMm = (e.x - cx) * pixelPitchUm / 1000.0;
        e.yMm = (e.y - cy) * pixelPitchUm / 1000.0;
        e.zone = focusZoneOf(study.zones, e.x, e.y, width, height);
        e.curve = fitFocusCurve(e.samples, minSfr);
        curves.push_back(e.curve);
        if (e.curve.bracketed()) {
            points.push_back({e.xMm, e.yMm, e.curve.bestZ});
        }
        study.edges.push_back(e);
    }
    for (FocusZone& zone : study.zones) {
        double t = 0.0, s = 0.0;
        for (const FocusEdge& e : study.edges) {
            if (e.zone != zone.name || !e.curve.bracketed()) {
                continue;
            }
            if (e.orientation == "tangential") {
                t += e.curve.bestZ;
                ++zone.tangential;
            } else if (e.orientation == "sagittal") {
                s += e.curve.bestZ;
                ++zone.sagittal;
            }
        }
        zone.tangentialZ = zone.tangential > 0 ? t / zone.tangential : FocusCurve::kNaN;
        zone.sagittalZ = zone.sagittal > 0 ? s / zone.sagittal : FocusCurve::kNaN;
    }
    study.surface = fitFocusSurface(points);
    study.window = commonFocusWindow(curves);
    return study;
}

}  // namespace station
}  // namespace talonvireo
