#include "station/FocusJson.h"

#include <cmath>

namespace talonvireo {
namespace station {

Json focusStudyJson(const FocusStudy& s) {
    Json doc = documentHead("focus", "");
    doc["measurand"] = s.measurand;
    doc["frequency"] = s.frequency;
    doc["min_sfr"] = s.minSfr;
    doc["pixel_pitch_um"] = s.pixelPitchUm;
    doc["width"] = s.width;
    doc["height"] = s.height;
    Json frames = Json::array();
    for (std::size_t i = 0; i < s.frames.size(); ++i) {
        frames.push_back({{"file", s.frames[i].path},
                          {"z_um", s.frames[i].z},
                          {"relocated", i < s.frameRelocated.size() && s.frameRelocated[i]},
                          {"error", s.frameErrors[i].empty() ? Json() : Json(s.frameErrors[i])}});
    }
    doc["frames"] = frames;
    Json edges = Json::array();
    for (const FocusEdge& e : s.edges) {
        Json curve = Json::array();
        for (const FocusSample& p : e.samples) {
            curve.push_back({{"z_um", p.z}, {"sfr", p.sfr}});
        }
        edges.push_back({{"edge", e.edge},
                         {"name", e.name},
                         {"x", e.x},
                         {"y", e.y},
                         {"x_mm", e.xMm},
                         {"y_mm", e.yMm},
                         {"orientation", e.orientation},
                         {"zone", e.zone},
                         {"best_focus_z_um", figure(e.curve.bestZ)},
                         {"peak_sfr", figure(e.curve.peakSfr)},
                         {"above_limit_from_z_um", figure(e.curve.fromZ)},
                         {"above_limit_to_z_um", figure(e.curve.toZ)},
                         {"samples_fitted", e.curve.samplesFitted},
                         {"curve", curve}});
    }
    doc["edges"] = edges;
    Json zones = Json::array();
    for (const FocusZone& z : s.zones) {
        zones.push_back({{"zone", z.name},
                         {"from_field", z.fromField},
                         {"to_field", z.toField},
                         {"tangential_best_focus_z_um", figure(z.tangentialZ)},
                         {"sagittal_best_focus_z_um", figure(z.sagittalZ)},
                         {"astigmatism_um", figure(z.astigmatism())},
                         {"tangential_edges", z.tangential},
                         {"sagittal_edges", z.sagittal}});
    }
    doc["zones"] = zones;
    const FocusSurface& f = s.surface;
    doc["surface"] = {
        {"best_focus_z_um", figure(f.z0)},
        {"slope_x_um_per_mm", figure(f.slopeX)},
        {"slope_y_um_per_mm", figure(f.slopeY)},
        {"tilt_about_x_arcmin", figure(f.tiltAboutXArcmin)},
        {"tilt_about_y_arcmin", figure(f.tiltAboutYArcmin)},
        {"curvature_um_per_mm2", figure(f.curvature)},
        {"residual_um", figure(f.residualRms)},
        {"edges", f.points},
        {"window_from_z_um", figure(s.window.fromZ)},
        {"window_to_z_um", figure(s.window.toZ)},
        {"window_centre_z_um", figure(s.window.exists() ? s.window.centreZ() : std::nan(""))}};
    return doc;
}

Json focusFrameJson(const FrameReport& report, double frequency, long frame, bool relocated,
                    double milliseconds) {
    Json line;
    line["kind"] = "focus-frame";
    line["frame"] = frame;
    line["relocated"] = relocated;
    line["milliseconds"] = milliseconds;
    std::vector<FocusZone> zones = focusZones();
    std::vector<double> tangential(zones.size(), 0.0), sagittal(zones.size(), 0.0);
    Json edges = Json::array();
    for (const EdgeRow& row : report.rows) {
        const cv::Point2d place = row.place();
        const double x = place.x, y = place.y;
        const bool measured = row.state == EdgeState::kMeasured;
        const double sfr = measured ? focusSfr(row, frequency) : std::nan("");
        const std::string zone =
            measured ? focusZoneOf(zones, x, y, report.width, report.height) : "";
        edges.push_back({{"edge", row.index},
                         {"name", row.chart ? row.chart->name : ""},
                         {"state", edgeStateName(row.state)},
                         {"x", figure(measured ? x : std::nan(""))},
                         {"y", figure(measured ? y : std::nan(""))},
                         {"orientation", row.field.orientation},
                         {"zone", zone},
                         {"sfr", figure(sfr)}});
        if (!std::isfinite(sfr)) {
            continue;
        }
        for (std::size_t k = 0; k < zones.size(); ++k) {
            if (zones[k].name != zone) {
                continue;
            }
            if (row.field.orientation == "sagittal") {
                sagittal[k] += sfr;
                ++zones[k].sagittal;
            } else if (row.field.orientation == "tangential") {
                tangential[k] += sfr;
                ++zones[k].tangential;
            }
        }
    }
    line["edges"] = edges;
    Json zoneLines = Json::array();
    for (std::size_t k = 0; k < zones.size(); ++k) {
        const FocusZone& z = zones[k];
        zoneLines.push_back(
            {{"zone", z.name},
             {"tangential_sfr", figure(z.tangential ? tangential[k] / z.tangential : std::nan(""))},
             {"sagittal_sfr", figure(z.sagittal ? sagittal[k] / z.sagittal : std::nan(""))},
             {"tangential_edges", z.tangential},
             {"sagittal_edges", z.sagittal}});
    }
    line["zones"] = zoneLines;
    return line;
}

Json focusFrameErrorJson(long frame, const std::string& error) {
    return {{"kind", "focus-frame"}, {"frame", frame}, {"error", error}};
}

}  // namespace station
}  // namespace talonvireo
