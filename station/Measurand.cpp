#include "station/Measurand.h"

#include <algorithm>

namespace talonvireo {
namespace station {

std::string Measurand::name() const {
    return member != nullptr ? member->name : "chart " + (chart ? chart->label : "auto");
}

int Measurand::slotCount() const {
    if (member != nullptr) {
        return member->info->slots;
    }
    if (!chart || !chart->description) {
        return 1 << 20;
    }
    const ChartDescription& d = *chart->description;
    int count = 0;
    for (const ChartSlot& slot : d.slots) {
        count = std::max(count, slot.slot + 1);
    }
    return count > 0 ? count : static_cast<int>(4 * d.shapes.size() + d.edges.size());
}

Measurand memberMeasurand(const Member& member) {
    Measurand m;
    m.member = &member;
    return m;
}

Measurand chartMeasurand(const ChartChoice& chart, const ChartSamples& samples, bool samplesGiven) {
    Measurand m;
    m.chart = chart;
    m.samples = samples;
    m.samplesGiven = samplesGiven;
    return m;
}

GradedFrame gradeFrame(const Measurand& measurand, const std::string& path,
                       const FrameOptions& options) {
    if (measurand.member != nullptr) {
        return gradeFrameFile(*measurand.member, path, options);
    }
    return gradeChartFile(*measurand.chart, path, options, measurand.samples,
                          measurand.samplesGiven);
}

FrameReport reportLayout(const Measurand& measurand, const FrameOptions& options) {
    if (measurand.member != nullptr) {
        return reportLayout(*measurand.member, options);
    }
    FrameReport report;
    report.chart = measurand.chart ? measurand.chart->label : "auto";
    report.project = report.chart;
    report.member = measurand.name();
    report.param = options.param;
    report.pixelPitchUm = options.pixelPitchUm;
    report.hasMtf50 = true;
    report.hasPlanes = options.planes;
    report.chartMethod = options.chartMethod;
    if (options.limits) {
        report.limitsPath = options.limits->path;
        report.hasLimit = true;
    }
    return report;
}

}  // namespace station
}  // namespace talonvireo
