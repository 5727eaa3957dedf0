// The options every command that measures frame files takes (measure, batch): the member, the
// file's layout, the region parameters, the extra figures and the limits, declared once and
// read into FrameOptions once.
#pragma once

#include <vector>

#include "FrameGrading.h"
#include "Members.h"
#include "OptionValues.h"

namespace talonvireo {
namespace cli {

// Declares --member, the raw layout (--width, --height, --packing, --stride, --offset), --roi,
// --mark, --freq-divisor, --method, --per-channel-raw, --pixel-pitch, --limits and
// --chart-fit-limit.
void declareFrameArguments(OptionValues& o);

// The member --member names. Throws CliError (bad arguments) listing the members when it is
// missing or unknown.
const Member& memberArgument(const OptionValues& o, const std::vector<Member>& members);

// Every frame option, checked (a limits file is read here, before any measuring). Throws
// CliError (bad arguments) naming the option at fault.
FrameOptions frameArguments(const OptionValues& o);

}  // namespace cli
}  // namespace talonvireo
