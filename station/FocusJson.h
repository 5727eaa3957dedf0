// Through-focus results as JSON: the whole study (what `focus --json` writes and Python's
// through_focus returns), and one frame of a live feed (a line of `focus --live`). One place
// names every field.
#pragma once

#include "station/FocusStudy.h"
#include "station/JsonDocument.h"

namespace talonvireo {
namespace station {

// The study: frames, edges (with their curves), zones, surface and window.
Json focusStudyJson(const FocusStudy& study);

// One frame of a live feed: each edge's SFR at `frequency` with its place, zone and
// orientation, the zones' mean tangential and sagittal SFR, whether the chart was located
// afresh and how long the frame took.
Json focusFrameJson(const FrameReport& report, double frequency, long frame, bool relocated,
                    double milliseconds);

// A frame of a live feed that could not be measured.
Json focusFrameErrorJson(long frame, const std::string& error);

}  // namespace station
}  // namespace talonvireo
