// What measures a frame: one library member, or a chart (every edge found, or a chart
// description's slots). Batches, records and the Python module take either alike.
#pragma once

#include <optional>
#include <string>

#include "station/ChartJob.h"
#include "station/FrameGrading.h"
#include "station/Members.h"

namespace talonvireo {
namespace station {

struct Measurand {
    const Member* member = nullptr;    // set for a member
    std::optional<ChartChoice> chart;  // set for a chart
    ChartSamples samples;              // a chart's raw samples (--bayer, --bits)
    bool samplesGiven = false;

    // The member's name, or "chart " and the chart's ("chart auto", "chart HLX6C").
    std::string name() const;
    // Highest record slot + 1 its limits may name (any for "auto").
    int slotCount() const;
};

Measurand memberMeasurand(const Member& member);
Measurand chartMeasurand(const ChartChoice& chart, const ChartSamples& samples, bool samplesGiven);

// gradeFrameFile or gradeChartFile.
GradedFrame gradeFrame(const Measurand& measurand, const std::string& path,
                       const FrameOptions& options);

// An empty report with the columns a frame graded by `measurand` with these options carries.
FrameReport reportLayout(const Measurand& measurand, const FrameOptions& options);

}  // namespace station
}  // namespace talonvireo
