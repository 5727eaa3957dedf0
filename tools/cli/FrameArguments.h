// The options every command that measures frame files takes (measure, batch): the member, the
// file's layout, the region parameters, the extra figures and the limits, declared once and
// read into FrameOptions once.
#pragma once

#include <vector>

#include "OptionValues.h"
#include "station/ChartJob.h"
#include "station/FrameGrading.h"
#include "station/Members.h"

namespace talonvireo {
namespace cli {

// Declares --member, the raw layout (--width, --height, --packing, --stride, --offset), --roi,
// --mark, --freq-divisor, --method, --per-channel-raw, --pixel-pitch, --limits and
// --chart-fit-limit.
void declareFrameArguments(OptionValues& o);

// The member --member names. Throws station::Failure (bad input) listing the members when it is
// missing or unknown.
const station::Member& memberArgument(const OptionValues& o,
                                      const std::vector<station::Member>& members);

// --bayer and --bits of a frame measured as a chart.
station::ChartSamples chartSamples(const OptionValues& o);

// Every frame option, checked (a limits file is read here, before any measuring). Throws
// station::Failure (bad input) naming the option at fault.
station::FrameOptions frameArguments(const OptionValues& o);

}  // namespace cli
}  // namespace talonvireo
